#include "core/charset/code_page.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "charset/codec_runner.h"
#include "core/charset/charset_naming.h"

namespace zantrel {
namespace {

TEST(CodePageTest, EveryNameLeadsToAPageWithBothCodecs) {
  std::vector<int> pages;
  for (const auto& accepted : CharsetNaming::acceptedNames()) pages.push_back(accepted.codePage);
  for (const auto& canonical : CharsetNaming::canonicalNames()) pages.push_back(canonical.codePage);
  for (const int page : pages) {
    if (page == 0) continue;  // "ansi"
    const CodePage* row = findCodePage(page);
    ASSERT_NE(row, nullptr) << page;
    EXPECT_EQ(row->id, page);
    EXPECT_NE(row->makeDecoder(), nullptr) << page;
    EXPECT_NE(row->makeEncoder(), nullptr) << page;
  }
}

TEST(CodePageTest, UnknownNumbersHaveNoPage) {
  for (const int page : {0, -1, 1, 12345, 65007, 0x7FFFFFFF})
    EXPECT_EQ(findCodePage(page), nullptr);
}

TEST(CodePageTest, EveryPageCarriesPlainTextThereAndBack) {
  // What even the national versions of ISO 646, EBCDIC and the odd page 21027 have in common.
  const std::u16string text = u"The fox, 01234567. JUMPS (over) + the dog";
  for (const CodePage& page : allCodePages()) {
    if (page.id == 709) continue;  // has Arabic letters in the place of the Latin ones
    const auto bytes = test::encodeAll(page, text);
    EXPECT_EQ(bytes.stop, CodecStop::InputEnd) << page.id;
    const auto back = test::decodeAll(page, bytes.output);
    EXPECT_EQ(back.stop, CodecStop::InputEnd) << page.id;
    EXPECT_EQ(back.output, text) << page.id;
  }
}

}  // namespace
}  // namespace zantrel
