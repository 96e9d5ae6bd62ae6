#ifdef _WIN32

#include "platform/win32/path_name.h"

#include <gtest/gtest.h>

namespace zantrel {
namespace {

TEST(PathNameTest, TakesTheAnsiNameOnlyWhenThePathConvertsExactly) {
  if (GetACP() != 1252) GTEST_SKIP() << "the rows are for code page 1252";
  const struct {
    const char* path;
    bool ansi;
  } kRows[] = {
      {"C:\\plain.txt", true},         {"C:\\caf\u00e9 \u20ac.txt", true},
      {"C:\\\u0101.txt", false},  // "a" with macron: similar to "a" is not the same
      {"C:\\\uff21.txt", false},  // full-width "A"
      {"C:\\\u65e5\u672c.txt", false}, {"C:\\\U0001F600.txt", false},
  };
  for (const auto& row : kRows) {
    PathName name;
    ASSERT_EQ(name.set(row.path), DWORD{ERROR_SUCCESS}) << row.path;
    EXPECT_EQ(name.isAnsi(), row.ansi) << row.path;
  }
}

TEST(PathNameTest, RefusesWhatIsNotUtf8OrHoldsAZero) {
  PathName name;
  EXPECT_EQ(name.set("C:\\\xE9.txt"), DWORD{ERROR_INVALID_NAME});
  EXPECT_EQ(name.set(std::string("C:\\a\0b", 6)), DWORD{ERROR_INVALID_NAME});
}

TEST(PathNameTest, LongPathsGetThePrefixThatLiftsTheLimit) {
  PathName name;
  ASSERT_EQ(name.set("C:/" + std::string(200, 'a') + "/" + std::string(200, 'b')),
            DWORD{ERROR_SUCCESS});
  EXPECT_FALSE(name.isAnsi());
  EXPECT_EQ(name.wide(),
            L"\\\\?\\C:\\" + std::wstring(200, L'a') + L"\\" + std::wstring(200, L'b'));
}

}  // namespace
}  // namespace zantrel

#endif
