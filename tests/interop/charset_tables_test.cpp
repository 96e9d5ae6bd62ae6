// Every cell of the charset tables, in both directions, against glibc's iconv and ICU.
//
// tests/data/charset/peers.tsv says what a code page is called there; peer_differences.tsv lists,
// with the reason, the codes that are known to differ. A code that is listed may differ, and so may
// the way back of the characters that the two read from it. A listed range without any difference
// fails the test too, so that the list cannot outlive its reasons.

#include <gtest/gtest.h>
#include <iconv.h>

#include <cstdio>
#include <cstring>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "core/charset/code_page.h"
#include "core/charset/utf16_units.h"
#include "support/test_data.h"
#ifdef ZANTREL_HAVE_ICU
#include <unicode/ucnv.h>
#endif

namespace zantrel {
namespace {

/// One converter seen as a function on single characters; nothing for what it cannot convert.
class Peer {
 public:
  virtual ~Peer() = default;
  virtual std::optional<std::u16string> decode(const std::string& code) = 0;
  virtual std::optional<std::string> encode(const std::u16string& text) = 0;
};

class Zantrel final : public Peer {
 public:
  explicit Zantrel(const CodePage& page)
      : decoder_(page.makeDecoder()), encoder_(page.makeEncoder()) {}
  std::optional<std::u16string> decode(const std::string& code) override {
    decoder_->reset();
    char16_t out[8];
    const CodecResult result = decoder_->decode(asBytes(code), true, out);
    if (result.stop != CodecStop::InputEnd) return std::nullopt;
    return std::u16string(out, result.produced);
  }
  std::optional<std::string> encode(const std::u16string& text) override {
    encoder_->reset();
    std::uint8_t out[16];
    const CodecResult result = encoder_->encode(text, true, out);
    if (result.stop != CodecStop::InputEnd) return std::nullopt;
    return std::string(reinterpret_cast<const char*>(out), result.produced);
  }

 private:
  DecoderPtr decoder_;
  EncoderPtr encoder_;
};

class Iconv final : public Peer {
 public:
  explicit Iconv(const std::string& name)
      : from_(iconv_open("UTF-16LE", name.c_str())), to_(iconv_open(name.c_str(), "UTF-16LE")) {}
  ~Iconv() override {
    if (known()) {
      iconv_close(from_);
      iconv_close(to_);
    }
  }
  bool known() const { return from_ != iconv_t(-1) && to_ != iconv_t(-1); }
  std::optional<std::u16string> decode(const std::string& code) override {
    const auto bytes = convert(from_, code);
    if (!bytes || bytes->size() % 2 != 0) return std::nullopt;
    std::u16string text(bytes->size() / 2, u'\0');
    std::memcpy(text.data(), bytes->data(), bytes->size());
    return text;
  }
  std::optional<std::string> encode(const std::u16string& text) override {
    return convert(to_, {reinterpret_cast<const char*>(text.data()), text.size() * 2});
  }

 private:
  static std::optional<std::string> convert(iconv_t converter, std::string in) {
    char out[64];
    char* from = in.data();
    char* to = out;
    std::size_t inLeft = in.size();
    std::size_t outLeft = sizeof out;
    iconv(converter, nullptr, nullptr, nullptr, nullptr);
    const std::size_t result = iconv(converter, &from, &inLeft, &to, &outLeft);
    if (result == std::size_t(-1) || inLeft != 0) return std::nullopt;
    iconv(converter, nullptr, nullptr, &to, &outLeft);
    return std::string(out, sizeof out - outLeft);
  }

  iconv_t from_;
  iconv_t to_;
};

#ifdef ZANTREL_HAVE_ICU
class Icu final : public Peer {
 public:
  explicit Icu(const std::string& name) {
    UErrorCode error = U_ZERO_ERROR;
    converter_ = ucnv_open(name.c_str(), &error);
    if (U_FAILURE(error)) return;
    ucnv_setToUCallBack(converter_, UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &error);
    ucnv_setFromUCallBack(converter_, UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &error);
    ucnv_setFallback(converter_, false);
  }
  ~Icu() override { ucnv_close(converter_); }
  bool known() const { return converter_ != nullptr; }
  std::optional<std::u16string> decode(const std::string& code) override {
    char16_t out[32];
    UErrorCode error = U_ZERO_ERROR;
    const auto units = ucnv_toUChars(converter_, out, 32, code.data(),
                                     static_cast<std::int32_t>(code.size()), &error);
    if (U_FAILURE(error)) return std::nullopt;
    return std::u16string(out, static_cast<std::size_t>(units));
  }
  std::optional<std::string> encode(const std::u16string& text) override {
    char out[64];
    UErrorCode error = U_ZERO_ERROR;
    const auto bytes = ucnv_fromUChars(converter_, out, 64, text.data(),
                                       static_cast<std::int32_t>(text.size()), &error);
    if (U_FAILURE(error) || bytes == 0) return std::nullopt;  // it drops what is ignorable
    return std::string(out, static_cast<std::size_t>(bytes));
  }

 private:
  UConverter* converter_ = nullptr;
};
#endif

std::string show(const std::optional<std::u16string>& text) {
  if (!text) return "-";
  std::string shown;
  char unit[8];
  for (const char16_t c : *text) {
    std::snprintf(unit, sizeof unit, "%04X", static_cast<unsigned>(c));
    shown += unit;
  }
  return shown;
}

std::string show(const std::optional<std::string>& code) {
  return code ? test::hex(*code) : "-";
}

struct Range {
  std::string first;
  std::string last;
  bool met = false;
};

/// Listed differences of one page and peer: codes, and code points of which only the way back
/// differs.
struct Differences {
  std::vector<Range> codes;
  std::vector<Range> points;

  static bool covers(std::vector<Range>& ranges, const std::string& value) {
    for (Range& range : ranges) {
      if (value.size() == range.first.size() && value >= range.first && value <= range.last) {
        range.met = true;
        return true;
      }
    }
    return false;
  }
};

std::string dataFile(const char* name) {
  return std::string(ZANTREL_TEST_DATA) + "/charset/" + name;
}

Differences differencesOf(const std::string& page, const std::string& peer) {
  Differences listed;
  for (const auto& row : test::readTable(dataFile("peer_differences.tsv"))) {
    if (row.at(0) != page || row.at(1) != peer) continue;
    std::string list = row.at(3) + ' ';
    for (std::size_t from = 0, blank; (blank = list.find(' ', from)) != std::string::npos;
         from = blank + 1) {
      const std::string item = list.substr(from, blank - from);
      const std::size_t dash = item.find('-');
      auto& ranges = row.at(2) == "code" ? listed.codes : listed.points;
      ranges.push_back(
          {item.substr(0, dash), dash == std::string::npos ? item : item.substr(dash + 1)});
    }
  }
  return listed;
}

std::u16string textOf(char32_t point) {
  if (point < 0x10000) return {static_cast<char16_t>(point)};
  char16_t units[2];
  splitSurrogates(point, units);
  return {units[0], units[1]};
}

/// Calls `use` for every code of one to `longest` bytes that could be a character: longer codes
/// only behind bytes that neither side takes for a whole one.
void eachCode(Peer& ours, Peer& theirs, std::size_t longest, const std::string& prefix,
              const std::function<void(const std::string&)>& use) {
  for (int byte = 0; byte < 256; ++byte) {
    const std::string code = prefix + static_cast<char>(byte);
    use(code);
    if (code.size() >= longest) continue;
    if (ours.decode(code) || theirs.decode(code)) continue;
    if (code.size() >= 2 && code[0] != '\x8E' && code[0] != '\x8F') continue;
    eachCode(ours, theirs, longest, code, use);
  }
}

void compare(int pageId, const std::string& peerKind, Peer& theirs, std::size_t longest) {
  const CodePage* page = findCodePage(pageId);
  ASSERT_NE(page, nullptr);
  Zantrel ours(*page);
  Differences listed = differencesOf(std::to_string(pageId), peerKind);
  std::set<std::u16string> excused;
  int unlisted = 0;
  eachCode(ours, theirs, longest, {}, [&](const std::string& code) {
    const auto a = ours.decode(code);
    const auto b = theirs.decode(code);
    if (a == b) return;
    if (a) excused.insert(*a);
    if (b) excused.insert(*b);
    if (Differences::covers(listed.codes, test::hex(code))) return;
    if (++unlisted <= 40) {
      ADD_FAILURE() << pageId << ' ' << peerKind << " code " << test::hex(code) << ": " << show(a)
                    << ", there " << show(b);
    }
  });
  const char32_t end = longest > 3 ? 0x30000 : 0x10000;
  for (char32_t point = 0; point < end; ++point) {
    if (point >= 0xD800 && point < 0xE000) continue;
    const std::u16string text = textOf(point);
    const auto a = ours.encode(text);
    const auto b = theirs.encode(text);
    if (a == b) continue;
    if (Differences::covers(listed.points, show(std::optional(text))) || excused.count(text) != 0) {
      continue;
    }
    if (++unlisted <= 40) {
      ADD_FAILURE() << pageId << ' ' << peerKind << " U+" << show(std::optional(text)) << ": "
                    << show(a) << ", there " << show(b);
    }
  }
  EXPECT_EQ(unlisted, 0) << pageId << ' ' << peerKind;
  for (const auto* ranges : {&listed.codes, &listed.points}) {
    for (const Range& range : *ranges) {
      EXPECT_TRUE(range.met) << pageId << ' ' << peerKind << " lists " << range.first
                             << ", but nothing differs";
    }
  }
}

TEST(CharsetTablesTest, EveryCellEqualsIconv) {
  int compared = 0;
  for (const auto& row : test::readTable(dataFile("peers.tsv"))) {
    if (row.at(2) == "-") continue;
    Iconv peer(row.at(2));
    if (!peer.known()) continue;  // another C library
    ++compared;
    compare(std::stoi(row.at(0)), "iconv", peer, static_cast<std::size_t>(std::stoi(row.at(1))));
  }
  EXPECT_GT(compared, 0);
}

#ifdef ZANTREL_HAVE_ICU
TEST(CharsetTablesTest, EveryCellEqualsIcu) {
  for (const auto& row : test::readTable(dataFile("peers.tsv"))) {
    if (row.at(3) == "-") continue;
    Icu peer(row.at(3));
    ASSERT_TRUE(peer.known()) << row.at(3);
    compare(std::stoi(row.at(0)), "icu", peer, static_cast<std::size_t>(std::stoi(row.at(1))));
  }
}
#endif

}  // namespace
}  // namespace zantrel
