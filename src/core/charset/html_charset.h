#pragma once
// What an HTML document says about its own charset, and how to make it say something else.

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "core/bytes.h"
#include "core/charset/byte_order_mark.h"

namespace zantrel {

class DataBuffer;

/// How much of a document is searched. Declarations stand in the head; the bound keeps the search
/// independent of the document's size, so that whole documents and streamed files agree.
inline constexpr std::size_t kHtmlHeadBytes = 65536;

/// One place of a document that names its charset.
struct HtmlCharsetDeclaration {
  std::size_t offset = 0;  ///< of the name, in bytes of the document
  std::size_t length = 0;  ///< of the name, in bytes of the document
  std::string name;        ///< as written there
  bool xml = false;        ///< in an XML declaration, not in a meta element
};

/// What the head of a document says.
class HtmlCharset {
 public:
  /// Searches the first kHtmlHeadBytes of `html`. A non-zero code page says how to read the
  /// document where it cannot be read as ASCII (EBCDIC); marks and zero bytes tell by themselves.
  explicit HtmlCharset(ByteSpan html, int codePage = 0);

  const ByteOrderMark& mark() const noexcept { return mark_; }
  /// All declarations in the order of the document.
  const std::vector<HtmlCharsetDeclaration>& declarations() const noexcept { return declarations_; }
  /// The charset's name: that of the mark, else the first meta declaration with a known name, else
  /// the XML declaration, else any name declared; empty when the document says nothing.
  std::string name() const;
  /// The code page the document is in by its own word; 0 when it says nothing or names no known
  /// charset. A document that can be read as ASCII and declares UTF-16 is UTF-8 (HTML standard).
  int codePage() const;

  /// Appends the head with `name` in every declaration, or with a new meta element when there is
  /// none; the mark is left out. `html` is what the object was made of, `name` is ASCII. Returns
  /// how many bytes of `html` the appended ones stand for; the rest follows unchanged.
  std::size_t rewrite(ByteSpan html, std::string_view name, DataBuffer& out) const;

 private:
  struct Scanner;
  std::string readAsAscii(ByteSpan head, int codePage);
  bool appendAscii(std::string_view text, DataBuffer& out) const;

  ByteOrderMark mark_;
  std::vector<HtmlCharsetDeclaration> declarations_;
  std::size_t insertAt_ = 0;   ///< byte offset for a new meta element
  std::size_t unitBytes_ = 1;  ///< bytes of a character unit: 1, 2 or 4
  std::size_t asciiAt_ = 0;    ///< which byte of a unit holds its low eight bits
  int unitCodePage_ = 0;       ///< of a document that is not read as ASCII, for new text
};

}  // namespace zantrel
