#include <chrono>
#include <regex>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "fake/fake_platform.h"
#include "policy/delivered_policy.h"
#include "policy/fnmatch_simple.h"
#include "policy/load_sensitive_apps_config.h"
#include "policy/parse_sensitive_apps_yaml.h"
#include "policy/sensitive_app_match.h"
#include "table.h"

namespace tavik {
namespace {

TEST(FnmatchSimple, CoversTheWholeCandidate) {
  for (const auto& [pattern, candidate, matches, reason] : Table<std::string, bool, std::string>{
           {"com.apple.Safari", "com.apple.safari", false, "case"},
           {"com.apple.Safari", "com.apple.Safari.beta", false, "whole candidate"},
           {"com.apple.*", "com.apple.", true, "the star matches nothing"},
           {"com.apple.*", "com.applexSafari", false, "the dot is literal"},
           {"*ab*b?a**", "xabcbxbca", true, "the last star gives way, not the first"},
           {"a*ab", "aab-ab-b", false, "and end where the candidate does"},
           {"*b?", "ab", false, "a question mark wants something"},
           {"a\\*", "a\\bc", true, "a backslash escapes nothing"},
           {"?", "\u00e9", true, "one code point of two bytes"},
           {"?", "e\u0301", false, "two code points that look like one character"},
           {"*??b*", "\u20acbx", false, "a star begins at no byte within a code point"},
           {"e*", "e\u0301", true, "a star may begin inside a character of the candidate"},
           {"a*\u0301", "axx\u0301", false, "a star with an accent is itself, not a wildcard"},
           {"a*\u0301", "a*\u0301", true, "indeed itself"},
           {"?\u0301", "e\u0301", false, "and so is a question mark"},
       }) {
    EXPECT_EQ(fnmatchSimple({.pattern = pattern, .candidate = candidate}), matches)
        << pattern << " against " << candidate << " " << reason;
  }
}

TEST(FnmatchSimple, TakesNoExponentialTime) {
  const auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(fnmatchSimple({.pattern = "*a*a*a*a*b", .candidate = std::string(100'000, 'a')}));
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
}

TEST(SensitiveAppMatch, TriesEveryPatternOnEveryIdentifier) {
  const SensitiveAppsConfig policy{.bundleIdBlocklist = {"org.none", "org.vault.*", "*"}};
  using Identifiers = std::vector<std::string>;
  EXPECT_EQ(sensitiveAppMatch(Identifiers{"org.vault.app"}, policy), "org.vault.app");
  EXPECT_EQ(sensitiveAppMatch(Identifiers{}, policy), std::nullopt) << "no identifier is not an empty one";
  const SensitiveAppsConfig one{.bundleIdBlocklist = {"org.none", "org.vault"}};
  EXPECT_EQ(sensitiveAppMatch(Identifiers{"org.notes", "org.vault"}, one), "org.vault");
  EXPECT_EQ(sensitiveAppMatch(Identifiers{"org.notes", "org.vault.app"}, one), std::nullopt);
}

TEST(ParseSensitiveAppsYAML, ReadsItsTwoListsAndSkipsTheRest) {
  const std::string apps = "bundle_id_blocklist:\n";
  for (const auto& [reason, text, bundleIds] : Table<std::string, std::vector<std::string>>{
           {"CR LF ends no line", apps + "- a\r\n- b\n", {"a\r\n- b"}},
           {"a lone CR neither, and is not trimmed", apps + "- a\rb\n- c\r", {"a\rb", "c\r"}},
           {"indentation means nothing", "  bundle_id_blocklist \u00a0: \n\t-   a \u3000\n", {"a"}},
           {"another case closes the section", apps + "- a\nBundle_Id_Blocklist:\n- b\n", {"a"}},
           {"an unknown header closes it", apps + "- a\nother:\n- b\n", {"a"}},
           {"an unknown key with a value does not", apps + "- a\nother: x\n- b\n", {"a", "b"}},
           {"an item with a colon at its end is a header", apps + "- a:\n- b\n", {}},
           {"a comment with one is a comment", apps + "# x:\n- b\n", {"b"}},
           {"a hyphen wants a blank", apps + "-a\n-\tb\n-\n- \n- c\n", {"c"}},
           {"a trailing comment is text", apps + "- a # b\n", {"a # b"}},
           {"one pair of quotes goes", apps + "- \" a \"\n- ''\n- \"'b'\"\n", {" a ", "'b'"}},
           {"what is no pair stays", apps + "- \"\n- \"a'\n", {"\"", "\"a'"}},
           {"a section may come back", apps + "- a\nx:\n- b\n" + apps + "- c\n", {"a", "c"}},
           {"a mark makes other signs", apps + "-\u0301 a\n- b:\u0301\n", {"b:\u0301"}},
           {"also another quote", apps + "- \"c\"\u0301\n", {"\"c\"\u0301"}},
       }) {
    EXPECT_EQ(parseSensitiveAppsYAML(text), SensitiveAppsConfig{.bundleIdBlocklist = bundleIds}) << reason;
  }
  EXPECT_EQ(parseSensitiveAppsYAML("ax_role_text_blocklist:\n- R\n- R\nbundle_id_blocklist:\n- b\n- a\n- b"),
            (SensitiveAppsConfig{.bundleIdBlocklist = {"b", "a", "b"}, .axRoleTextBlocklist = {"R"}}))
      << "both lists, duplicates kept in one only";
}

TEST(DeliveredPolicy, HasNoLineThatTheReaderSkips) {
  std::istringstream lines{std::string(deliveredPolicy())};
  std::size_t items = 0;
  for (std::string line; std::getline(lines, line);) {
    if (std::regex_match(line, std::regex(R"(\s*(#.*)?|.*:)"))) continue;
    EXPECT_EQ(line.find('#'), std::string::npos) << "a comment after an item is part of it: " << line;
    ++items;
  }
  const auto policy = parseSensitiveAppsYAML(deliveredPolicy());
  EXPECT_TRUE(policy.axRoleTextBlocklist.contains("AXSecureTextField"));
  EXPECT_GT(policy.bundleIdBlocklist.size(), 20U);
  EXPECT_EQ(policy.bundleIdBlocklist.size() + policy.axRoleTextBlocklist.size(), items);
}

// As windows of Debian 12 give them, where the package's name does not say it; and what a pattern must not take along.
TEST(DeliveredPolicy, KnowsProgramsByWhatTheyCallThemselves) {
  const auto policy = parseSensitiveAppsYAML(deliveredPolicy());
  const std::vector<std::string> sensitive{"Jameica 2.10.3", "addtrans", "git-gui--askpass",
                                           "net-sf-linuxorg-pcal-PCalendar", "redhat-userpasswd"};
  const std::vector<std::string> harmless{"SWT", "FLTK", "git-gui", "java", "galculator", "nm-connection-editor"};
  for (const auto& one : sensitive) EXPECT_EQ(sensitiveAppMatch({&one, 1}, policy), one);
  EXPECT_EQ(sensitiveAppMatch(harmless, policy), std::nullopt);
}

constexpr auto kDefaultPath = "/Users/ada/Documents/Dev/Quorle/config/perception/sensitive-apps.yaml";

std::optional<std::string> policyOf(const std::string& item) { return "bundle_id_blocklist:\n- " + item; }

TEST(LoadSensitiveAppsConfig, TakesTheFirstFileThatReads) {
  using Text = std::optional<std::string>;
  const auto delivered = parseSensitiveAppsYAML(deliveredPolicy());
  for (const auto& [reason, variable, files, expected] : Table<Text, fake::Map<Text>, std::vector<std::string>>{
           {"the variable's file alone", "v", {{"v", policyOf("v")}, {kDefaultPath, policyOf("d")}}, {"v"}},
           {"no such file", "v", {{kDefaultPath, policyOf("d")}}, {"d"}},
           {"an empty file is a policy", "v", {{"v", ""}, {kDefaultPath, policyOf("d")}}, {}},
           {"a directory, or not UTF-8", "v", {{"v", std::nullopt}, {kDefaultPath, policyOf("d")}}, {"d"}},
           {"an empty variable names nothing", "", {{"", policyOf("?")}, {"/r", policyOf("r")}}, {"r"}},
           {"unset, no default: the resource", std::nullopt, {{"/r", policyOf("r")}}, {"r"}},
           {"the default does not read", {}, {{kDefaultPath, {}}, {"/r", policyOf("r")}}, {"r"}},
           {"nothing reads: what is compiled in", "v", {{"/r", std::nullopt}}, delivered.bundleIdBlocklist},
       }) {
    fake::FakeDesktop desktop{.files = files, .resources = {{"perception-sensitive-apps.yaml", "/r"}}};
    if (variable) desktop.environment["TAVIK_PERCEPTION_CONFIG"] = *variable;
    const auto platform = fake::makePlatform(desktop);
    EXPECT_EQ(loadSensitiveAppsConfig(*platform.host).bundleIdBlocklist, expected) << reason;
  }
}

}  // namespace
}  // namespace tavik
