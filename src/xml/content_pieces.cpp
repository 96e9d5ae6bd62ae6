#include "xml/content_pieces.h"

#include <algorithm>
#include <cstring>

#include "xml/xml_decode.h"
#include "xml/xml_store.h"

namespace zantrel {

std::string_view ContentPieces::takeSome(std::size_t start) {
  const Piece* const begin = pieces_.data() + start;
  const Piece* const end = pieces_.data() + pieces_.size();
  std::string_view content;
  if (end - begin == 1) {
    const std::size_t size =
        begin->cdata ? begin->size : decodeReferences(begin->text, begin->size, 1);
    content = {begin->text, size};
  } else {
    const auto texts = std::count_if(begin, end, [](const Piece& piece) { return !piece.cdata; });
    content = join(begin, end, static_cast<std::uint32_t>(texts));
  }
  pieces_.resize(start);
  return content;
}

// `texts` of the pieces are text. A piece of text is decoded when it is appended, and it is
// separated from what stands before it by a blank, which no reference goes across. CDATA sections
// follow it without one; so each run of a text and the sections behind it is decoded together once
// more for every text that comes later.
std::string_view ContentPieces::join(const Piece* begin, const Piece* end, std::uint32_t texts) {
  std::size_t most = 0;
  for (const Piece* piece = begin; piece != end; ++piece) most += piece->size + 1;
  char* const content = static_cast<char*>(arena_.allocate(most));
  char* to = content;
  std::uint32_t later = texts;
  for (const Piece* piece = begin; piece != end;) {
    if (!piece->cdata && to != content) *to++ = ' ';
    char* const run = to;
    do {
      const std::size_t size =
          piece->cdata ? piece->size : decodeReferences(piece->text, piece->size, 1);
      if (size != 0) std::memcpy(to, piece->text, size);
      to += size;
      if (!piece->cdata) --later;
      ++piece;
    } while (piece != end && piece->cdata);
    to = run + decodeReferences(run, static_cast<std::size_t>(to - run), later);
  }
  return {content, static_cast<std::size_t>(to - content)};
}

}  // namespace zantrel
