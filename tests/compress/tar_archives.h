#pragma once
// tar archives made by hand, so that they can hold what no tar program writes.

#include <cstdio>
#include <string>
#include <string_view>

namespace zantrel::test {

inline std::string octal(unsigned long long value, int digits) {
  char text[32];
  std::snprintf(text, sizeof text, "%0*llo", digits, value);
  return text;
}

struct TarMember {
  std::string name;
  char type = '0';
  std::string data = {};
  std::string linkName = {};
  int mode = 0644;
  long long modified = 1000000000;
  std::string prefix = {};
};

/// Puts the sum of its bytes into a header.
inline void setTarChecksum(std::string& header) {
  header.replace(148, 8, 8, ' ');
  unsigned sum = 0;
  for (std::size_t i = 0; i < 512; ++i) sum += static_cast<unsigned char>(header[i]);
  header.replace(148, 7, octal(sum, 6) + '\0');
}

inline std::string tarHeader(const TarMember& member, const std::string& sizeField) {
  std::string header(512, '\0');
  const auto put = [&](std::size_t at, const std::string& text) {
    header.replace(at, text.size(), text);
  };
  put(0, member.name.substr(0, 100));
  put(100, octal(static_cast<unsigned long long>(member.mode), 7));
  put(124, sizeField);
  put(136, octal(static_cast<unsigned long long>(member.modified), 11));
  header[156] = member.type;
  put(157, member.linkName.substr(0, 100));
  put(257, std::string("ustar\0", 6) + "00");
  put(345, member.prefix);
  setTarChecksum(header);
  return header;
}

inline std::string padded(std::string data) {
  data.resize((data.size() + 511) / 512 * 512);
  return data;
}

inline std::string tarMember(const TarMember& member) {
  return tarHeader(member, octal(member.data.size(), 11)) + padded(member.data);
}

/// "LENGTH KEY=VALUE\n", whose length counts itself.
inline std::string paxRecord(const std::string& key, const std::string& value) {
  const std::size_t rest = key.size() + value.size() + 3;
  std::size_t length = rest + 1;
  while (std::to_string(length).size() + rest != length) ++length;
  return std::to_string(length) + " " + key + "=" + value + "\n";
}

inline const std::string kTarEnd(1024, '\0');

}  // namespace zantrel::test
