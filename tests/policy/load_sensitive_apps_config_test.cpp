#include "policy/load_sensitive_apps_config.h"

#include <string>
#include <tuple>

#include <gtest/gtest.h>

#include "fake/fake_platform.h"

namespace tavik {
namespace {

constexpr auto kDefaultPath = "/Users/ada/Documents/Dev/Quorle/config/perception/sensitive-apps.yaml";

std::optional<std::string> policyOf(const std::string& item) { return "bundle_id_blocklist:\n- " + item; }

TEST(LoadSensitiveAppsConfig, TakesTheFirstFileThatReads) {
  using Case = std::tuple<std::string, std::optional<std::string>,
                          std::map<std::string, std::optional<std::string>, std::less<>>, std::vector<std::string>>;
  for (const auto& [reason, variable, files, expected] : {
           Case{"the variable's file alone", "v", {{"v", policyOf("v")}, {kDefaultPath, policyOf("d")}}, {"v"}},
           Case{"no such file", "v", {{kDefaultPath, policyOf("d")}}, {"d"}},
           Case{"an empty file is a policy", "v", {{"v", ""}, {kDefaultPath, policyOf("d")}}, {}},
           Case{"a directory, or not UTF-8", "v", {{"v", std::nullopt}, {kDefaultPath, policyOf("d")}}, {"d"}},
           Case{"an empty variable names nothing", "", {{"", policyOf("?")}, {"/r", policyOf("r")}}, {"r"}},
           Case{"unset, no default: the resource", std::nullopt, {{"/r", policyOf("r")}}, {"r"}},
           Case{"the default does not read", {}, {{kDefaultPath, {}}, {"/r", policyOf("r")}}, {"r"}},
           Case{"nothing reads", "v", {{"/r", std::nullopt}}, {}},
       }) {
    fake::FakeDesktop desktop{.files = files, .resources = {{"perception-sensitive-apps.yaml", "/r"}}};
    if (variable) desktop.environment["TAVIK_PERCEPTION_CONFIG"] = *variable;
    const auto platform = fake::makePlatform(desktop);
    EXPECT_EQ(loadSensitiveAppsConfig(*platform.host), (SensitiveAppsConfig{.bundleIdBlocklist = expected})) << reason;
  }
  fake::FakeDesktop bare;
  EXPECT_EQ(loadSensitiveAppsConfig(*fake::makePlatform(bare).host), SensitiveAppsConfig::empty)
      << "not even a resource";
}

}  // namespace
}  // namespace tavik
