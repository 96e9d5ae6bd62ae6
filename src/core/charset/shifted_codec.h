#pragma once
// Pages that switch between a single-byte and a double-byte set by control sequences. A scheme says
// which sequences those are and how the sets map; the two classes here keep the state. A scheme is
// a class with
//
//   Shift control(ByteSpan in, bool inDouble)   what the sequence at the front of `in` does
//   char16_t single(std::uint8_t)               character of a byte in the single-byte state
//   char16_t pair(std::uint8_t, std::uint8_t)   character of a pair, kUndefined if it has none
//   bool leads(std::uint8_t)                may the byte open a pair in the double-byte state
//   bool leadsAnywhere(std::uint8_t)        and in the single-byte state (8-bit forms)
//   bool trails(std::uint8_t, std::uint8_t)     may the second byte belong to a pair that has no
//                                           character (or does it stand for itself)
//   int singleCode(char16_t)                byte of a unit, -1 if it has none
//   unsigned pairCode(char16_t)             pair of a unit as it stands in the text, 0 for none
//   kHeader, kDesignation                   written once a text, and once a line before a pair
//   kToDouble, kToSingle                    the shifts
//   kEscapedByte                            a byte that is written twice, 0 for none
//   kLineEndsDouble                         does LF end the double-byte state when reading

#include <algorithm>
#include <string_view>

#include "core/charset/codec.h"
#include "core/charset/single_byte.h"
#include "core/charset/utf16_units.h"

namespace zantrel {

struct Shift {
  enum class To : std::uint8_t {
    None,  ///< no control sequence: text
    Single,
    Double,
    Nowhere,     ///< a sequence without effect on the state
    Literal,     ///< the sequence stands for its own first byte
    Broken,      ///< invalid
    Unfinished,  ///< more input is needed to tell
  };
  To to = To::None;
  std::uint8_t length = 0;
};

template <class Scheme>
class ShiftedDecoder final : public Decoder {
 public:
  CodecResult decode(ByteSpan in, bool last, std::span<char16_t> out) override {
    CodecResult result;
    const auto stop = [&result](CodecStop why, std::uint8_t badLength = 0) {
      result.stop = why;
      result.badLength = badLength;
      return result;
    };
    while (result.consumed < in.size()) {
      const ByteSpan rest = in.subspan(result.consumed);
      const Shift shift = scheme_.control(rest, double_);
      if (shift.to == Shift::To::Unfinished)
        return last ? stop(CodecStop::Invalid, 1) : stop(CodecStop::Truncated);
      if (shift.to == Shift::To::Broken) return stop(CodecStop::Invalid, shift.length);
      const bool writes = shift.to == Shift::To::None || shift.to == Shift::To::Literal;
      if (writes && result.produced == out.size()) return stop(CodecStop::OutputFull);
      std::size_t length = shift.length;
      if (shift.to == Shift::To::Literal) {
        out[result.produced++] = rest[0];
      } else if (shift.to == Shift::To::Single || shift.to == Shift::To::Double) {
        double_ = shift.to == Shift::To::Double;
      } else if (shift.to == Shift::To::None) {
        char16_t unit = kUndefined;
        if (double_ ? scheme_.leads(rest[0]) : scheme_.leadsAnywhere(rest[0])) {
          if (rest.size() == 1)
            return last ? stop(CodecStop::Invalid, 1) : stop(CodecStop::Truncated);
          unit = scheme_.pair(rest[0], rest[1]);
          length = 2;
          if (unit == kUndefined)
            return stop(CodecStop::Invalid, scheme_.trails(rest[0], rest[1]) ? 2 : 1);
        } else {
          unit = scheme_.single(rest[0]);
          length = 1;
          if (unit == kUndefined) return stop(CodecStop::Invalid, 1);
          if (Scheme::kLineEndsDouble && unit == u'\n') double_ = false;
        }
        out[result.produced++] = unit;
      }
      result.consumed += length;
    }
    return result;
  }

  void reset() override { *this = ShiftedDecoder(); }
  std::unique_ptr<Decoder> clone() const override {
    return std::make_unique<ShiftedDecoder>(*this);
  }

 private:
  Scheme scheme_;
  bool double_ = false;
};

template <class Scheme>
class ShiftedEncoder final : public Encoder {
 public:
  CodecResult encode(std::span<const char16_t> in, bool last,
                     std::span<std::uint8_t> out) override {
    constexpr std::size_t kMost = Scheme::kHeader.size() + Scheme::kDesignation.size() +
                                  Scheme::kToDouble.size() + Scheme::kToSingle.size() + 2;
    CodecResult result;
    for (; result.consumed < in.size(); ++result.consumed) {
      const char16_t unit = in[result.consumed];
      const int single = scheme_.singleCode(unit);
      const unsigned pair = single >= 0 ? 0 : scheme_.pairCode(unit);
      if (single < 0 && pair == 0) {
        stopAtUnit(in.subspan(result.consumed), last, result);
        return result;
      }
      if (out.size() - result.produced < kMost) {
        result.stop = CodecStop::OutputFull;
        return result;
      }
      std::uint8_t* at = out.data() + result.produced;
      const auto put = [&at](std::string_view text) {
        at = std::copy(text.begin(), text.end(), at);
      };
      if (!begun_) put(Scheme::kHeader);
      begun_ = true;
      if (pair != 0) {
        if (!designated_) put(Scheme::kDesignation);
        designated_ = true;
        if (!double_) put(Scheme::kToDouble);
        double_ = true;
        *at++ = static_cast<std::uint8_t>(pair >> 8);
        *at++ = static_cast<std::uint8_t>(pair & 0xFF);
      } else {
        if (double_) put(Scheme::kToSingle);
        double_ = false;
        *at++ = static_cast<std::uint8_t>(single);
        if (Scheme::kEscapedByte != 0 && single == Scheme::kEscapedByte)
          *at++ = static_cast<std::uint8_t>(single);
        if (unit == u'\n') designated_ = false;
      }
      result.produced = static_cast<std::size_t>(at - out.data());
    }
    return result;
  }

  std::size_t finish(std::span<std::uint8_t> out) override {
    if (!double_ || out.size() < Scheme::kToSingle.size()) return 0;
    double_ = false;
    std::copy(Scheme::kToSingle.begin(), Scheme::kToSingle.end(), out.begin());
    return Scheme::kToSingle.size();
  }

  void reset() override { *this = ShiftedEncoder(); }

 private:
  Scheme scheme_;
  bool begun_ = false;
  bool designated_ = false;
  bool double_ = false;
};

}  // namespace zantrel
