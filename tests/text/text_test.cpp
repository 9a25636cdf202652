#include <array>
#include <chrono>
#include <fstream>
#include <numeric>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <utf8proc.h>

#include "table.h"
#include "text/caseless_equal.h"
#include "text/grapheme_clusters.h"
#include "text/trimming.h"
#include "text/utf8.h"

namespace tavik::text {
namespace {

using namespace std::string_literals;

/// The code point of this hexadecimal number, in UTF-8.
std::string encoded(const std::string& number) {
  std::array<utf8proc_uint8_t, 4> bytes{};
  const auto length = utf8proc_encode_char(std::stoi(number, nullptr, 16), bytes.data());
  return {bytes.begin(), bytes.begin() + length};
}

std::vector<std::string> characters(std::string_view text) {
  std::vector<std::string> result;
  for (; !text.empty(); text.remove_prefix(result.back().size())) result.emplace_back(firstCharacter(text));
  return result;
}

/// The characters that a line lists: "÷ 0020 × 0308 ÷ 0020 ÷ # two".
std::vector<std::string> listedCharacters(const std::string& line) {
  std::vector<std::string> result(1);
  std::istringstream words(line.substr(0, line.find('#')));
  for (std::string word; words >> word;) {
    if (word == "÷") result.emplace_back();
    if (word != "÷" && word != "×") result.back() += encoded(word);
  }
  std::erase(result, "");
  return result;
}

TEST(GraphemeClusters, FollowEveryCaseOfTheUnicodeStandard) {
  std::ifstream file("/usr/share/unicode/auxiliary/GraphemeBreakTest.txt");  // of Debian's package unicode-data
  int cases = 0;
  for (std::string line; std::getline(file, line);) {
    const auto expected = listedCharacters(line);
    if (expected.empty()) continue;
    const auto text = std::accumulate(expected.begin(), expected.end(), std::string());
    EXPECT_EQ(characters(text), expected) << line;
    EXPECT_EQ(lastCharacter(text), expected.back()) << line;
    EXPECT_EQ(characterCount(text), static_cast<std::int64_t>(expected.size())) << line;
    ++cases;
  }
  EXPECT_GE(cases, 602);
}

TEST(GraphemeClusters, StandOnTheirOwnWhereTextIsNotUTF8) {
  EXPECT_EQ(characters("a\xFF\xCC\x81\xF0\x9F"), (std::vector<std::string>{"a", "\xFF", "\xCC\x81", "\xF0", "\x9F"}));
  EXPECT_EQ(lastCharacter("e\xCC"), "\xCC");
  EXPECT_EQ(lastCharacter(""), "");
}

TEST(UTF8, ReplacesOnlyWhatIsIllFormed) {
  const std::string r = "\xEF\xBF\xBD";
  for (const auto& [reason, bytes, valid] : Table<std::string, std::string>{
           {"all lengths, and NUL", "\u00e9\u20ac\U0001F600\0b"s, "\u00e9\u20ac\U0001F600\0b"s},
           {"a stray byte after eight good ones", "12345678\xFFz", "12345678" + r + "z"},
           {"a stray byte as the eighth", "1234567\xFFz", "1234567" + r + "z"},
           {"surrogate", "\xED\xA0\x80", r + r + r},
           {"cut at the end", "ok\xE2\x82", "ok" + r + r},
       }) {
    EXPECT_EQ(toValidUTF8(bytes), valid) << reason;
    EXPECT_EQ(isValidUTF8(bytes), bytes == valid) << reason;
  }
}

TEST(Trimming, TakesTheCharactersOfItsSetFromBothEndsOnly) {
  const std::string ends = "\n\v\f\r\u0085\u2028\u2029";
  for (const auto& [reason, text, ofWhitespace, ofWhitespaceAndNewlines] : Table<std::string, std::string, std::string>{
           {"blanks and tabs", " \t a b\t ", "a b", "a b"},
           {"every kind of space separator", "\u00a0\u1680\u2000\u200a\u202f\u205f\u3000x\u3000", "x", "x"},
           {"line ends of the larger set", ends + "x" + ends, ends + "x" + ends, "x"},
           {"zero-width space is no space", "\u200bx\u200b", "\u200bx\u200b", "\u200bx\u200b"},
           {"nothing remains", " \t\u3000", "", ""},
           {"bytes that are not UTF-8 stay", " \xFF\x80 ", "\xFF\x80", "\xFF\x80"},
           {"nor does the blank before one go", "a \x80", "a \x80", "a \x80"},
       }) {
    EXPECT_EQ(trimmedOfWhitespace(text), ofWhitespace) << reason;
    EXPECT_EQ(trimmedOfWhitespaceAndNewlines(text), ofWhitespaceAndNewlines) << reason;
  }
}

TEST(CaselessEqual, FoldsCaseUnderCanonicalEquivalence) {
  for (const auto& [reason, left, right, equal] : Table<std::string, std::string, bool>{
           {"composed and decomposed", "Caf\u00e9", "CAFE\u0301", true},
           {"no diacritic folding", "Cafe", "Caf\u00e9", false},
           {"folds that change the length", "Stra\u00dfe", "STRASSE", true},
           {"marks in another order", "a\u0327\u0301", "A\u0301\u0327", true},
           {"marks of one class keep their order", "a\u0301\u0300", "a\u0300\u0301", false},
           {"ypogegrammeni, which folds to a letter", "\u1fb3\u0301", "\u0391\u0301\u0345", true},
           {"no compatibility folding", "\u2460", "1", false},
           {"not UTF-8, though the bytes are the same", "\xFF", "\xFF", false},
       }) {
    EXPECT_TRUE(caselessEqual(left, right) == equal && caselessEqual(right, left) == equal) << reason;
  }
}

TEST(CaselessEqual, TakesNoQuadraticTimeOnLongRunsOfMarks) {
  std::string marks;
  for (int i = 0; i < 100'000; ++i) marks += "\u0301\u0327";
  EXPECT_FALSE(caselessEqual("a" + marks, "b" + marks));
}

TEST(CaselessEqual, FoldsNoTextThatIsFarTooLong) {
  const std::string text(1'000'000, 'A');
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_TRUE(caselessKey(text));
  const auto once = std::chrono::steady_clock::now() - begin;
  for (int names = 0; names < 100; ++names) EXPECT_FALSE(caselessEqual(text, "Calculator"));
  EXPECT_LT(std::chrono::steady_clock::now() - begin, once * 10);
}

}  // namespace
}  // namespace tavik::text
