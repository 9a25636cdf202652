#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "text/caseless_equal.h"
#include "text/grapheme_clusters.h"
#include "text/trimming.h"
#include "text/utf8.h"

namespace tavik::text {
namespace {

/// The folder of Debian's package unicode-data.
const std::string kUnicodeData = "/usr/share/unicode/";

std::string encoded(char32_t codePoint) {
  const auto byte = [&](unsigned shift, unsigned mark) {
    return static_cast<char>(mark | ((codePoint >> shift) & 0x3FU));
  };
  if (codePoint < 0x80) return {static_cast<char>(codePoint)};
  if (codePoint < 0x800) return {static_cast<char>(0xC0U | (codePoint >> 6U)), byte(0, 0x80)};
  if (codePoint < 0x10000) return {static_cast<char>(0xE0U | (codePoint >> 12U)), byte(6, 0x80), byte(0, 0x80)};
  return {static_cast<char>(0xF0U | (codePoint >> 18U)), byte(12, 0x80), byte(6, 0x80), byte(0, 0x80)};
}

std::vector<std::string> characters(std::string_view text) {
  std::vector<std::string> result;
  while (!text.empty()) {
    result.emplace_back(firstCharacter(text));
    text.remove_prefix(result.back().size());
  }
  return result;
}

/// Reads a line such as "÷ 0020 × 0308 ÷ 0020 ÷  # ..." into the characters that it lists.
std::vector<std::string> expectedCharacters(const std::string& line) {
  std::vector<std::string> result;
  std::istringstream words(line.substr(0, line.find('#')));
  for (std::string word; words >> word;) {
    if (word == "÷")
      result.emplace_back();
    else if (word != "×")
      result.back() += encoded(static_cast<char32_t>(std::stoul(word, nullptr, 16)));
  }
  if (!result.empty()) result.pop_back();
  return result;
}

TEST(GraphemeClusters, FollowEveryCaseOfTheUnicodeStandard) {
  std::ifstream file(kUnicodeData + "auxiliary/GraphemeBreakTest.txt");
  int cases = 0;
  for (std::string line; std::getline(file, line);) {
    const auto expected = expectedCharacters(line);
    if (expected.empty()) continue;
    std::string text;
    for (const auto& character : expected) text += character;
    EXPECT_EQ(characters(text), expected) << line;
    EXPECT_EQ(lastCharacter(text), expected.back()) << line;
    EXPECT_EQ(characterCount(text), static_cast<std::int64_t>(expected.size())) << line;
    ++cases;
  }
  EXPECT_GE(cases, 602);
}

TEST(GraphemeClusters, CountEveryEmojiOnce) {
  std::ifstream file(kUnicodeData + "emoji/emoji-test.txt");
  int cases = 0;
  for (std::string line; std::getline(file, line);) {
    const auto codePoints = line.substr(0, line.find(';'));
    if (line.empty() || line.front() == '#' || codePoints.size() == line.size()) continue;
    std::string emoji;
    std::istringstream words(codePoints);
    for (std::string word; words >> word;) emoji += encoded(static_cast<char32_t>(std::stoul(word, nullptr, 16)));
    EXPECT_EQ(characterCount(emoji), 1) << line;
    ++cases;
  }
  EXPECT_GE(cases, 4733);
}

TEST(GraphemeClusters, StandOnTheirOwnWhereTextIsNotUTF8) {
  EXPECT_EQ(characters("a\xFF\xCC\x81\xF0\x9F"), (std::vector<std::string>{"a", "\xFF", "\xCC\x81", "\xF0", "\x9F"}));
  EXPECT_EQ(lastCharacter("e\xCC"), "\xCC");
  EXPECT_EQ(firstCharacter(""), "");
  EXPECT_EQ(lastCharacter(""), "");
}

TEST(UTF8, ReplacesOnlyWhatIsIllFormed) {
  struct Case {
    std::string reason, bytes, valid;
  };
  const std::string r = "\xEF\xBF\xBD";
  for (const auto& [reason, bytes, valid] : {
           Case{"ASCII, over several words", "plain text over several words\n", "plain text over several words\n"},
           Case{"all lengths", "\u00e9\u20ac\U0001F600", "\u00e9\u20ac\U0001F600"},
           Case{"NUL is a character", std::string("a\0b", 3), std::string("a\0b", 3)},
           Case{"a stray byte after eight good ones", "12345678\xFFz", "12345678" + r + "z"},
           Case{"Latin-1", "caf\xE9 au lait", "caf" + r + " au lait"},
           Case{"overlong slash", "\xC0\xAF", r + r},
           Case{"surrogate", "\xED\xA0\x80", r + r + r},
           Case{"beyond U+10FFFF", "\xF4\x90\x80\x80", r + r + r + r},
           Case{"cut at the end", "ok\xE2\x82", "ok" + r + r},
       }) {
    EXPECT_EQ(toValidUTF8(bytes), valid) << reason;
    EXPECT_EQ(isValidUTF8(bytes), bytes == valid) << reason;
  }
}

TEST(Trimming, TakesTheCharactersOfItsSetFromBothEndsOnly) {
  struct Case {
    std::string reason, text, ofWhitespace, ofWhitespaceAndNewlines;
  };
  for (const auto& [reason, text, ofWhitespace, ofWhitespaceAndNewlines] : {
           Case{"blanks and tabs", " \t a b\t ", "a b", "a b"},
           Case{"every kind of space separator", "\u00a0\u1680\u2000\u200a\u202f\u205f\u3000x\u3000", "x", "x"},
           Case{"line ends belong to the larger set", "\r\n\v\f\u0085\u2028x\u2029\n", "\r\n\v\f\u0085\u2028x\u2029\n",
                "x"},
           Case{"zero-width space is no space", "\u200bx\u200b", "\u200bx\u200b", "\u200bx\u200b"},
           Case{"nothing remains", " \t\u3000", "", ""},
           Case{"bytes that are not UTF-8 stay", " \xFF\x80 ", "\xFF\x80", "\xFF\x80"},
           Case{"a stray continuation byte is no space", " a\x80\x80\x80\x80\x80", "a\x80\x80\x80\x80\x80",
                "a\x80\x80\x80\x80\x80"},
       }) {
    EXPECT_EQ(trimmedOfWhitespace(text), ofWhitespace) << reason;
    EXPECT_EQ(trimmedOfWhitespaceAndNewlines(text), ofWhitespaceAndNewlines) << reason;
  }
}

TEST(CaselessEqual, FoldsCaseUnderCanonicalEquivalence) {
  struct Case {
    std::string reason, left, right;
    bool equal;
  };
  for (const auto& [reason, left, right, equal] : {
           Case{"letter case", "safari", "SaFaRi", true},
           Case{"no prefix", "Saf", "Safari", false},
           Case{"composed and decomposed", "Caf\u00e9", "CAFE\u0301", true},
           Case{"no diacritic folding", "Cafe", "Caf\u00e9", false},
           Case{"folds that change the length", "Stra\u00dfe", "STRASSE", true},
           Case{"Greek final sigma", "\u03a3\u039f\u03a6\u039f\u03a3", "\u03c3\u03bf\u03c6\u03bf\u03c2", true},
           Case{"marks in another order", "a\u0327\u0301", "A\u0301\u0327", true},
           Case{"marks of one class keep their order", "a\u0301\u0300", "a\u0300\u0301", false},
           Case{"ypogegrammeni, which folds to a letter", "\u1fb3\u0301", "\u0391\u0301\u0345", true},
           Case{"Kelvin sign", "\u212a", "k", true},
           Case{"no compatibility folding", "\u2460", "1", false},
           Case{"Hangul syllable and its letters", "\uac01", "\u1100\u1161\u11a8", true},
           Case{"both empty", "", "", true},
           Case{"not UTF-8, though the bytes are the same", "\xFF", "\xFF", false},
       }) {
    EXPECT_EQ(caselessEqual(left, right), equal) << reason;
    EXPECT_EQ(caselessEqual(right, left), equal) << reason << " (reversed)";
  }
}

TEST(CaselessEqual, TakesNoQuadraticTimeOnLongRunsOfMarks) {
  std::string marks;
  for (int i = 0; i < 100'000; ++i) marks += "\u0301\u0327";
  EXPECT_FALSE(caselessEqual("a" + marks, "b" + marks));
}

}  // namespace
}  // namespace tavik::text
