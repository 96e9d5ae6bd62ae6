// The streaming conversion: any page's decoder joined to any page's encoder.
//
// Input is decoded in blocks of 4096 UTF-16 units, small enough for the first-level cache, and each
// block is encoded at once. Two short cuts skip the block: a target of UTF-16 is decoded straight
// into the output, a source of UTF-16 is encoded straight from the input. What a codec leaves
// unconsumed at the end of a piece (at most a few bytes) is carried over to the next piece.
//
// The first offset at which something went wrong is exact: when an encoder balks, the block is
// decoded a second time, up to the character in question, from a copy of the decoder's state.

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <vector>

#include "core/charset/code_page.h"
#include "core/charset/encoding_convert.h"
#include "core/charset/mac_arabic.h"
#include "core/charset/utf8_utf16.h"

namespace zantrel {
namespace {

constexpr std::size_t kPivotUnits = 4096;
constexpr std::size_t kCarryBytes = 32;  // more than any codec needs to see at once
constexpr std::size_t kSmallRoom = 64;   // fits any one character of any page
constexpr std::size_t kLargePiece = std::size_t{1} << 20;

constexpr bool isSurrogate(char16_t unit) noexcept {
  return (unit & 0xF800) == 0xD800;
}

/// The byte-order marks that are skipped. A mark of the other byte order is skipped too, not obeyed
/// (deliberate: the caller has named the order).
struct Marks {
  std::size_t length = 0;
  std::array<std::array<std::uint8_t, 3>, 2> forms{};
};

Marks marksOf(int codePage) noexcept {
  if (codePage == codepage::kUtf8) return {3, {{{0xEF, 0xBB, 0xBF}, {0xEF, 0xBB, 0xBF}}}};
  if (codePage == codepage::kUtf16Le || codePage == codepage::kUtf16Be)
    return {2, {{{0xFE, 0xFF, 0}, {0xFF, 0xFE, 0}}}};
  return {};
}

bool beginsMark(const Marks& marks, ByteSpan bytes) noexcept {
  return std::any_of(marks.forms.begin(), marks.forms.end(), [&](const auto& form) {
    return std::equal(bytes.begin(), bytes.end(), form.begin());
  });
}

/// Room for at least `least` bytes, growing by half so that many small blocks cost linear time.
/// Gives `wanted` bytes if they are there or the buffer grows anyway; `room` says how many. Null
/// when storage cannot be had.
std::uint8_t* roomFor(DataBuffer& out, std::size_t least, std::size_t wanted, std::size_t& room) {
  const std::size_t free = out.capacity() - out.getSize();
  room = std::max(least, wanted);
  if (free >= least) {
    room = std::min(free, room);
  } else if (!out.reserve(std::max(room, std::size_t{out.getSize()} / 2)) && !out.reserve(room)) {
    return nullptr;
  }
  return out.prepare(room);
}

}  // namespace

int defaultBytesCodePage(int target) noexcept {
  switch (target) {
    case codepage::kUtf7:
    case codepage::kUtf16Be:
      return codepage::kUtf16Le;
    case codepage::kUtf32Le:
    case codepage::kUtf32Be:
      return codepage::kUtf8;
    case codepage::kIso2022Kr:
      return codepage::kKorean;
    default:
      if (target >= codepage::kIso2022JpFirst && target <= codepage::kIso2022JpLast)
        return codepage::kShiftJis;
      return target;
  }
}

struct CharsetStream::Impl {
  enum class Mode : std::uint8_t { None, Copy, Swap, Tables };

  Impl(int fromPage, int toPage, const ConvertOptions& given)
      : from(fromPage),
        to(toPage),
        action(given.action),
        altCodePage(given.altCodePage),
        defaultBytes(given.defaultBytes.begin(), given.defaultBytes.end()) {
    if (to == codepage::kUnknown || to == from) {
      mode = Mode::Copy;
      return;
    }
    const bool apart = findDistinctCodePage(from) != nullptr && findDistinctCodePage(to) != nullptr;
    rowOf = apart ? findDistinctCodePage : findCodePage;
    source = rowOf(from);
    const CodePage* target = rowOf(to);
    if (source == nullptr || target == nullptr) return;
    marks = marksOf(from);
    markPending = marks.length > 0;
    if (from == codepage::kUtf16Le && to == codepage::kUtf16Be) {
      mode = Mode::Swap;  // as defined by way of a copy, so nothing is checked (deliberate)
      return;
    }
    decoder = source->makeDecoder();
    encoder = target->makeEncoder();
    mode = Mode::Tables;
    constexpr bool kLittle = std::endian::native == std::endian::little;
    unitsOut = kLittle && to == codepage::kUtf16Le;
    unitsIn = kLittle && from == codepage::kUtf16Le;
    if (from == codepage::kMacArabic) rewriter = std::make_unique<MacArabicRewriter>();
  }

  void reset();
  bool feed(ByteSpan in, DataBuffer& out);
  bool finish(DataBuffer& out);
  bool convertAll(ByteSpan in, DataBuffer& out);

  bool convertRest(ByteSpan in, DataBuffer& out);
  bool skipMark(ByteSpan& in);
  ByteSpan rewrite(ByteSpan in, bool last);
  bool swap(ByteSpan in, DataBuffer& out);
  bool convert(ByteSpan in, bool last, DataBuffer& out);
  bool decodeCarry(ByteSpan& in, DataBuffer& out);
  bool decodePiece(ByteSpan in, bool last, DataBuffer& out, std::size_t& consumed);
  bool encodeInput(ByteSpan in, bool last, DataBuffer& out, std::size_t& consumed);
  bool encodePivot(bool last, DataBuffer& out);
  bool encodeUnits(std::span<const char16_t> units, bool last, DataBuffer& out,
                   std::size_t& consumed);
  bool badInput(DataBuffer& out);
  bool badUnits(std::span<const char16_t> units, DataBuffer& out);
  std::uint64_t offsetOfUnit(std::size_t index) const;
  bool replace(bool invalid, DataBuffer& out);
  bool writeText(std::u16string_view text, DataBuffer& out, bool& written);
  bool writeRaw(ByteSpan bytes, DataBuffer& out);
  bool writeDefaultBytes(DataBuffer& out);
  bool writeEntity(char32_t character, DataBuffer& out);
  bool writeInOtherCharset(std::span<const char16_t> units, DataBuffer& out, bool& written);
  bool endShiftState(DataBuffer& out);

  const int from;
  const int to;
  const ErrorAction action;
  const int altCodePage;
  const std::vector<std::uint8_t> defaultBytes;
  Mode mode = Mode::None;
  const CodePage* (*rowOf)(int) noexcept = findCodePage;  // or of pages that keep codes apart
  const CodePage* source = nullptr;
  Marks marks;
  bool markPending = false;
  bool unitsOut = false;
  bool unitsIn = false;
  bool failed = false;  // ErrorAction::Fail has struck

  std::unique_ptr<MacArabicRewriter> rewriter;
  std::vector<std::uint8_t> rewritten;
  DecoderPtr decoder;
  EncoderPtr encoder;
  EncoderPtr altEncoder;

  std::uint64_t invalid = 0;
  std::uint64_t unmappable = 0;
  std::uint64_t firstError = 0;
  std::uint64_t offset = 0;  // of the next byte to decode

  // What is needed to find the byte offset of a unit of the block in work.
  DecoderPtr blockDecoder;
  ByteSpan blockInput;
  std::uint64_t blockOffset = 0;
  std::size_t blockKept = 0;  // units that an earlier block left behind
  bool blockIsInput = false;

  std::size_t carryCount = 0;
  std::array<std::uint8_t, kCarryBytes> carry;
  std::size_t pivotCount = 0;
  std::array<char16_t, kPivotUnits> pivot;
};

void CharsetStream::Impl::reset() {
  if (decoder != nullptr) decoder->reset();
  if (encoder != nullptr) encoder->reset();
  if (rewriter != nullptr) rewriter = std::make_unique<MacArabicRewriter>();
  markPending = marks.length > 0;
  failed = false;
  invalid = unmappable = firstError = offset = 0;
  carryCount = pivotCount = 0;
}

bool CharsetStream::Impl::feed(ByteSpan in, DataBuffer& out) {
  if (mode == Mode::None || failed) return false;
  if (mode == Mode::Copy) return out.append(in);
  if (!skipMark(in)) return true;
  if (mode == Mode::Swap) return swap(in, out);
  return convert(rewriter != nullptr ? rewrite(in, false) : in, false, out);
}

bool CharsetStream::Impl::finish(DataBuffer& out) {
  if (mode == Mode::None || failed) return false;
  if (mode == Mode::Copy) return true;
  markPending = false;
  if (mode == Mode::Swap) {
    const bool done = out.append(carry.data(), carryCount);  // an odd byte stays as it is
    carryCount = 0;
    return done;
  }
  if (rewriter != nullptr && !convert(rewrite({}, true), false, out)) return false;
  return convertRest({}, out);
}

bool CharsetStream::Impl::convertAll(ByteSpan in, DataBuffer& out) {
  const bool halfUnit = unitsIn && in.size() % 2 != 0;
  if (mode != Mode::Tables || rewriter != nullptr || halfUnit) return feed(in, out) && finish(out);
  return skipMark(in) ? convertRest(in, out) : finish(out);
}

bool CharsetStream::Impl::convertRest(ByteSpan in, DataBuffer& out) {
  return convert(in, true, out) && encodePivot(true, out) && endShiftState(out);
}

/// What Mac Arabic becomes ahead of its table; the caller's bytes stay as they are.
ByteSpan CharsetStream::Impl::rewrite(ByteSpan in, bool last) {
  rewritten.clear();
  rewriter->rewrite(in, last, rewritten);
  return rewritten;
}

/// Steps over a mark; collects the bytes that may be one. False while more input is needed to tell.
bool CharsetStream::Impl::skipMark(ByteSpan& in) {
  if (markPending && carryCount == 0 && in.size() >= marks.length) {
    markPending = false;
    if (!beginsMark(marks, in.first(marks.length))) return true;
    offset = marks.length;
    in = in.subspan(marks.length);
  }
  while (markPending) {
    if (in.empty()) return false;
    carry[carryCount++] = in.front();
    in = in.subspan(1);
    if (!beginsMark(marks, {carry.data(), carryCount})) {
      markPending = false;
    } else if (carryCount == marks.length) {
      markPending = false;
      offset = carryCount;
      carryCount = 0;
    }
  }
  return true;
}

bool CharsetStream::Impl::swap(ByteSpan in, DataBuffer& out) {
  while (carryCount % 2 != 0 && !in.empty()) {
    carry[carryCount++] = in.front();
    in = in.subspan(1);
  }
  const std::size_t whole = in.size() & ~std::size_t{1};
  if (carryCount == 1) return true;  // nothing followed
  std::size_t room = 0;
  std::uint8_t* bytes = roomFor(out, whole + carryCount, 0, room);
  if (bytes == nullptr) return false;
  std::size_t written = swapUnits({carry.data(), carryCount}, bytes);
  carryCount = 0;
  written += swapUnits(in, bytes + written);
  out.commit(written);
  if (whole < in.size()) carry[carryCount++] = in.back();
  return true;
}

bool CharsetStream::Impl::convert(ByteSpan in, bool last, DataBuffer& out) {
  if (!decodeCarry(in, out)) return false;
  if (carryCount > 0 && last) {
    std::array<std::uint8_t, kCarryBytes> rest;
    const std::size_t count = carryCount;
    std::copy_n(carry.begin(), count, rest.begin());
    carryCount = 0;
    std::size_t consumed = 0;
    return decodePiece({rest.data(), count}, true, out, consumed);
  }
  if (carryCount > 0) return true;
  std::size_t consumed = 0;
  const bool aligned = reinterpret_cast<std::uintptr_t>(in.data()) % alignof(char16_t) == 0;
  if (unitsIn && aligned && pivotCount == 0) {
    if (!encodeInput(in, last, out, consumed)) return false;
  } else if (!decodePiece(in, last, out, consumed)) {
    return false;
  }
  carryCount = in.size() - consumed;
  std::copy(in.begin() + static_cast<std::ptrdiff_t>(consumed), in.end(), carry.begin());
  return true;
}

/// Decodes the bytes carried over, together with as much of `in` as it takes.
bool CharsetStream::Impl::decodeCarry(ByteSpan& in, DataBuffer& out) {
  while (carryCount > 0 && !in.empty()) {
    const std::size_t kept = carryCount;
    const std::size_t added = std::min(in.size(), kCarryBytes - kept);
    std::array<std::uint8_t, kCarryBytes> joined;
    std::copy_n(carry.begin(), kept, joined.begin());
    std::copy_n(in.begin(), added, joined.begin() + static_cast<std::ptrdiff_t>(kept));
    std::size_t consumed = 0;
    // Carrying as much as there is room for is against the contract; `last` ends the waiting.
    const bool full = kept == kCarryBytes;
    if (!decodePiece({joined.data(), kept + added}, full, out, consumed)) return false;
    if (consumed >= kept) {
      in = in.subspan(consumed - kept);
      carryCount = 0;
      return true;
    }
    carryCount = kept + added - consumed;
    std::copy_n(joined.begin() + static_cast<std::ptrdiff_t>(consumed), carryCount, carry.begin());
    in = in.subspan(added);
  }
  return true;
}

/// Decodes and encodes a piece. What it leaves unconsumed is the beginning of an item.
bool CharsetStream::Impl::decodePiece(ByteSpan in, bool last, DataBuffer& out,
                                      std::size_t& consumed) {
  consumed = 0;
  blockIsInput = false;
  for (;;) {
    const ByteSpan rest = in.subspan(consumed);
    CodecResult result;
    std::uint8_t* direct = nullptr;
    if (unitsOut && pivotCount == 0) {
      std::size_t room = 0;
      direct = roomFor(out, 2 * kSmallRoom, 2 * std::min(rest.size(), kLargePiece), room);
      if (direct == nullptr) return false;
      if (reinterpret_cast<std::uintptr_t>(direct) % alignof(char16_t) != 0) {
        direct = nullptr;
      } else {
        result = decoder->decode(rest, last, {reinterpret_cast<char16_t*>(direct), room / 2});
        out.commit(2 * result.produced);
      }
    }
    if (direct == nullptr) {
      blockKept = pivotCount;
      blockInput = rest;
      blockOffset = offset;
      blockDecoder = invalid + unmappable == 0 ? decoder->clone() : nullptr;
      result = decoder->decode(rest, last, {pivot.data() + pivotCount, kPivotUnits - pivotCount});
      pivotCount += result.produced;
    }
    const bool broken = result.stop == CodecStop::Invalid;
    consumed += result.consumed;
    if (!encodePivot(broken || (last && result.stop == CodecStop::InputEnd), out)) return false;
    offset += result.consumed;
    if (result.stop == CodecStop::InputEnd || result.stop == CodecStop::Truncated) return true;
    if (broken) {
      if (!badInput(out)) return false;
      const std::size_t bad =
          std::min<std::size_t>(std::max<std::size_t>(result.badLength, 1), in.size() - consumed);
      consumed += bad;
      offset += bad;
    }
  }
}

/// Encodes input that is UTF-16 already.
bool CharsetStream::Impl::encodeInput(ByteSpan in, bool last, DataBuffer& out,
                                      std::size_t& consumed) {
  blockIsInput = true;
  blockOffset = offset;
  const std::span<const char16_t> units(reinterpret_cast<const char16_t*>(in.data()),
                                        in.size() / 2);
  std::size_t used = 0;
  if (!encodeUnits(units, last, out, used)) return false;
  consumed = 2 * used;
  offset += consumed;
  return true;
}

bool CharsetStream::Impl::encodePivot(bool last, DataBuffer& out) {
  if (pivotCount == 0) return true;
  std::size_t used = 0;
  if (!encodeUnits({pivot.data(), pivotCount}, last, out, used)) return false;
  pivotCount -= used;
  if (pivotCount > 0)
    std::copy_n(pivot.begin() + static_cast<std::ptrdiff_t>(used), pivotCount, pivot.begin());
  return true;
}

bool CharsetStream::Impl::encodeUnits(std::span<const char16_t> units, bool last, DataBuffer& out,
                                      std::size_t& consumed) {
  consumed = 0;
  std::size_t least = kSmallRoom;
  while (consumed < units.size()) {
    const std::span<const char16_t> rest = units.subspan(consumed);
    std::size_t room = 0;
    std::uint8_t* bytes = roomFor(out, least, 3 * std::min(rest.size(), kLargePiece), room);
    if (bytes == nullptr) return false;
    const CodecResult result = encoder->encode(rest, last, {bytes, room});
    out.commit(result.produced);
    consumed += result.consumed;
    if (result.stop == CodecStop::Truncated) return true;
    if (result.stop == CodecStop::OutputFull) {
      least = result.consumed + result.produced > 0 ? kSmallRoom : 2 * room;
    } else if (result.stop != CodecStop::InputEnd) {
      const std::size_t bad = std::clamp<std::size_t>(result.badLength, 1, units.size() - consumed);
      if (invalid + unmappable == 0) firstError = offsetOfUnit(consumed);
      if (!badUnits(units.subspan(consumed, bad), out)) return false;
      consumed += bad;
    }
  }
  return true;
}

/// Byte offset of a unit of the block in work, found by decoding once more up to it.
std::uint64_t CharsetStream::Impl::offsetOfUnit(std::size_t index) const {
  if (blockIsInput) return blockOffset + 2 * index;
  if (index < blockKept) return blockOffset;
  const DecoderPtr fresh = blockDecoder != nullptr ? nullptr : source->makeDecoder();
  Decoder& again = fresh != nullptr ? *fresh : *blockDecoder;
  std::vector<char16_t> scratch(index - blockKept);
  return blockOffset + again.decode(blockInput, true, scratch).consumed;
}

bool CharsetStream::Impl::badInput(DataBuffer& out) {
  if (invalid + unmappable == 0) firstError = offset;
  ++invalid;
  return replace(true, out);
}

/// Units that the encoder refuses: a character that the target lacks, or (straight from UTF-16
/// input) a surrogate without partner, which is bad input.
bool CharsetStream::Impl::badUnits(std::span<const char16_t> units, DataBuffer& out) {
  if (units.size() == 1 && isSurrogate(units[0])) {
    ++invalid;
    return replace(true, out);
  }
  ++unmappable;
  char32_t character = units[0];
  if (units.size() > 1 && isSurrogate(units[0]))
    character = 0x10000u + ((units[0] - 0xD800u) << 10) + (units[1] - 0xDC00u);
  bool written = false;
  switch (action) {
    case ErrorAction::HexEntity:
    case ErrorAction::DecEntity:
      return writeEntity(character, out);
    case ErrorAction::AltCharset:
      if (!writeInOtherCharset(units, out, written)) return false;
      return written || replace(false, out);
    default:
      return replace(false, out);
  }
}

/// What stands in place of something that has no character, or none in the target.
bool CharsetStream::Impl::replace(bool invalidInput, DataBuffer& out) {
  switch (action) {
    case ErrorAction::Drop:
      return true;
    case ErrorAction::DefaultBytes:
      return writeDefaultBytes(out);
    case ErrorAction::Fail:
      failed = true;
      endShiftState(out);
      return false;
    default:
      break;
  }
  bool written = false;
  if (invalidInput && !writeText(u"\uFFFD", out, written)) return false;
  return written || writeText(u"?", out, written);
}

/// Encodes a short text; `written` is false, and nothing written, when the target lacks it.
bool CharsetStream::Impl::writeText(std::u16string_view text, DataBuffer& out, bool& written) {
  std::size_t room = 0;
  std::uint8_t* bytes = roomFor(out, kSmallRoom * (1 + text.size()), 0, room);
  if (bytes == nullptr) return false;
  const CodecResult result = encoder->encode({text.data(), text.size()}, true, {bytes, room});
  out.commit(result.produced);
  written = result.stop == CodecStop::InputEnd;
  return true;
}

bool CharsetStream::Impl::writeRaw(ByteSpan bytes, DataBuffer& out) {
  return endShiftState(out) && out.append(bytes);
}

bool CharsetStream::Impl::writeDefaultBytes(DataBuffer& out) {
  const int between = defaultBytesCodePage(to);
  if (between == to) return writeRaw(defaultBytes, out);
  const CodePage* page = rowOf(between);
  if (page == nullptr) return false;
  const DecoderPtr reader = page->makeDecoder();
  std::vector<char16_t> text(defaultBytes.size() + 1);
  std::size_t count = 0;
  for (ByteSpan rest = defaultBytes; !rest.empty();) {
    const CodecResult result = reader->decode(rest, true, std::span(text).subspan(count));
    count += result.produced;
    if (result.stop != CodecStop::Invalid) break;
    text[count++] = u'?';
    rest = rest.subspan(
        std::min(rest.size(), result.consumed + std::max<std::size_t>(result.badLength, 1)));
  }
  bool written = false;
  return writeText({text.data(), count}, out, written);
}

bool CharsetStream::Impl::writeEntity(char32_t character, DataBuffer& out) {
  const bool hex = action == ErrorAction::HexEntity;
  const std::uint32_t base = hex ? 16 : 10;
  std::array<char16_t, 16> text;
  std::size_t first = text.size();
  text[--first] = u';';
  for (std::uint32_t rest = character; rest != 0; rest /= base)
    text[--first] = u"0123456789ABCDEF"[rest % base];
  if (hex) text[--first] = u'x';
  text[--first] = u'#';
  text[--first] = u'&';
  bool written = false;
  if (!writeText({text.data() + first, text.size() - first}, out, written)) return false;
  return written || replace(false, out);
}

bool CharsetStream::Impl::writeInOtherCharset(std::span<const char16_t> units, DataBuffer& out,
                                              bool& written) {
  const CodePage* page = findCodePage(altCodePage);
  if (page == nullptr) return true;
  if (altEncoder == nullptr) altEncoder = page->makeEncoder();
  std::array<std::uint8_t, 2 * kSmallRoom> bytes;
  altEncoder->reset();
  const CodecResult result = altEncoder->encode(units, true, bytes);
  written = result.stop == CodecStop::InputEnd;
  if (!written) return true;
  const std::size_t count =
      result.produced + altEncoder->finish(std::span(bytes).subspan(result.produced));
  return writeRaw({bytes.data(), count}, out);
}

/// Leaves the encoder in its initial shift state, so that raw bytes or the end may follow.
bool CharsetStream::Impl::endShiftState(DataBuffer& out) {
  std::size_t room = 0;
  std::uint8_t* bytes = roomFor(out, kSmallRoom, 0, room);
  if (bytes == nullptr) return false;
  out.commit(encoder->finish({bytes, room}));
  return true;
}

CharsetStream::CharsetStream(int fromCodePage, int toCodePage, const ConvertOptions& options)
    : impl_(std::make_unique<Impl>(fromCodePage, toCodePage, options)) {}
CharsetStream::~CharsetStream() = default;
CharsetStream::CharsetStream(CharsetStream&&) noexcept = default;
CharsetStream& CharsetStream::operator=(CharsetStream&&) noexcept = default;

void CharsetStream::reset() {
  impl_->reset();
}
bool CharsetStream::valid() const noexcept {
  return impl_->mode != Impl::Mode::None;
}
bool CharsetStream::feed(ByteSpan in, DataBuffer& out) {
  return impl_->feed(in, out);
}
bool CharsetStream::finish(DataBuffer& out) {
  return impl_->finish(out);
}
bool CharsetStream::convertAll(ByteSpan in, DataBuffer& out) {
  return impl_->convertAll(in, out);
}
std::uint64_t CharsetStream::invalidCount() const noexcept {
  return impl_->invalid;
}
std::uint64_t CharsetStream::unmappableCount() const noexcept {
  return impl_->unmappable;
}
std::uint64_t CharsetStream::firstErrorOffset() const noexcept {
  return impl_->firstError;
}

}  // namespace zantrel
