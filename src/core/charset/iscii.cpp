// ISCII (IS 13194:1991): one upper half for the letters of nine scripts.
//
// The Unicode blocks of these scripts were laid out after ISCII, 128 code points each with the same
// letter at the same place. So one row of offsets serves all scripts; a script is its block and the
// bytes that have no letter in it. A letter with NUKTA (E9) behind it may be another letter; HALANT
// (E8) twice is a halant with U+200C, HALANT and NUKTA one with U+200D, INV (D9) alone is U+200D.
// ATR (EF) and a letter change the script up to the end of the line, where the page's own returns;
// display attributes are skipped. EXT (F0) leads to two Vedic signs. Danda (EA) is common to all
// scripts, Unicode has it in the Devanagari block only. Assamese is Bengali with two letters
// changed.
//
// Mapping: the standard's code chart and ICU's converters, with the letters above added where ICU
// 72 has them in one direction or script only.

#include "core/charset/iscii.h"

#include <array>
#include <iterator>
#include <string_view>

#include "core/charset/single_byte.h"
#include "core/charset/utf16_units.h"

namespace zantrel {
namespace {

constexpr std::uint8_t kHalant = 0xE8;
constexpr std::uint8_t kNukta = 0xE9;
constexpr std::uint8_t kDanda = 0xEA;
constexpr std::uint8_t kInv = 0xD9;
constexpr std::uint8_t kAtr = 0xEF;
constexpr std::uint8_t kExt = 0xF0;
constexpr char16_t kNonJoiner = 0x200C;
constexpr char16_t kJoiner = 0x200D;
constexpr char16_t kDandaUnit = 0x0964;
constexpr char16_t kDoubleDandaUnit = 0x0965;
constexpr char16_t kFirstBlock = 0x0900;
constexpr std::size_t kBlockUnits = 0x80;

/// Place in its block of the letter at each byte from A1 on, 0 for none.
constexpr std::uint8_t kOffsets[] = {
    0x01, 0x02, 0x03, 0x05, 0x06, 0x07, 0x08, 0x09, 0x0A, 0x0B, 0x0E, 0x0F, 0x10, 0x0D, 0x12,  // A1
    0x13, 0x14, 0x11, 0x15, 0x16, 0x17, 0x18, 0x19, 0x1A, 0x1B, 0x1C, 0x1D, 0x1E, 0x1F, 0x20,
    0x21, 0x22, 0x23, 0x24, 0x25, 0x26, 0x27, 0x28, 0x29, 0x2A, 0x2B, 0x2C, 0x2D, 0x2E, 0x2F,
    0x5F, 0x30, 0x31, 0x32, 0x33, 0x34, 0x35, 0x36, 0x37, 0x38, 0x39, 0x00, 0x3E, 0x3F, 0x40,
    0x41, 0x42, 0x43, 0x46, 0x47, 0x48, 0x45, 0x4A, 0x4B, 0x4C, 0x49, 0x4D, 0x3C, 0x00, 0x00,
    0x00, 0x00, 0x00, 0x00, 0x00, 0x66, 0x67, 0x68, 0x69, 0x6A, 0x6B, 0x6C, 0x6D, 0x6E, 0x6F,  // F0
};
constexpr std::uint8_t kFirstLetter = 0xA1;
constexpr std::uint8_t kLastLetter = 0xFA;
static_assert(std::size(kOffsets) == kLastLetter - kFirstLetter + 1);

/// The letters that a NUKTA makes of others.
struct WithNukta {
  std::uint8_t byte;
  std::uint8_t offset;
};
constexpr WithNukta kWithNukta[] = {
    {0xA1, 0x50}, {0xA6, 0x0C}, {0xA7, 0x61}, {0xAA, 0x60}, {0xB3, 0x58},
    {0xB4, 0x59}, {0xB5, 0x5A}, {0xBA, 0x5B}, {0xBF, 0x5C}, {0xC0, 0x5D},
    {0xC9, 0x5E}, {0xDB, 0x62}, {0xDC, 0x63}, {0xDF, 0x44}, {0xEA, 0x3D},
};

struct Script {
  std::uint8_t attribute;    ///< behind ATR
  char16_t block;            ///< first code point
  std::string_view missing;  ///< bytes without letter
  std::string_view nukta;    ///< bytes that a NUKTA changes
};

using namespace std::string_view_literals;
constexpr auto kBengaliMissing = "\xAB\xAE\xAF\xB2\xC7\xD0\xD2\xD3\xD4\xE0\xE3\xE4\xE7"sv;
constexpr auto kAssameseMissing = "\xAB\xAE\xAF\xB2\xC7\xD0\xD2\xD3\xE0\xE3\xE4\xE7"sv;
constexpr auto kBengaliNukta = "\xA6\xA7\xAA\xBF\xC0\xDB\xDC\xDF"sv;

constexpr Script kScripts[] = {
    {0x42, 0x0900, ""sv, "\xA1\xA6\xA7\xAA\xB3\xB4\xB5\xBA\xBF\xC0\xC9\xDB\xDC\xDF\xEA"sv},
    {0x43, 0x0980, kBengaliMissing, kBengaliNukta},
    {0x44, 0x0B80,
     "\xA1\xAA\xAE\xB2\xB4\xB5\xB6\xB9\xBB\xBE\xBF\xC0\xC3\xC4\xC5\xC9\xCA\xCB\xCE\xD5\xDF\xE3\xE7"
     "\xE9"sv,
     ""sv},
    {0x45, 0x0C00, "\xA1\xAE\xB2\xC7\xCE\xD3\xE3\xE7\xE9"sv, "\xA6\xA7\xAA\xDF"sv},
    {0x46, 0x0980, kAssameseMissing, kBengaliNukta},
    {0x47, 0x0B00, "\xAB\xAE\xAF\xB2\xC7\xD0\xD3\xE0\xE3\xE4\xE7"sv, "\xA6\xA7\xAA\xBF\xC0"sv},
    {0x48, 0x0C80, "\xA1\xAE\xB2\xC7\xCE\xD0\xD3\xE3\xE7\xE9"sv, "\xA6\xA7\xAA\xDF"sv},
    {0x49, 0x0D00, "\xA1\xAE\xB2\xC7\xCE\xE3\xE7\xE9"sv, "\xA6\xA7\xAA"sv},
    {0x4A, 0x0A80, "\xAB\xAF\xC7\xCE\xD0\xD3\xE0\xE4\xE9"sv, "\xA1\xAA\xDF"sv},
    {0x4B, 0x0A00, "\xAA\xAB\xAE\xAF\xB2\xC7\xCE\xD0\xD3\xD6\xDF\xE0\xE3\xE4\xE7"sv,
     "\xB4\xB5\xBA\xBF\xC9"sv},
};
constexpr std::uint8_t kFirstScript = 0x42;
constexpr std::uint8_t kLastScript = 0x4B;
constexpr std::uint8_t kDefaultScript = 0x40;
constexpr std::uint8_t kAssamese = 0x46;
constexpr WithNukta kAssameseLetters[] = {{0xCF, 0x70}, {0xD4, 0x71}};

constexpr const Script& scriptOf(std::uint8_t attribute) noexcept {
  return kScripts[attribute - kFirstScript];
}

constexpr bool has(std::string_view bytes, std::uint8_t byte) noexcept {
  return bytes.find(static_cast<char>(byte)) != std::string_view::npos;
}

/// The letter of a single byte in a script, kUndefined for none.
constexpr char16_t letter(const Script& script, std::uint8_t byte) noexcept {
  if (byte < kFirstLetter || byte > kLastLetter || has(script.missing, byte)) return kUndefined;
  std::uint8_t offset = kOffsets[byte - kFirstLetter];
  if (script.attribute == kAssamese)
    for (const WithNukta& changed : kAssameseLetters)
      if (changed.byte == byte) offset = changed.offset;
  return offset == 0 ? kUndefined : static_cast<char16_t>(script.block + offset);
}

constexpr char16_t letterWithNukta(const Script& script, std::uint8_t byte) noexcept {
  if (!has(script.nukta, byte)) return kUndefined;
  for (const WithNukta& changed : kWithNukta)
    if (changed.byte == byte) return static_cast<char16_t>(script.block + changed.offset);
  return kUndefined;
}

/// Does the meaning of the byte depend on the next one?
constexpr bool looksAhead(const Script& script, std::uint8_t byte) noexcept {
  return byte == kHalant || byte == kDanda || byte == kAtr || byte == kExt ||
         has(script.nukta, byte);
}

class IsciiDecoder final : public Decoder {
 public:
  explicit IsciiDecoder(std::uint8_t script) noexcept : own_(script), current_(script) {}

  CodecResult decode(ByteSpan in, bool last, std::span<char16_t> out) override {
    CodecResult result;
    const auto stop = [&result](CodecStop why, std::uint8_t badLength = 0) {
      result.stop = why;
      result.badLength = badLength;
      return result;
    };
    while (result.consumed < in.size()) {
      const std::uint8_t byte = in[result.consumed];
      const bool more = result.consumed + 1 < in.size();
      if (!more && !last && looksAhead(scriptOf(current_), byte)) return stop(CodecStop::Truncated);
      const std::uint8_t next = more ? in[result.consumed + 1] : std::uint8_t{0};
      const Item item = read(byte, next);
      if (item.bad) return stop(CodecStop::Invalid, item.length);
      if (out.size() - result.produced < item.count) return stop(CodecStop::OutputFull);
      for (std::size_t i = 0; i < item.count; ++i) out[result.produced++] = item.units[i];
      result.consumed += item.length;
      current_ = item.script;
    }
    return result;
  }

  void reset() override { current_ = own_; }
  std::unique_ptr<Decoder> clone() const override { return std::make_unique<IsciiDecoder>(*this); }

 private:
  struct Item {
    std::uint8_t script;
    std::uint8_t length = 1;
    bool bad = false;
    std::uint8_t count = 1;
    char16_t units[2] = {};
  };

  /// What stands at the front of the input; `next` is 0 behind its last byte.
  Item read(std::uint8_t byte, std::uint8_t next) const noexcept {
    Item item{current_};
    const Script& script = scriptOf(current_);
    if (byte <= 0xA0) {
      item.units[0] = byte;
      if (byte == '\n' || byte == '\r') item.script = own_;
    } else if (byte == kAtr) {
      item.count = 0;
      item.length = 2;
      if (next >= kFirstScript && next <= kLastScript) {
        item.script = next;
      } else if (next == kDefaultScript) {
        item.script = own_;
      } else if (next < 0x21 || next > 0x4F) {  // neither a script nor a display attribute
        item.bad = true;
        item.length = 1;
      }
    } else if (byte == kExt) {
      item.length = 2;
      item.units[0] = next == 0xBF ? u'\u0970' : u'\u0952';
      item.bad = next != 0xBF && next != 0xB8;
      if (item.bad && next < kFirstLetter) item.length = 1;
    } else if (byte == kInv) {
      item.units[0] = kJoiner;
    } else if (byte == kHalant && (next == kHalant || next == kNukta)) {
      item.length = item.count = 2;
      item.units[0] = letter(script, kHalant);
      item.units[1] = next == kHalant ? kNonJoiner : kJoiner;
    } else if (next == kNukta && has(script.nukta, byte)) {
      item.length = 2;
      item.units[0] = letterWithNukta(script, byte);
    } else if (byte == kDanda) {
      item.length = next == kDanda ? 2 : 1;
      item.units[0] = next == kDanda ? kDoubleDandaUnit : kDandaUnit;
    } else {
      item.units[0] = letter(script, byte);
      item.bad = item.units[0] == kUndefined;
    }
    return item;
  }

  std::uint8_t own_;
  std::uint8_t current_;
};

/// The bytes of every letter of a script, by its place in the block: one or two, 0 for none.
using ScriptCodes = std::array<std::array<std::uint8_t, 2>, kBlockUnits>;

constexpr auto kCodes = [] {
  std::array<ScriptCodes, std::size(kScripts)> all{};
  for (std::size_t i = 0; i < all.size(); ++i) {
    const Script& script = kScripts[i];
    for (const WithNukta& changed : kWithNukta)
      if (letterWithNukta(script, changed.byte) != kUndefined)
        all[i][changed.offset] = {changed.byte, kNukta};
    for (unsigned byte = kFirstLetter; byte <= kLastLetter; ++byte) {
      const char16_t unit = letter(script, static_cast<std::uint8_t>(byte));
      if (unit != kUndefined) all[i][unit - script.block] = {static_cast<std::uint8_t>(byte), 0};
    }
  }
  return all;
}();

class IsciiEncoder final : public Encoder {
 public:
  explicit IsciiEncoder(std::uint8_t script) noexcept : own_(script), current_(script) {}

  CodecResult encode(std::span<const char16_t> in, bool last,
                     std::span<std::uint8_t> out) override {
    constexpr std::size_t kMost = 4;  // ATR, the script, two bytes
    CodecResult result;
    for (; result.consumed < in.size(); ++result.consumed) {
      const char16_t unit = in[result.consumed];
      std::array<std::uint8_t, 2> bytes{};
      std::uint8_t script = current_;
      if (!find(unit, script, bytes)) {
        stopAtUnit(in.subspan(result.consumed), last, result);
        return result;
      }
      if (out.size() - result.produced < kMost) {
        result.stop = CodecStop::OutputFull;
        return result;
      }
      if (script != current_) {
        out[result.produced++] = kAtr;
        out[result.produced++] = script;
        current_ = script;
      }
      out[result.produced++] = bytes[0];
      if (bytes[1] != 0) out[result.produced++] = bytes[1];
      if (unit == u'\n' || unit == u'\r') current_ = own_;
      behindHalant_ = bytes[0] == kHalant && bytes[1] == 0 && !isJoiner(unit);
    }
    return result;
  }

  void reset() override { *this = IsciiEncoder(own_); }

 private:
  static bool isJoiner(char16_t unit) noexcept { return unit == kNonJoiner || unit == kJoiner; }

  bool find(char16_t unit, std::uint8_t& script,
            std::array<std::uint8_t, 2>& bytes) const noexcept {
    if (unit <= 0xA0) {
      bytes[0] = static_cast<std::uint8_t>(unit);
      return true;
    }
    if (isJoiner(unit)) {
      if (unit == kNonJoiner && !behindHalant_) return false;
      bytes[0] = unit == kNonJoiner ? kHalant : behindHalant_ ? kNukta : kInv;
      return true;
    }
    if (unit == kDandaUnit || unit == kDoubleDandaUnit) {
      bytes = {kDanda, unit == kDoubleDandaUnit ? kDanda : std::uint8_t{0}};
      return true;
    }
    if (unit == 0x0952 || unit == 0x0970) {
      bytes = {kExt, unit == 0x0952 ? std::uint8_t{0xB8} : std::uint8_t{0xBF}};
      return true;
    }
    if (unit < kFirstBlock || unit >= 0x0D80) return false;
    if (findIn(script, unit, bytes)) return true;
    for (const Script& other : kScripts)
      if (findIn(other.attribute, unit, bytes)) {
        script = other.attribute;
        return true;
      }
    return false;
  }

  static bool findIn(std::uint8_t script, char16_t unit,
                     std::array<std::uint8_t, 2>& bytes) noexcept {
    const unsigned offset = static_cast<unsigned>(unit) - scriptOf(script).block;
    if (offset >= kBlockUnits) return false;
    bytes = kCodes[script - kFirstScript][offset];
    return bytes[0] != 0;
  }

  std::uint8_t own_;
  std::uint8_t current_;
  bool behindHalant_ = false;
};

DecoderPtr makeDecoder(std::uint8_t script) {
  return std::make_unique<IsciiDecoder>(script);
}
EncoderPtr makeEncoder(std::uint8_t script) {
  return std::make_unique<IsciiEncoder>(script);
}

}  // namespace

// clang-format off
DecoderPtr makeIsciiDecoder57002() { return makeDecoder(0x42); }
EncoderPtr makeIsciiEncoder57002() { return makeEncoder(0x42); }
DecoderPtr makeIsciiDecoder57003() { return makeDecoder(0x43); }
EncoderPtr makeIsciiEncoder57003() { return makeEncoder(0x43); }
DecoderPtr makeIsciiDecoder57004() { return makeDecoder(0x44); }
EncoderPtr makeIsciiEncoder57004() { return makeEncoder(0x44); }
DecoderPtr makeIsciiDecoder57005() { return makeDecoder(0x45); }
EncoderPtr makeIsciiEncoder57005() { return makeEncoder(0x45); }
DecoderPtr makeIsciiDecoder57006() { return makeDecoder(0x46); }
EncoderPtr makeIsciiEncoder57006() { return makeEncoder(0x46); }
DecoderPtr makeIsciiDecoder57007() { return makeDecoder(0x47); }
EncoderPtr makeIsciiEncoder57007() { return makeEncoder(0x47); }
DecoderPtr makeIsciiDecoder57008() { return makeDecoder(0x48); }
EncoderPtr makeIsciiEncoder57008() { return makeEncoder(0x48); }
DecoderPtr makeIsciiDecoder57009() { return makeDecoder(0x49); }
EncoderPtr makeIsciiEncoder57009() { return makeEncoder(0x49); }
DecoderPtr makeIsciiDecoder57010() { return makeDecoder(0x4A); }
EncoderPtr makeIsciiEncoder57010() { return makeEncoder(0x4A); }
DecoderPtr makeIsciiDecoder57011() { return makeDecoder(0x4B); }
EncoderPtr makeIsciiEncoder57011() { return makeEncoder(0x4B); }
// clang-format on

}  // namespace zantrel
