// Any bytes from any code page to any other. The first four bytes choose the pages, the error
// action and the size of the pieces. Checked: pieces give the same as one piece, the whole-buffer
// conversion the same as the stream, what a page can write it reads back, and codes of 932 come
// unchanged through ISO-2022-JP.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "core/charset/code_page.h"
#include "core/charset/encoding_convert.h"
#include "core/data_buffer.h"
#include "platform/cpu_features.h"

namespace {

using namespace zantrel;

struct Result {
  std::string bytes;
  std::uint64_t invalid;
  std::uint64_t unmappable;
  std::uint64_t firstError;
};

/// In UTF-7 a character has no bytes of its own, so where it stands depends on the pieces.
bool same(const Result& a, const Result& b, int from) {
  return a.bytes == b.bytes && a.invalid == b.invalid && a.unmappable == b.unmappable &&
         (a.firstError == b.firstError || from == codepage::kUtf7);
}

Result convert(int from, int to, ByteSpan in, std::size_t piece, const ConvertOptions& options) {
  CharsetStream stream(from, to, options);
  DataBuffer out;
  bool going = true;
  for (std::size_t i = 0; going && i < in.size(); i += piece)
    going = stream.feed(in.subspan(i, std::min(piece, in.size() - i)), out);
  if (going) stream.finish(out);
  return {std::string(out.text()), stream.invalidCount(), stream.unmappableCount(),
          stream.firstErrorOffset()};
}

void require(bool holds) {
  if (!holds) std::abort();
}

/// Pages that write some text in another way than they read it.
bool readsBackOtherwise(int page) {
  const bool iscii = page >= 57002 && page <= 57011;  // letters and marks join
  return iscii || page == 50220 || page == codepage::kMacArabic;
}

void checkWayBack(int page, const std::string& text) {
  const Result written = convert(codepage::kUtf32Be, page, asBytes(text), text.size() + 1, {});
  if (written.unmappable + written.invalid > 0 || readsBackOtherwise(page)) return;
  const Result back = convert(page, codepage::kUtf32Be, asBytes(written.bytes), 7, {});
  const bool mark = text.starts_with(std::string_view("\0\0\xFE\xFF", 4)) ||
                    text.starts_with(std::string_view("\0\0\xFF\xFE", 4));
  require(mark || back.bytes == text);
}

/// Codes of 932 that ISO-2022-JP can write (no lead byte above EF) stay what they are.
void checkCodesOfShiftJis(ByteSpan in) {
  if (std::any_of(in.begin(), in.end(), [](std::uint8_t byte) { return byte > 0xEF; })) return;
  const Result there = convert(codepage::kShiftJis, 50221, in, in.size(), {});
  if (there.invalid + there.unmappable > 0) return;
  const Result back = convert(50221, codepage::kShiftJis, asBytes(there.bytes), 5, {});
  require(back.bytes == asText(in));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 4 || size > 4096) return 0;
  const auto pages = allCodePages();
  const int from = pages[data[0] % pages.size()].id;
  const int to = pages[data[1] % pages.size()].id;
  const std::size_t piece = 1 + data[2] % 32;
  static constexpr std::uint8_t kDefault[] = {'?', '!'};
  const ConvertOptions options{static_cast<ErrorAction>(data[3] % 7), kDefault,
                               pages[(data[3] / 7) % pages.size()].id};
  const ByteSpan in(data + 4, size - 4);
  if (in.empty()) return 0;
  checkCodesOfShiftJis(in);

  const Result whole = convert(from, to, in, in.size(), options);
  require(same(convert(from, to, in, piece, options), whole, from));
  for (const bool avx2 : {false, true}) {
    CpuFeatures features;
    features.avx2 = avx2 && detectCpuFeatures().avx2;
    const ScopedCpuFeatures scope(features);
    require(same(convert(from, to, in, in.size(), options), whole, from));
  }
  DataBuffer out;
  EncodingConvert converter(options);
  const bool clean = converter.EncConvert(from, to, in.data(), in.size(), out);
  require(out.text() == whole.bytes);
  require(clean == (whole.invalid + whole.unmappable == 0) || to == codepage::kUtf16Be);

  const Result text = convert(from, codepage::kUtf32Be, in, in.size(), {ErrorAction::Drop, {}, 0});
  if (from == codepage::kUtf32Be || text.bytes.empty()) return 0;
  checkWayBack(to, text.bytes);
  return 0;
}
