#include "support/test_data.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <stdexcept>

namespace zantrel::test {
namespace fs = std::filesystem;

namespace {

fs::path fromUtf8(const std::string& path) {
  return fs::path(std::u8string(path.begin(), path.end()));
}

void appendUtf8(std::string& out, std::uint32_t c) {
  const auto put = [&out](std::uint32_t byte) { out += static_cast<char>(byte); };
  if (c < 0x80) {
    put(c);
  } else if (c < 0x800) {
    put(0xC0 | (c >> 6)), put(0x80 | (c & 63));
  } else if (c < 0x10000) {
    put(0xE0 | (c >> 12)), put(0x80 | ((c >> 6) & 63)), put(0x80 | (c & 63));
  } else {
    put(0xF0 | (c >> 18)), put(0x80 | ((c >> 12) & 63)), put(0x80 | ((c >> 6) & 63)),
        put(0x80 | (c & 63));
  }
}

int digit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  throw std::runtime_error("not a hexadecimal digit in test data");
}

#ifndef _WIN32
std::string quoted(const std::string& argument) {
  std::string out = "'";
  for (char c : argument) out += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return out + "'";
}
#endif

}  // namespace

std::string readFile(const std::string& path) {
  std::ifstream in(fromUtf8(path), std::ios::binary);
  if (!in) throw std::runtime_error("cannot read " + path);
  std::ostringstream content;
  content << in.rdbuf();
  return std::move(content).str();
}

std::string readTestData(const std::string& relativePath) {
  return readFile(std::string(ZANTREL_TEST_DATA) + "/" + relativePath);
}

void writeFile(const std::string& path, std::string_view content) {
  std::ofstream out(fromUtf8(path), std::ios::binary);
  out.write(content.data(), static_cast<std::streamsize>(content.size()));
  if (!out.flush()) throw std::runtime_error("cannot write " + path);
}

std::vector<std::vector<std::string>> readTable(const std::string& path) {
  std::vector<std::vector<std::string>> rows;
  std::istringstream lines(readFile(path));
  for (std::string line; std::getline(lines, line);) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (line.empty() || line[0] == '#') continue;
    std::vector<std::string> fields{""};
    for (char c : line) {
      if (c == '\t') {
        fields.emplace_back();
      } else {
        fields.back() += c;
      }
    }
    rows.push_back(std::move(fields));
  }
  return rows;
}

std::string unhex(std::string_view hex) {
  std::string out;
  for (std::size_t i = 0; i + 1 < hex.size(); i += 2)
    out += static_cast<char>(digit(hex[i]) * 16 + digit(hex[i + 1]));
  return out;
}

std::string hex(std::string_view bytes) {
  static constexpr char kDigits[] = "0123456789abcdef";
  std::string out;
  for (char c : bytes) {
    out += kDigits[static_cast<unsigned char>(c) >> 4];
    out += kDigits[static_cast<unsigned char>(c) & 15];
  }
  return out;
}

std::string unescape(std::string_view text) {
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\\' || i + 1 == text.size()) {
      out += text[i];
      continue;
    }
    const char kind = text[++i];
    const std::size_t digits = kind == 'x' ? 2 : kind == 'u' ? 4 : kind == 'U' ? 8 : 0;
    if (digits > 0) {
      std::uint32_t value = 0;
      for (std::size_t k = 0; k < digits; ++k)
        value = value * 16 + static_cast<std::uint32_t>(digit(text.at(++i)));
      if (kind == 'x') {
        out += static_cast<char>(value);
      } else {
        appendUtf8(out, value);
      }
      continue;
    }
    switch (kind) {
      case 'r':
        out += '\r';
        break;
      case 'n':
        out += '\n';
        break;
      case 't':
        out += '\t';
        break;
      case '0':
        out += '\0';
        break;
      default:
        out += kind;
    }
  }
  return out;
}

std::optional<std::string> corpusFolder() {
  const char* folder = std::getenv("ZANTREL_CORPUS");
  if (folder == nullptr || *folder == '\0') return std::nullopt;
  return std::string(folder);
}

TempFolder::TempFolder() {
  std::random_device random;
  const fs::path folder = fs::temp_directory_path() /
                          ("zantrel-test-" + std::to_string(random()) + std::to_string(random()));
  fs::create_directories(folder);
  const std::u8string name = folder.generic_u8string();
  path_.assign(name.begin(), name.end());
}

TempFolder::~TempFolder() {
  std::error_code ignored;
  fs::remove_all(fromUtf8(path_), ignored);
}

std::optional<std::string> runProgram(const std::vector<std::string>& command,
                                      const std::string& standardInput) {
#ifdef _WIN32
  (void)command, (void)standardInput;
  return std::nullopt;
#else
  TempFolder folder;
  writeFile(folder / "in", standardInput);
  std::string line;
  for (const std::string& word : command) line += quoted(word) + " ";
  line += "< " + quoted(folder / "in") + " > " + quoted(folder / "out");
  if (std::system(line.c_str()) != 0) return std::nullopt;
  return readFile(folder / "out");
#endif
}

bool haveProgram(const std::string& name) {
  const char* path = std::getenv("PATH");
  std::istringstream folders(path == nullptr ? "" : path);
  for (std::string folder; std::getline(folders, folder, ':');)
    if (fs::exists(fs::path(folder) / name)) return true;
  return false;
}

}  // namespace zantrel::test
