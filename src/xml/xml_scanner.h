#pragma once
// The parts of XML that stand in documents and in their DTDs alike, for the check of
// well-formedness.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "core/byte_block.h"
#include "xml/xml_chars.h"

namespace zantrel {

class LogBase;

/// An entity that a DTD declares.
struct XmlEntity {
  enum class Kind : std::uint8_t {
    kText,      // written in the declaration
    kExternal,  // text in another file, which nobody reads
    kUnparsed,  // no text
    kUnknown,   // its text cannot be known without expanding others
  };
  enum class Check : std::uint8_t { kNew, kRunning, kDone };

  std::string_view name;
  Kind kind = Kind::kUnknown;
  /// The replacement text, part of the document or, when characters in it are written as
  /// references, of a copy.
  std::string_view text;
  std::string copy;
  bool isInDocument = false;
  /// In the document: the declaration, or that of the parameter entity that it comes from.
  const char* declaredAt = nullptr;
  bool isFromParameter = false;
  // Every text is checked once for each use that is made of it, however often it is referred to.
  Check asContent = Check::kNew;
  Check asValue = Check::kNew;
};

/// What is not well-formed, and where: there is at most one, since the check ends with it.
struct XmlFault {
  const char* text = nullptr;
  const char* at = nullptr;  // in the document
  const char* label = nullptr;
  std::string value;
  std::string entity;  // whose text it is in

  void log(std::string_view document, LogBase& log) const;
};

/// A cursor in the text of a document or of an entity. What is named read... goes behind a part or
/// makes a fault and returns false.
class XmlScanner {
 public:
  XmlScanner(std::string_view text, XmlFault& fault, XmlEntity* entity = nullptr)
      : at_(text.data()), end_(at_ + text.size()), fault_(&fault), entity_(entity) {}

  const char* at() const { return at_; }
  const char* end() const { return end_; }
  void goTo(const char* at) { at_ = at; }
  XmlEntity* entity() const { return entity_; }
  bool isInDocument() const { return entity_ == nullptr || entity_->isInDocument; }
  /// A place of this text as one in the document.
  const char* inDocument(const char* at) const { return isInDocument() ? at : entity_->declaredAt; }

  bool atEnd() const { return at_ == end_; }
  std::size_t left() const { return static_cast<std::size_t>(end_ - at_); }
  /// NUL, which is nowhere allowed, at the end.
  char peek(std::size_t ahead = 0) const { return ahead < left() ? at_[ahead] : '\0'; }
  bool startsWith(std::string_view word) const {
    return left() >= word.size() && std::memcmp(at_, word.data(), word.size()) == 0;
  }
  bool skip(char c) {
    if (peek() != c) return false;
    ++at_;
    return true;
  }
  bool skip(std::string_view word) {
    if (!startsWith(word)) return false;
    at_ += word.size();
    return true;
  }
  /// Whether there was any.
  bool skipSpace() {
    const char* const from = at_;
    while (at_ != end_ && isXmlClass(*at_, kXmlSpace)) ++at_;
    return at_ != from;
  }

  bool fail(const char* text, const char* place, const char* label = nullptr,
            std::string_view value = {}) const;
  bool failHere(const char* text) const { return fail(text, at_); }

  bool readSpace();
  bool read(std::string_view expected);
  bool readName(std::string_view& name);
  bool readNameToken();
  /// A text in quotes of either kind.
  bool readQuoted(std::string_view& text);
  /// White space allowed, "=", white space allowed.
  bool readEquals();
  bool readComment();
  bool readInstruction();
  /// "&#": the character.
  bool readCharacterReference(char32_t& character);
  /// "&" or "%" with a name and ";".
  bool readEntityReference(std::string_view& name);

 private:
  const char* at_;
  const char* end_;
  XmlFault* fault_;
  XmlEntity* entity_;
};

/// The first of three characters, or the end.
template <char A, char B, char C>
inline const char* findOneOf(const char* at, const char* end) noexcept {
  for (; end - at >= static_cast<std::ptrdiff_t>(ByteBlock::kSize); at += ByteBlock::kSize) {
    const ByteBlock block = ByteBlock::load(at);
    const ByteBlock::Set found = block.equal(A) | block.equal(B) | block.equal(C);
    if (found.any()) return at + found.first();
  }
  while (at != end && *at != A && *at != B && *at != C) ++at;
  return at;
}

}  // namespace zantrel
