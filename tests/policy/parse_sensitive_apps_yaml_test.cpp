#include "policy/parse_sensitive_apps_yaml.h"

#include <fstream>
#include <iterator>
#include <string>
#include <tuple>

#include <gtest/gtest.h>

namespace tavik {
namespace {

TEST(ParseSensitiveAppsYAML, ReadsItsTwoListsAndSkipsTheRest) {
  using Case = std::tuple<std::string, std::string, std::vector<std::string>>;
  const std::string apps = "bundle_id_blocklist:\n";
  for (const auto& [reason, text, bundleIds] : {
           Case{"blank and comment lines", "\n \t\n# a\n  # bundle_id_blocklist:\n- a\n", {}},
           Case{"CR LF ends no line", apps + "- a\r\n- b\n", {"a\r\n- b"}},
           Case{"a lone CR neither, and is not trimmed", apps + "- a\rb\n- c\r", {"a\rb", "c\r"}},
           Case{"indentation means nothing", "  bundle_id_blocklist \u00a0: \n\t-   a \u3000\n", {"a"}},
           Case{"another case closes the section", apps + "- a\nBundle_Id_Blocklist:\n- b\n", {"a"}},
           Case{"an unknown header closes it", apps + "- a\nother:\n- b\n", {"a"}},
           Case{"an unknown key with a value does not", apps + "- a\nother: x\n- b\n", {"a", "b"}},
           Case{"a flow list is no header", apps + "- a\nax_role_text_blocklist: [x]\n- b\n", {"a", "b"}},
           Case{"an item with a colon at its end is a header", apps + "- a:\n- b\n", {}},
           Case{"a comment with one is a comment", apps + "# x:\n- b\n", {"b"}},
           Case{"a hyphen wants a blank", apps + "-a\n-\tb\n-\n- \n- c\n", {"c"}},
           Case{"a trailing comment is text", apps + "- a # b\n", {"a # b"}},
           Case{"one pair of quotes goes",
                apps + "- \" a \"\n- ''\n- \"\"\n- \"'b'\"\n- 'c\\n'\n",
                {" a ", "'b'", "c\\n"}},
           Case{"what is no pair stays", apps + "- \"\n- \"a'\n", {"\"", "\"a'"}},
           Case{"a section may come back", apps + "- a\nx:\n- b\n" + apps + "- c\n", {"a", "c"}},
           Case{"a mark makes other signs",
                apps + "#\u0301\n-\u0301 a\n- b:\u0301\n- \"c\"\u0301\n",
                {"b:\u0301", "\"c\"\u0301"}},
       })
    EXPECT_EQ(parseSensitiveAppsYAML(text), SensitiveAppsConfig{.bundleIdBlocklist = bundleIds}) << reason;
  EXPECT_EQ(parseSensitiveAppsYAML("ax_role_text_blocklist:\n- R\n- R\nbundle_id_blocklist:\n- b\n- a\n- b"),
            (SensitiveAppsConfig{.bundleIdBlocklist = {"b", "a", "b"}, .axRoleTextBlocklist = {"R"}}))
      << "both lists, duplicates kept in one only";
}

TEST(DeliveredPolicy, IsInTheReadersFormat) {
  std::ifstream file(DELIVERED_POLICY);
  std::string text(std::istreambuf_iterator<char>(file), {}), line;
  const auto policy = parseSensitiveAppsYAML(text);
  EXPECT_TRUE(policy.axRoleTextBlocklist.contains("AXSecureTextField"));
  // Nothing in the file is skipped in silence: every line that is not blank, comment or header is an item.
  std::size_t items = 0;
  std::istringstream lines(text);
  while (std::getline(lines, line)) {
    const auto start = line.find_first_not_of(" \t");
    if (start == std::string::npos || line[start] == '#' || line.back() == ':') continue;
    EXPECT_EQ(line.find('#'), std::string::npos) << "a comment after an item is part of it: " << line;
    ++items;
  }
  EXPECT_GT(policy.bundleIdBlocklist.size(), 20U);
  EXPECT_EQ(policy.bundleIdBlocklist.size() + policy.axRoleTextBlocklist.size(), items);
}

}  // namespace
}  // namespace tavik
