// UTF-7 (RFC 2152): ASCII with stretches of UTF-16BE in a base64 without padding between "+" and
// "-".
//
// Read: every ASCII character stands for itself, the ones that the RFC would rather see encoded
// too. A stretch ends at the first character outside the base64 alphabet, which is swallowed when
// it is "-". Ill-formed are bytes above 7F, an empty stretch not written as "+-", surrogates
// without partner, and a stretch whose left-over bits are six or more or not zero.
//
// Written: the RFC's set D and space, tab, CR, LF directly, all else encoded; "-" behind a stretch
// only where the next character needs it, and at the end of the text.

#include "core/charset/utf7.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "core/charset/utf16_units.h"

namespace zantrel {
namespace {

constexpr std::string_view kAlphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::uint8_t kNoDigit = 0xFF;

constexpr auto kDigits = [] {
  std::array<std::uint8_t, 128> digits{};
  digits.fill(kNoDigit);
  for (std::size_t i = 0; i < kAlphabet.size(); ++i)
    digits[static_cast<std::uint8_t>(kAlphabet[i])] = static_cast<std::uint8_t>(i);
  return digits;
}();

constexpr auto kDirect = [] {
  std::array<bool, 128> direct{};
  for (const char c :
       std::string_view("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789"
                        "'(),-./:? \t\r\n"))
    direct[static_cast<std::uint8_t>(c)] = true;
  return direct;
}();

constexpr bool isBase64(std::uint32_t byte) noexcept {
  return byte < 128 && kDigits[byte] != kNoDigit;
}

class Utf7Decoder final : public Decoder {
 public:
  CodecResult decode(ByteSpan in, bool last, std::span<char16_t> out) override;
  void reset() override { *this = Utf7Decoder(); }
  std::unique_ptr<Decoder> clone() const override { return std::make_unique<Utf7Decoder>(*this); }

 private:
  enum class Mode : std::uint8_t { Direct, Opened, Encoded };

  /// Takes one digit; false when it completes a unit that is ill-formed.
  bool takeDigit(std::uint32_t digit);
  bool takeUnit(char16_t unit);
  /// Leaves the stretch; false when it was ill-formed.
  bool endStretch();
  /// What stands for itself, up to the next stretch.
  static void copyDirect(ByteSpan in, std::span<char16_t> out, CodecResult& result) noexcept;
  void queue(char16_t unit) { queued_[queuedCount_++] = unit; }

  Mode mode_ = Mode::Direct;
  std::uint32_t bits_ = 0;
  std::uint8_t bitCount_ = 0;
  char16_t high_ = 0;                 // a high surrogate that waits for its partner
  std::array<char16_t, 2> queued_{};  // decoded, not yet written
  std::uint8_t queuedCount_ = 0;
};

bool Utf7Decoder::takeUnit(char16_t unit) {
  const char16_t high = high_;
  high_ = 0;
  if (isLowSurrogate(unit)) {
    if (high == 0) return false;
    queue(high);
    queue(unit);
    return true;
  }
  if (isHighSurrogate(unit)) {
    high_ = unit;
  } else {
    queue(unit);
  }
  return high == 0;
}

bool Utf7Decoder::takeDigit(std::uint32_t digit) {
  bits_ = (bits_ << 6) | digit;
  bitCount_ = static_cast<std::uint8_t>(bitCount_ + 6);
  if (bitCount_ < 16) return true;
  bitCount_ = static_cast<std::uint8_t>(bitCount_ - 16);
  const auto unit = static_cast<char16_t>(bits_ >> bitCount_);
  bits_ &= (1u << bitCount_) - 1;
  return takeUnit(unit);
}

bool Utf7Decoder::endStretch() {
  const bool wellFormed = high_ == 0 && bitCount_ < 6 && bits_ == 0 && mode_ == Mode::Encoded;
  mode_ = Mode::Direct;
  bits_ = 0;
  bitCount_ = 0;
  high_ = 0;
  return wellFormed;
}

void Utf7Decoder::copyDirect(ByteSpan in, std::span<char16_t> out, CodecResult& result) noexcept {
  const std::size_t most = std::min(in.size() - result.consumed, out.size() - result.produced);
  const std::uint8_t* const p = in.data() + result.consumed;
  char16_t* const o = out.data() + result.produced;
  std::size_t i = 0;
  for (; i < most && p[i] < 0x80 && p[i] != '+'; ++i) o[i] = p[i];
  result.consumed += i;
  result.produced += i;
}

CodecResult Utf7Decoder::decode(ByteSpan in, bool last, std::span<char16_t> out) {
  CodecResult result;
  const auto stop = [&result](CodecStop why, std::uint8_t badLength = 0) {
    result.stop = why;
    result.badLength = badLength;
    return result;
  };
  for (;;) {
    if (queuedCount_ > 0) {
      if (out.size() - result.produced < queuedCount_) return stop(CodecStop::OutputFull);
      for (std::size_t i = 0; i < queuedCount_; ++i) out[result.produced++] = queued_[i];
      queuedCount_ = 0;
    }
    if (mode_ == Mode::Direct) copyDirect(in, out, result);
    if (result.consumed == in.size()) break;
    const std::uint8_t byte = in[result.consumed];
    bool good = true;
    if (mode_ == Mode::Direct) {
      if (byte >= 0x80) return stop(CodecStop::Invalid, 1);
      if (byte == '+') {
        mode_ = Mode::Opened;
      } else {
        queue(byte);
      }
    } else if (mode_ == Mode::Opened && byte == '-') {
      mode_ = Mode::Direct;
      queue(u'+');
    } else if (isBase64(byte)) {
      mode_ = Mode::Encoded;
      good = takeDigit(kDigits[byte]);
    } else {
      good = endStretch();
      if (byte >= 0x80) {
        good = false;
      } else if (byte != '-') {
        queue(byte);
      }
    }
    const bool atEnd = last && result.consumed + 1 == in.size();
    if (atEnd && mode_ != Mode::Direct && !endStretch()) good = false;
    // The byte that reveals the error is stepped over; what it stands for is in the queue.
    if (!good) return stop(CodecStop::Invalid, 1);
    ++result.consumed;
  }
  if (last && mode_ != Mode::Direct && !endStretch()) return stop(CodecStop::Invalid, 1);
  return result;
}

class Utf7Encoder final : public Encoder {
 public:
  CodecResult encode(std::span<const char16_t> in, bool last, std::span<std::uint8_t> out) override;
  std::size_t finish(std::span<std::uint8_t> out) override;
  void reset() override { *this = Utf7Encoder(); }

 private:
  void endStretch(std::span<std::uint8_t> out, std::size_t& at);

  bool encoded_ = false;
  std::uint32_t bits_ = 0;
  std::uint8_t bitCount_ = 0;
};

void Utf7Encoder::endStretch(std::span<std::uint8_t> out, std::size_t& at) {
  if (bitCount_ > 0)
    out[at++] = static_cast<std::uint8_t>(kAlphabet[(bits_ << (6 - bitCount_)) & 63]);
  bits_ = 0;
  bitCount_ = 0;
  encoded_ = false;
}

CodecResult Utf7Encoder::encode(std::span<const char16_t> in, bool last,
                                std::span<std::uint8_t> out) {
  constexpr std::size_t kMost = 8;  // "+", two units and the bits before them
  CodecResult result;
  while (result.consumed < in.size()) {
    const char16_t unit = in[result.consumed];
    std::size_t units = 1;
    if (isHighSurrogate(unit) || isLowSurrogate(unit)) {
      stopAtUnit(in.subspan(result.consumed), last, result);
      if (result.stop != CodecStop::Unmappable) return result;
      units = 2;
      result.stop = CodecStop::InputEnd;
      result.badLength = 0;
    }
    std::size_t& at = result.produced;
    if (out.size() - at < kMost) {
      result.stop = CodecStop::OutputFull;
      return result;
    }
    if (unit < 128 && (kDirect[unit] || (unit == '+' && !encoded_))) {
      if (encoded_) {
        endStretch(out, at);
        if (isBase64(unit) || unit == '-') out[at++] = '-';
      }
      out[at++] = static_cast<std::uint8_t>(unit);
      if (unit == '+') out[at++] = '-';
    } else {
      if (!encoded_) out[at++] = '+';
      encoded_ = true;
      for (std::size_t k = 0; k < units; ++k) {
        bits_ = (bits_ << 16) | in[result.consumed + k];
        bitCount_ = static_cast<std::uint8_t>(bitCount_ + 16);
        while (bitCount_ >= 6) {
          bitCount_ = static_cast<std::uint8_t>(bitCount_ - 6);
          out[at++] = static_cast<std::uint8_t>(kAlphabet[(bits_ >> bitCount_) & 63]);
        }
        bits_ &= (1u << bitCount_) - 1;
      }
    }
    result.consumed += units;
  }
  return result;
}

std::size_t Utf7Encoder::finish(std::span<std::uint8_t> out) {
  std::size_t at = 0;
  if (!encoded_ || out.size() < 2) return 0;
  endStretch(out, at);
  out[at++] = '-';
  return at;
}

}  // namespace

DecoderPtr makeUtf7Decoder() {
  return std::make_unique<Utf7Decoder>();
}
EncoderPtr makeUtf7Encoder() {
  return std::make_unique<Utf7Encoder>();
}

}  // namespace zantrel
