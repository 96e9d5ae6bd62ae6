#pragma once
// Inputs that lead a compressor into each of its corners, and ways to run it.

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "compress/noise.h"
#include "compress/zantrel_deflate.h"
#include "core/data_buffer.h"
#include "core/log_null.h"

namespace zantrel::test {

struct DeflateInput {
  std::string name;
  std::string bytes;
};

/// Words of a small vocabulary, some far more often than others.
inline std::string prose(std::size_t size, std::uint64_t seed = 1) {
  Numbers numbers(seed);
  std::vector<std::string> words(3000);
  for (std::string& word : words)
    for (std::uint32_t n = 2 + numbers.below(8); n > 0; --n)
      word += static_cast<char>('a' + numbers.below(1 + numbers.below(26)));
  std::string text;
  while (text.size() < size) text += words[numbers.below(1 + numbers.below(3000))] + ' ';
  return text.substr(0, size);
}

/// Each kind at a size of some hundred kilobytes: more than one window, several blocks.
inline std::vector<DeflateInput> deflateInputs(std::size_t size = 400000) {
  std::vector<DeflateInput> inputs = {{"zeros", std::string(size, '\0')},
                                      {"noise", noise(size)},
                                      {"two symbols", noise(size, 2, 2)},
                                      {"sixteen symbols", noise(size, 16, 3)},
                                      {"prose", prose(size)}};
  const auto repeated = [size](const std::string& part) {
    std::string bytes;
    while (bytes.size() < size) bytes += part;
    return bytes.substr(0, size);
  };
  inputs.push_back({"noise again and again", repeated(noise(30000))});
  inputs.push_back({"at the window's limit", repeated(noise(32768, 256, 4))});
  inputs.push_back({"beyond the window", repeated(noise(32769, 256, 4))});
  inputs.push_back({"noise amid prose", repeated(prose(50000) + noise(20000) + prose(700))});
  inputs.push_back(
      {"noise longer than the window amid prose", repeated(prose(9000) + noise(45056))});
  inputs.push_back({"short period", repeated("abc")});
  // What precedes the stream in memory would match as well.
  const std::string begin = noise(64, 5), zeros(8, '\0');
  std::string again = begin;
  for (const char c : {'x', 'y', 'z'}) again += zeros + begin.substr(0, 4) + c;
  inputs.push_back({"zeros before the beginning again", again + zeros + begin});
  std::string runs, ascending, colliding;
  Numbers numbers(7);
  while (runs.size() < size) runs.append(numbers.below(600), static_cast<char>(numbers.below(3)));
  while (ascending.size() < size) ascending += std::to_string(ascending.size()) + "\n";
  // The same start everywhere and never the same continuation: chains are as long as they get.
  while (colliding.size() < size)
    colliding += "aaaaaaaa" + noise(3, 256, colliding.size()) + "aaaa";
  inputs.push_back({"runs", runs});
  inputs.push_back({"ascending numbers", ascending});
  inputs.push_back({"colliding", colliding});
  return inputs;
}

/// Raw deflate of `text`, fed in pieces of `piece` bytes.
inline std::string deflated(ZantrelDeflate& engine, std::string_view text, std::size_t piece) {
  LogNull log;
  DataBuffer out;
  bool done = engine.beginCompress({}, out, log, nullptr);
  for (; !text.empty(); text.remove_prefix(std::min(piece, text.size())))
    done = done && engine.moreCompress(asBytes(text.substr(0, piece)), out, log, nullptr);
  done = done && engine.endCompress(out, log, nullptr);
  return done ? std::string(out.text()) : "failed";
}

inline std::string deflated(ZantrelDeflate& engine, std::string_view text) {
  LogNull log;
  DataBuffer out;
  return engine.deflateBuffer(asBytes(text), out, log) ? std::string(out.text()) : "failed";
}

inline std::string inflated(ZantrelDeflate& engine, std::string_view stream) {
  LogNull log;
  DataBuffer out;
  if (!engine.inflateBuffer(asBytes(stream), out, log)) return "failed";
  return engine.unusedInput() == 0 ? std::string(out.text()) : "left over";
}

}  // namespace zantrel::test
