#include "policy/fnmatch_simple.h"

#include <chrono>
#include <random>
#include <string>
#include <tuple>

#include <gtest/gtest.h>

namespace tavik {
namespace {

TEST(FnmatchSimple, CoversTheWholeCandidate) {
  using Case = std::tuple<std::string, std::string, bool, std::string>;
  for (const auto& [pattern, candidate, matches, reason] : {
           Case{"com.apple.Safari", "com.apple.safari", false, "case"},
           Case{"com.apple.Safari", "com.apple.Safari.beta", false, "whole candidate"},
           Case{"com.apple.*", "com.apple.", true, "the star matches nothing"},
           Case{"com.apple.*", "com.applexSafari", false, "the dot is literal"},
           Case{"a+b", "aab", false, "no repetition"},
           Case{"[ab]", "a", false, "no character class"},
           Case{"a\\*", "a\\bc", true, "a backslash is a backslash"},
           Case{"a\\*", "a*", false, "and escapes nothing"},
           Case{"?", "\u00e9", true, "one code point of two bytes"},
           Case{"?", "e\u0301", false, "two code points that look like one character"},
           Case{"??", "e\u0301", true, "each has its own"},
           Case{"\u00e9", "e\u0301", false, "by code points, not canonical equivalence"},
           Case{"e*", "e\u0301", true, "a star may begin inside a character of the candidate"},
           Case{"a*\u0301", "axx\u0301", false, "a star with an accent is itself, not a wildcard"},
           Case{"a*\u0301", "a*\u0301", true, "indeed itself"},
           Case{"?\u0301", "e\u0301", false, "and so is a question mark"},
       })
    EXPECT_EQ(fnmatchSimple({.pattern = pattern, .candidate = candidate}), matches)
        << pattern << " against " << candidate << " " << reason;
}

/// The definition, in as many words.
bool matchesByDefinition(std::string_view pattern, std::string_view candidate) {
  if (pattern.empty()) return candidate.empty();
  if (pattern[0] == '*' && matchesByDefinition(pattern.substr(1), candidate)) return true;
  if (candidate.empty()) return false;
  if (pattern[0] == '*') return matchesByDefinition(pattern, candidate.substr(1));
  return (pattern[0] == '?' || pattern[0] == candidate[0]) &&
         matchesByDefinition(pattern.substr(1), candidate.substr(1));
}

TEST(FnmatchSimple, AgreesWithItsDefinitionOnShortTexts) {
  std::mt19937 random(1);
  const auto textOf = [&](std::string_view alphabet) {
    std::string text(random() % 9, ' ');
    for (char& c : text) c = alphabet[random() % alphabet.size()];
    return text;
  };
  for (int i = 0; i < 20'000; ++i) {
    const auto pattern = textOf("ab*?"), candidate = textOf("ab");
    EXPECT_EQ(fnmatchSimple({.pattern = pattern, .candidate = candidate}), matchesByDefinition(pattern, candidate))
        << pattern << " against " << candidate;
  }
}

TEST(FnmatchSimple, TakesNoExponentialTime) {
  const auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(fnmatchSimple({.pattern = "*a*a*a*a*b", .candidate = std::string(100'000, 'a')}));
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
}

}  // namespace
}  // namespace tavik
