#pragma once
// The content of elements under parsing. Between child elements and in CDATA sections it comes in
// pieces, and after each piece of text all that is there so far has its references decoded again.

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace zantrel {

class XmlArena;

/// One for all open elements: pieces stand on a stack, those of an element above its parent's. They
/// are joined when the element ends, since only then is it known how often each is to be decoded.
class ContentPieces final {
 public:
  explicit ContentPieces(XmlArena& arena) : arena_(arena) {}

  struct Piece {
    char* text;  // in the document's text, which is decoded in place
    std::uint32_t size;
    bool cdata;
  };

  /// Where the pieces of an element that begins now will start.
  std::size_t start() const { return pieces_.size(); }
  void addText(char* text, std::size_t size) { add(text, size, false); }
  /// Content of a CDATA section is not decoded by itself, but again with what comes later.
  void addCdata(char* text, std::size_t size) { add(text, size, true); }
  /// Takes an element's pieces off the stack: their content.
  std::string_view take(std::size_t start) {
    return pieces_.size() == start ? std::string_view() : takeSome(start);
  }

 private:
  void add(char* text, std::size_t size, bool cdata) {
    pieces_.push_back({text, static_cast<std::uint32_t>(size), cdata});
  }
  std::string_view takeSome(std::size_t start);
  std::string_view join(const Piece* begin, const Piece* end, std::uint32_t texts);

  XmlArena& arena_;
  std::vector<Piece> pieces_;
};

}  // namespace zantrel
