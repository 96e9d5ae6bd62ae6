#pragma once
// Data of the kinds that compressors meet: files of the corpus that ZANTREL_CORPUS names, repeated
// up to a size, or generated likenesses where there is none.

#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <iterator>
#include <random>
#include <string>
#include <vector>

namespace zantrel::bench {

struct Sample {
  std::string name;
  std::vector<std::uint8_t> bytes;
};

namespace samples {

using Random = std::mt19937;

// A word for each rank; low ranks are frequent, as in any language.
inline std::string word(Random& random, unsigned words) {
  const double share = std::uniform_real_distribution<double>(0, 1)(random);
  unsigned rank = static_cast<unsigned>(static_cast<double>(words) * share * share * share);
  std::string text;
  for (unsigned length = 2 + rank % 7; length > 0; --length, rank = rank * 7919 + 13)
    text += "etaoinshrdlucmfwypvbgkjqxz"[rank % 26 * (rank % 11) / 11];
  return text;
}

inline std::string prose(Random& random) {
  std::string line;
  while (line.size() < 70) line += word(random, 4000) + (random() % 12 == 0 ? ", " : " ");
  return line + "\n";
}

inline std::string code(Random& random) {
  const std::string indent(4 * (random() % 4), ' ');
  switch (random() % 4) {
    case 0:
      return indent + "if (" + word(random, 300) + " == nullptr) return false;\n";
    case 1:
      return indent + "const auto " + word(random, 300) + " = " + word(random, 300) + "(" +
             word(random, 300) + ");\n";
    case 2:
      return indent + "}\n\n";
    default:
      return indent + word(random, 300) + "." + word(random, 300) + "(" + word(random, 300) + ", " +
             std::to_string(random() % 100) + ");\n";
  }
}

inline std::string record(Random& random) {
  return "  <item id=\"" + std::to_string(random() % 100000) + "\" kind=\"" + word(random, 40) +
         "\">\n    <name>" + word(random, 3000) + "</name>\n    <price>" +
         std::to_string(random() % 1000) + ".99</price>\n  </item>\n";
}

// Fields of a fixed width, some nearly constant, some noisy.
inline std::string fields(Random& random) {
  std::string row;
  const unsigned values[4] = {static_cast<unsigned>(random() % 50),
                              static_cast<unsigned>(random() % 3000), 7,
                              static_cast<unsigned>(random())};
  for (const unsigned value : values) {
    for (unsigned shift = 0; shift < 32; shift += 8) row += static_cast<char>(value >> shift);
  }
  return row;
}

inline std::string noise(Random& random) {
  std::string bytes(64, '\0');
  for (char& byte : bytes) byte = static_cast<char>(random());
  return bytes;
}

inline std::string corpusFile(const char* name) {
  const char* const folder = std::getenv("ZANTREL_CORPUS");
  if (folder == nullptr || name == nullptr) return {};
  std::ifstream file(std::string(folder) + "/compress/plain/" + name, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace samples

/// One sample a kind, each of `size` bytes. A corpus file is repeated, but in distances that no
/// window reaches: at least 100 KB.
inline std::vector<Sample> compressionSamples(std::size_t size) {
  struct Kind {
    const char* name;
    const char* file;
    std::string (*piece)(samples::Random&);
  };
  const Kind kinds[] = {
      {"text", "alice29.txt", samples::prose},  {"source", nullptr, samples::code},
      {"html", "page.html", samples::record},   {"xml", nullptr, samples::record},
      {"binary", "kppkn.gtb", samples::fields}, {"jpeg", "fireworks.jpeg", samples::noise},
      {"noise", nullptr, samples::noise}};
  std::vector<Sample> all;
  for (const Kind& kind : kinds) {
    samples::Random random(5);
    const std::string file = samples::corpusFile(kind.file);
    std::string bytes = file;
    while (bytes.size() < size) bytes += file.empty() ? kind.piece(random) : file;
    all.push_back({kind.name, {bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size)}});
  }
  return all;
}

}  // namespace zantrel::bench
