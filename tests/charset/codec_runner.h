#pragma once
// Drives one codec of a code page over a whole text, in one piece or in pieces.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "core/charset/code_page.h"

namespace zantrel::test {

template <class String>
struct CodecRun {
  String output;
  CodecStop stop = CodecStop::InputEnd;  ///< InputEnd, or the first trouble
  std::size_t consumed = 0;              ///< input used up to there
  std::size_t badLength = 0;
};

/// Feeds `in` to `step` (input span, last, output span -> CodecResult) piece by piece. `trouble`
/// says whether to go on behind what was bad.
template <class In, class Out, class Step, class Trouble>
void run(std::basic_string_view<In> in, std::size_t inStep, std::size_t outStep,
         std::basic_string<Out>& output, const Step& step, const Trouble& trouble) {
  std::size_t at = 0;
  std::size_t extraIn = 0;
  std::size_t extraOut = 0;
  while (true) {
    const std::size_t count = std::min(in.size() - at, inStep + extraIn);
    const bool last = at + count == in.size();
    std::vector<Out> room(std::min(outStep, 4 * count + 16) +
                          extraOut);  // its own block, so that sanitizers see any overrun
    const std::vector<In> piece(in.begin() + static_cast<std::ptrdiff_t>(at),
                                in.begin() + static_cast<std::ptrdiff_t>(at + count));
    const CodecResult result = step(piece, last, room);
    if (result.consumed > count || result.produced > room.size()) {
      throw std::runtime_error("codec went outside its spans");
    }
    output.append(room.data(), result.produced);
    at += result.consumed;
    const bool moved = result.consumed != 0 || result.produced != 0;
    if (moved) extraIn = extraOut = 0;
    extraIn += result.stop == CodecStop::Truncated;
    extraOut += result.stop == CodecStop::OutputFull && !moved;
    if (extraIn > 64 || extraOut > 64) throw std::runtime_error("codec makes no progress");
    if (result.stop == CodecStop::InputEnd) {
      if (result.consumed != count) throw std::runtime_error("codec left input behind");
      if (last) return;
    } else if (result.stop == CodecStop::Truncated) {
      if (last) throw std::runtime_error("Truncated at the end of the input");
    } else if (result.stop != CodecStop::OutputFull) {
      if (result.badLength == 0) throw std::runtime_error("trouble without a length");
      if (!trouble(result, at)) return;
      at += result.badLength;
    }
  }
}

/// The input is given in pieces of `inStep` bytes or units and the output taken in pieces of
/// `outStep`; both grow where an item needs more.
inline CodecRun<std::u16string> decodeAll(const CodePage& page, const std::string& bytes,
                                          std::size_t inStep = 1 << 20,
                                          std::size_t outStep = 1 << 20) {
  const DecoderPtr decoder = page.makeDecoder();
  CodecRun<std::u16string> all;
  all.consumed = bytes.size();
  run<char, char16_t>(
      bytes, inStep, outStep, all.output,
      [&](const std::vector<char>& in, bool last, std::vector<char16_t>& out) {
        return decoder->decode(asBytes({in.data(), in.size()}), last, out);
      },
      [&](const CodecResult& result, std::size_t at) {
        all.stop = result.stop;
        all.consumed = at;
        all.badLength = result.badLength;
        return false;
      });
  return all;
}

inline CodecRun<std::string> encodeAll(const CodePage& page, const std::u16string& text,
                                       std::size_t inStep = 1 << 20,
                                       std::size_t outStep = 1 << 20) {
  const EncoderPtr encoder = page.makeEncoder();
  CodecRun<std::string> all;
  all.consumed = text.size();
  run<char16_t, char>(
      text, inStep, outStep, all.output,
      [&](const std::vector<char16_t>& in, bool last, std::vector<char>& out) {
        return encoder->encode(in, last, {reinterpret_cast<std::uint8_t*>(out.data()), out.size()});
      },
      [&](const CodecResult& result, std::size_t at) {
        all.stop = result.stop;
        all.consumed = at;
        all.badLength = result.badLength;
        return false;
      });
  if (all.stop == CodecStop::InputEnd) {
    std::uint8_t end[16];
    all.output.append(reinterpret_cast<const char*>(end), encoder->finish(end));
  }
  return all;
}

/// As decodeAll(), but steps over trouble: each bad item becomes one U+FFFD.
inline std::u16string decodeReplacing(const CodePage& page, const std::string& bytes,
                                      std::size_t inStep = 1 << 20, std::size_t outStep = 1 << 20) {
  const DecoderPtr decoder = page.makeDecoder();
  std::u16string output;
  run<char, char16_t>(
      bytes, inStep, outStep, output,
      [&](const std::vector<char>& in, bool last, std::vector<char16_t>& out) {
        return decoder->decode(asBytes({in.data(), in.size()}), last, out);
      },
      [&](const CodecResult&, std::size_t) {
        output += u'\xFFFD';
        return true;
      });
  return output;
}

}  // namespace zantrel::test
