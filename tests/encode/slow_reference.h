#pragma once
// The encodings written down as their rules read, byte by byte and without any thought of speed.
// The engines must agree with these on every input.

#include <cstdint>
#include <string>
#include <string_view>

namespace zantrel::test {

inline std::string slowBase64Decode(std::string_view in) {
  const std::string digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string out;
  unsigned bits = 0, count = 0;
  for (const char c : in) {
    if (c == '=' || c == '\0') break;
    if (static_cast<unsigned char>(c) < 43 || static_cast<unsigned char>(c) > 122) continue;
    std::size_t value = digits.find(c);
    if (value == digits.npos) value = c == '-' ? 62 : c == '_' ? 63 : 0;
    bits = (bits << 6 | static_cast<unsigned>(value)) & 0xFFFFFF;
    if (++count % 4 != 1) out += static_cast<char>(bits >> (6 - 2 * ((count - 1) % 4)));
  }
  return out;
}

inline std::string slowEscape(unsigned char byte, char mark) {
  return {mark, "0123456789ABCDEF"[byte >> 4], "0123456789ABCDEF"[byte & 15]};
}

inline std::string slowQuotedPrintableEncode(std::string_view in, std::size_t limit) {
  std::string out;
  std::size_t column = 0;
  const auto crlfAt = [in](std::size_t i) {
    return in.substr(i < in.size() ? i : in.size(), 2) == "\r\n";
  };
  for (std::size_t i = 0; i < in.size(); ++i) {
    const auto byte = static_cast<unsigned char>(in[i]);
    std::string form(1, in[i]);
    if (crlfAt(i)) {
      out += "\r\n";
      column = 0;
      ++i;
    } else {
      const bool badStart = column == 0 && (byte == '.' || in.substr(i, 5) == "From ");
      const bool plain = (byte >= 33 && byte <= 60) || (byte >= 62 && byte <= 126);
      const bool blank = (byte == ' ' || byte == '\t') && i + 1 < in.size() && !crlfAt(i + 1);
      if (badStart || !(plain || blank)) form = slowEscape(byte, '=');
      out += form;
      column += form.size();
    }
    if (column >= limit && !crlfAt(i + 1)) {
      out += "=\r\n";
      column = 0;
    }
  }
  return out;
}

inline std::string slowQuotedPrintableDecode(std::string_view in) {
  const auto digit = [](char c) {
    const std::size_t at = std::string_view("0123456789ABCDEFabcdef").find(c);
    return at == std::string_view::npos ? -1 : static_cast<int>(at < 16 ? at : at - 6);
  };
  std::string out;
  in = in.substr(0, in.find('\0'));
  while (!in.empty()) {
    const std::size_t lineFeed = in.find('\n');
    std::string line(in.substr(0, lineFeed));
    in.remove_prefix(lineFeed == in.npos ? in.size() : lineFeed + 1);
    line.erase(line.find_last_not_of("\r \t") + 1);
    const bool joined = !line.empty() && line.back() == '=';
    if (joined) line.pop_back();
    for (std::size_t i = 0; i < line.size(); ++i) {
      if (line[i] == '=' && i + 2 < line.size() && digit(line[i + 1]) >= 0 &&
          digit(line[i + 2]) >= 0) {
        out += static_cast<char>(digit(line[i + 1]) * 16 + digit(line[i + 2]));
        i += 2;
      } else {
        out += line[i];
      }
    }
    if (lineFeed != std::string_view::npos && !joined) out += "\r\n";
  }
  return out;
}

inline std::string slowUrlEncode(std::string_view in) {
  std::string out;
  for (const char c : in) {
    const bool kept = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
    out += kept       ? std::string(1, c)
           : c == ' ' ? "+"
                      : slowEscape(static_cast<unsigned char>(c), '%');
  }
  return out;
}

}  // namespace zantrel::test
