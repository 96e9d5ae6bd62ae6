// Whether a charset name means here what ICU, with its own list of names, takes it for. Both write
// a sample of characters of many scripts; the page is the same when they agree on nearly all of
// what either can write. Single cells are the business of charset_tables_test.

#include <gtest/gtest.h>

#ifdef ZANTREL_HAVE_ICU
#include <unicode/ucnv.h>

#include <map>
#include <memory>
#include <optional>
#include <string>

#include "core/charset/charset_naming.h"
#include "core/charset/code_page.h"

namespace zantrel {
namespace {

// Names that ICU takes for something else, and what.
const std::map<std::string_view, const char*> kOtherMeaning{
    {"asmo-708", "ISO-8859-6; the Windows page 708 adds line drawing and French letters"},
    {"big5-hkscs", "Big5 with the Hong Kong characters, which Windows reads as plain Big5"},
    {"chinese", "GB 2312 without its bytes in a shift of eight bits"},
    {"cp420", "an edition of IBM 420 with other presentation forms"},
    {"csgb2312", "GB 2312 alone; Windows reads and writes all of GBK"},
    {"csibm420", "an edition of IBM 420 with other presentation forms"},
    {"csiso2022jp", "ISO-2022-JP without half-width kana"},
    {"csiso58gb231280", "GB 2312 without its bytes in a shift of eight bits"},
    {"ebcdic-cp-ar1", "an edition of IBM 420 with other presentation forms"},
    {"euc-cn", "GB 2312 alone; Windows reads and writes all of GBK"},
    {"euc-tw", "a later edition of CNS 11643"},
    {"gb-2312-80", "GB 2312 without its bytes in a shift of eight bits"},
    {"gb2312", "GB 2312 alone; Windows reads and writes all of GBK"},
    {"gb2312-80", "GB 2312 without its bytes in a shift of eight bits"},
    {"hz-gb-2312", "HZ without the way back to ASCII at the end"},
    {"ibm420", "an edition of IBM 420 with other presentation forms"},
    {"iso-10646-ucs-2", "UTF-16 with a mark"},
    {"iso-2022-jp", "ISO-2022-JP without half-width kana"},
    {"iso-2022-jp-1", "ISO-2022-JP with JIS X 0212"},
    {"iso-2022-jp-2", "ISO-2022-JP with further sets"},
    {"iso-ir-58", "GB 2312 without its bytes in a shift of eight bits"},
    {"ucs-2", "UTF-16 with a mark"},
    {"ucs2", "UTF-16 with a mark"},
    {"unicode", "UTF-16 with a mark"},
    {"utf-16", "UTF-16 with a mark"},
    {"utf-32", "UTF-32 with a mark"},
    {"utf16", "UTF-16 with a mark"},
    {"x-euc-cn", "GB 2312 alone; Windows reads and writes all of GBK"},
    {"x-iscii-de", "ISCII that writes the script in front"},
};

std::u16string sample() {
  std::u16string text;
  const std::pair<unsigned, unsigned> ranges[] = {
      {0x20, 0x7E},     {0xA0, 0x17F},    {0x386, 0x3CE},   {0x401, 0x45F},   {0x5D0, 0x5EA},
      {0x621, 0x64A},   {0x905, 0x939},   {0xE01, 0xE3A},   {0x2500, 0x2580}, {0x3041, 0x3093},
      {0x30A1, 0x30F6}, {0x4E00, 0x4E60}, {0xAC00, 0xAC40}, {0xFF61, 0xFF9F}};
  for (const auto& [first, last] : ranges) {
    for (unsigned c = first; c <= last; ++c) text += static_cast<char16_t>(c);
  }
  return text;
}

using Bytes = std::optional<std::string>;

Bytes write(Encoder& encoder, char16_t c) {
  encoder.reset();
  std::uint8_t out[32];
  const CodecResult result = encoder.encode({&c, 1}, true, out);
  if (result.stop != CodecStop::InputEnd) return std::nullopt;
  const std::size_t end = encoder.finish(std::span(out).subspan(result.produced));
  return std::string(reinterpret_cast<const char*>(out), result.produced + end);
}

struct Close {
  void operator()(UConverter* converter) const { ucnv_close(converter); }
};

std::unique_ptr<UConverter, Close> open(std::string_view name) {
  UErrorCode error = U_ZERO_ERROR;
  std::unique_ptr<UConverter, Close> converter(ucnv_open(std::string(name).c_str(), &error));
  if (U_FAILURE(error)) return nullptr;
  ucnv_setFromUCallBack(converter.get(), UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr,
                        &error);
  ucnv_setFallback(converter.get(), false);
  return converter;
}

Bytes write(UConverter* converter, char16_t c) {
  UErrorCode error = U_ZERO_ERROR;
  char out[32];
  ucnv_reset(converter);
  const auto size = ucnv_fromUChars(converter, out, sizeof out, &c, 1, &error);
  if (U_FAILURE(error) || size == 0) return std::nullopt;
  return std::string(out, static_cast<std::size_t>(size));
}

TEST(CharsetNamesTest, NamesMeanWhatIcuTakesThemFor) {
  const std::u16string characters = sample();
  std::size_t compared = 0;
  for (const CharsetNaming::AcceptedName& row : CharsetNaming::acceptedNames()) {
    const CodePage* page = findCodePage(row.codePage);
    const auto icu = open(row.name);
    if (page == nullptr || icu == nullptr) continue;
    ++compared;
    const EncoderPtr encoder = page->makeEncoder();
    std::size_t same = 0, other = 0;
    for (const char16_t c : characters) {
      const Bytes ours = write(*encoder, c), theirs = write(icu.get(), c);
      if (!ours && !theirs) continue;
      (ours == theirs ? same : other) += 1;
    }
    const bool agree = same > 0 && other * 20 <= same;
    const auto listed = kOtherMeaning.find(row.name);
    EXPECT_EQ(agree, listed == kOtherMeaning.end())
        << row.name << " is " << row.codePage << " here, there "
        << (listed == kOtherMeaning.end() ? "something else" : listed->second) << ": " << same
        << " characters alike, " << other << " not";
  }
  EXPECT_GE(compared, 200u);
}

}  // namespace
}  // namespace zantrel
#endif
