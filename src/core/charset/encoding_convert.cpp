// Whole-buffer conversion: the numbered steps of EncConvert on top of CharsetStream.
//
// Order of decisions: a target of 0 or equal to the source copies; no input is a success; a mark at
// the front is skipped; then the tables. The detours of some targets (UTF-7, UTF-16BE and UTF-32 by
// way of UTF-16LE or UTF-8, ISO-2022 by way of 932 or 949) give the same bytes as the direct way
// that their codecs take; where a detour would show, CharsetStream follows it.

#include "core/charset/encoding_convert.h"

#include <bit>
#include <cstring>
#include <functional>
#include <limits>
#include <vector>

#include "core/charset/charset_naming.h"
#include "core/charset/code_page.h"
#include "core/charset/utf8_utf16.h"

namespace zantrel {
namespace {

bool isOwnStorage(const DataBuffer& buffer, const std::uint8_t* bytes) {
  const std::uint8_t* first = buffer.getData2();
  return first != nullptr && !std::less<>()(bytes, first) &&
         std::less<>()(bytes, first + buffer.capacity());
}

/// Bytes that a conversion seldom exceeds; more is asked for when it does.
std::size_t likelySize(int from, int to, std::size_t count) {
  const bool wide = to == codepage::kUtf16Le || to == codepage::kUtf16Be;
  if (wide) return from == codepage::kUtf16Le || from == codepage::kUtf16Be ? count : 2 * count;
  if (to == codepage::kUtf32Le || to == codepage::kUtf32Be) return 4 * count;
  if (from == codepage::kUtf32Le || from == codepage::kUtf32Be) return count;
  if (from == codepage::kUtf8) return count;
  return count + count / 2;
}

/// UTF-8 and UTF-16LE into each other without a stream: almost every short text goes this way.
/// False, and nothing appended, when the text is not clean or not aligned.
bool convertUnicode(int from, int to, ByteSpan in, DataBuffer& out) {
  const bool toUnits = from == codepage::kUtf8 && to == codepage::kUtf16Le;
  const bool toBytes = from == codepage::kUtf16Le && to == codepage::kUtf8;
  if (std::endian::native != std::endian::little || !(toUnits || toBytes)) return false;
  if (in.size() > std::numeric_limits<std::uint32_t>::max() / 2) return false;
  const auto isAligned = [](const std::uint8_t* p) {
    return reinterpret_cast<std::uintptr_t>(p) % alignof(char16_t) == 0;
  };
  if (toBytes && (in.size() % 2 != 0 || !isAligned(in.data()))) return false;
  const std::size_t room = toUnits ? 2 * in.size() : 3 * (in.size() / 2);
  std::uint8_t* bytes = out.prepare(room);
  if (bytes == nullptr || (toUnits && !isAligned(bytes))) return false;
  const CodecResult result =
      toUnits ? utf8ToUtf16(in, true, {reinterpret_cast<char16_t*>(bytes), in.size()})
              : utf16ToUtf8({reinterpret_cast<const char16_t*>(in.data()), in.size() / 2}, true,
                            {bytes, room});
  if (result.stop != CodecStop::InputEnd) return false;
  out.commit(toUnits ? 2 * result.produced : result.produced);
  return true;
}

std::size_t markLength(int from, ByteSpan in) {
  static constexpr std::uint8_t kUtf8Mark[] = {0xEF, 0xBB, 0xBF};
  if (from == codepage::kUtf8)
    return in.size() >= 3 && std::memcmp(in.data(), kUtf8Mark, 3) == 0 ? 3 : 0;
  if ((from != codepage::kUtf16Le && from != codepage::kUtf16Be) || in.size() < 2) return 0;
  return in[0] + in[1] == 0xFE + 0xFF && (in[0] == 0xFE || in[0] == 0xFF) ? 2 : 0;
}

void describeTrouble(const CharsetStream& stream, StringBuffer& text) {
  const auto sentence = [&text](std::uint64_t count, const char* what) {
    if (count == 0) return;
    if (!text.empty()) text.append(" ");
    text.appendInt(static_cast<std::int64_t>(count));
    text.append(what);
  };
  sentence(stream.invalidCount(), " invalid byte sequence(s) in the source.");
  sentence(stream.unmappableCount(), " character(s) not in the target charset.");
  if (text.empty()) return;
  text.append(" First at byte offset ");
  text.appendInt(static_cast<std::int64_t>(stream.firstErrorOffset()));
  text.append(".");
}

}  // namespace

CharsetStream& EncodingConvert::streamFor(int from, int to) {
  if (stream_ != nullptr && from_ == from && to_ == to) {
    stream_->reset();
  } else {
    stream_ = std::make_unique<CharsetStream>(from, to, options_);
    from_ = from;
    to_ = to;
  }
  return *stream_;
}

bool EncodingConvert::EncConvert(int fromCodePage, int toCodePage, const void* bytes,
                                 std::size_t count, DataBuffer& out) {
  flag_ = false;
  errorText_.clear();
  if (bytes == nullptr || count == 0) return true;
  if (toCodePage == codepage::kUnknown || toCodePage == fromCodePage)
    return out.append(bytes, count);  // unchecked, marks and all (deliberate)

  ByteSpan in(static_cast<const std::uint8_t*>(bytes), count);
  std::vector<std::uint8_t> copy;
  if (isOwnStorage(out, in.data())) {
    copy.assign(in.begin(), in.end());
    in = copy;
  }
  const ByteSpan text = in.subspan(markLength(fromCodePage, in));
  if (convertUnicode(fromCodePage, toCodePage, text, out)) return true;

  CharsetStream& stream = streamFor(fromCodePage, toCodePage);
  if (!stream.valid()) {
    errorText_.append("Unsupported conversion from code page ");
    errorText_.appendInt(fromCodePage);
    errorText_.append(" to ");
    errorText_.appendInt(toCodePage);
    errorText_.append(".");
    return false;
  }
  out.reserve(likelySize(fromCodePage, toCodePage, count));  // or in steps, should that fail
  const bool converted = stream.convertAll(in, out);
  describeTrouble(stream, errorText_);
  if (!converted && errorText_.empty()) errorText_.append("Not enough memory.");
  flag_ = converted && errorText_.empty();
  // A target of UTF-16BE counts as converted whatever the text was like (deliberate).
  return flag_ || toCodePage == codepage::kUtf16Be;
}

bool EncodingConvert::EncConvert(std::string_view fromCharset, std::string_view toCharset,
                                 const void* bytes, std::size_t count, DataBuffer& out) {
  const int from = CharsetNaming::charsetToCodePage(fromCharset);
  const int to = CharsetNaming::charsetToCodePage(toCharset);
  if (from != codepage::kUnknown && to != codepage::kUnknown)
    return EncConvert(from, to, bytes, count, out);
  errorText_.clear();
  errorText_.append("Unknown charset: ");
  errorText_.append(from == codepage::kUnknown ? fromCharset : toCharset);
  return false;
}

}  // namespace zantrel
