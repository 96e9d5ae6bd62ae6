#include "core/wildcard_pattern.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace zantrel::test {
namespace {

constexpr auto kIgnore = WildcardPattern::Case::Ignore;

TEST(WildcardPatternTest, MatchesWholeTexts) {
  struct {
    std::string_view pattern, text;
    bool matches, ignoringCase;
  } const cases[] = {
      {"", "", true, true},
      {"", "a", false, false},
      {"*", "", true, true},
      {"**", "abc", true, true},
      {"abc", "abc", true, true},
      {"abc", "abcd", false, false},
      {"abc", "ABC", false, true},
      {"a*c", "abbc", true, true},
      {"a*c", "ac", true, true},
      {"ab*ba", "aba", false, false},  // both ends need characters of their own
      {"*b*", "abc", true, true},
      {"*b*b*", "abc", false, false},
      {"*ab*abc", "abcabc", true, true},
      {"a.c", "abc", false, false},
      {"stra*E", "STRASSE", false, true},
      {"*ÄÖ*", "aäöa", false, true},
      {"K", "\u212A", false, true},  // the Kelvin sign
      {"\xFF*", "\xFFx", true, true},
  };
  for (const auto& one : cases) {
    EXPECT_EQ(WildcardPattern(one.pattern).matches(one.text), one.matches)
        << one.pattern << " " << one.text;
    EXPECT_EQ(WildcardPattern(one.pattern, kIgnore).matches(one.text), one.ignoringCase)
        << one.pattern << " " << one.text;
  }
}

bool obviouslyMatches(std::string_view pattern, std::string_view text) {
  if (pattern.empty()) return text.empty();
  if (pattern.front() != '*')
    return !text.empty() && text.front() == pattern.front() &&
           obviouslyMatches(pattern.substr(1), text.substr(1));
  return obviouslyMatches(pattern.substr(1), text) ||
         (!text.empty() && obviouslyMatches(pattern, text.substr(1)));
}

TEST(WildcardPatternTest, AgreesWithTheObviousRule) {
  std::mt19937 random(1);  // NOLINT: repeatable
  const auto make = [&random](std::string_view letters, std::size_t most) {
    std::string text(random() % (most + 1), ' ');
    for (char& c : text) c = letters[random() % letters.size()];
    return text;
  };
  int matched = 0;
  for (int i = 0; i < 20000; ++i) {
    const std::string pattern = make("ab*", 8);
    const std::string text = make("ab", 10);
    const bool expected = obviouslyMatches(pattern, text);
    matched += expected ? 1 : 0;
    EXPECT_EQ(WildcardPattern(pattern).matches(text), expected) << pattern << " " << text;
  }
  EXPECT_GT(matched, 1000);
}

TEST(WildcardPatternTest, ManyWildcardsTakeNoMoreTimeThanFew) {
  std::string pattern;
  for (int i = 0; i < 100000; ++i) pattern += "*a";
  const std::string text(1000000, 'a');
  EXPECT_FALSE(WildcardPattern(pattern + "b").matches(text));
  EXPECT_FALSE(WildcardPattern(pattern + "b*").matches(text));
  EXPECT_TRUE(WildcardPattern(pattern + "*").matches(text));
}

}  // namespace
}  // namespace zantrel::test
