// Case of every character beside ICU's simple mappings.
#ifdef ZANTREL_HAVE_ICU

#include "core/unicode_case.h"

#include <gtest/gtest.h>
#include <unicode/uchar.h>

namespace zantrel {
namespace {

TEST(UnicodeCaseInteropTest, MapsEveryCharacterAsIcuDoes) {
  for (UChar32 c = 0; c <= 0x10FFFF; ++c) {
    const auto ours = static_cast<char32_t>(c);
    ASSERT_EQ(static_cast<UChar32>(toUpperCase(ours)), u_toupper(c)) << c;
    ASSERT_EQ(static_cast<UChar32>(toLowerCase(ours)), u_tolower(c)) << c;
    ASSERT_EQ(static_cast<UChar32>(foldCase(ours)), u_foldCase(c, U_FOLD_CASE_DEFAULT)) << c;
  }
}

}  // namespace
}  // namespace zantrel

#endif
