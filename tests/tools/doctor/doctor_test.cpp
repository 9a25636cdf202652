#include <algorithm>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "fake/fake_platform.h"
#include "platform/linux/linux_host.h"
#include "policy/delivered_policy.h"
#include "table.h"
#include "tools/doctor/check_policy.h"
#include "tools/doctor/count_elements.h"
#include "tools/doctor/desktop_findings.h"
#include "tools/doctor/examine_applications.h"
#include "tools/doctor/examine_policy.h"
#include "tools/doctor/near_matches.h"
#include "tools/doctor/report_as_text.h"
#include "tools/doctor/toolkit.h"

namespace tavik::doctor {
namespace {

/// Those that are something to mend, in one text.
std::string faultsOf(const std::vector<Finding>& findings) {
  std::string faults;
  for (const auto& finding : findings) {
    if (finding.level != Level::fault) continue;
    EXPECT_TRUE(finding.remedy && !finding.remedy->empty()) << finding.text;
    faults += finding.text + '\n';
  }
  return faults;
}

const std::string kRoles = "ax_role_text_blocklist:\n- AXSecureTextField\n";
const std::string kApplications = kRoles + "bundle_id_blocklist:\n";

TEST(CheckPolicy, FindsWhatDoesNothing) {
  for (const auto& [text, fault] : Table<std::string>{
           {kApplications + "- xterm # mine", R"(Line 4, "- xterm # mine" has a remark)"},
           {kApplications + "- \"xterm\" # mine", R"(Line 4, "- "xterm" # mine" has a remark)"},
           {kApplications + "- # mine", "has a remark"},
           {kRoles + "bundle_id_blocklist: # mine\n- a",
            "Line 3, \"bundle_id_blocklist: # mine\" has something behind"},
           {kRoles + "bundle_id_blocklist: [a, b]", "has something behind the section's name"},
           {kApplications + "- [a, b]", "has several items"},
           {kApplications + "- a, b", "has a comma"},
           {kApplications + "- id: a", "has a colon inside"},
           {"bundle_id_blocklist:\r\n- a\r\n" + kRoles, "Line 1, \"bundle_id_blocklist:\" ends with a carriage return"},
           {kApplications + "# a\r\n- b", "ends with a carriage return"},
           {kRoles + "\"bundle_id_blocklist\":\n- a\n- b",
            "Line 3, \"\"bundle_id_blocklist\":\" is no section's name to the reader, which wants it in lower case and "
            "without quotes. Items skipped: 2.\n"},
           {kRoles + "Bundle-Id-Blocklist:\n", "is no section's name"},
           {kRoles + "applications:\n- a", "opens no section that the reader knows. Items skipped: 1"},
           {"- a\n" + kRoles, "Items stand above the first section that the reader knows. Items skipped: 1"},
           {kApplications + "-item", "Line 4, \"-item\" has no blank"},
           {kApplications + "-", "is a hyphen with nothing behind it"},
           {kApplications + "- \"\"", "has nothing in its quotes"},
           {kApplications + "- a:\n- b", "ends with a colon, so it is no item"},
           {kApplications + "a", "is nothing that the reader knows"},
           {kApplications + "- \"a", "quotes that do not stand as one pair"},
           {kApplications + "- \" a\"", "blanks inside its quotes"},
           {kApplications + "- a\u200B", "a character that cannot be seen"},
           {kApplications + "- [Aa]b", "several items"},
           {kApplications + "- org\\.a", "a backslash or a bracket"},
           {kApplications + "- ^org.a$", "like a regular expression"},
           {kApplications + "- /usr/bin/a", "is a path"},
           {kApplications + "- a.desktop", "ends in .desktop"},
           {kApplications + "- AXSecureTextField", "stands among the applications"},
           {kRoles + "- AXSecure*", "is written like a pattern"},
           {kRoles + "- org.a", "is no role"},
           {"bundle_id_blocklist:\n- a", "AXSecureTextField is not in the policy"},
           {"", "AXSecureTextField is not in the policy"},
       }) {
    EXPECT_NE(faultsOf(checkPolicy(text)).find(fault), std::string::npos) << text << faultsOf(checkPolicy(text));
  }
}

TEST(CheckPolicy, RaisesNoFalseAlarm) {
  for (const auto& text :
       {std::string(deliveredPolicy()), kApplications + "\n  - 'Jameica 2.10.3'\n\t# a # b:\n- \"a#b\"\n- \"a # b\"",
        "---\npolicy:\n  " + kApplications + "    - \"*\"\n..."}) {
    EXPECT_EQ(faultsOf(checkPolicy(text)), "");
  }
}

TEST(NearMatches, MeanAnApplicationThatIsNotCovered) {
  const std::vector<KnownApplication> known{
      {.identifiers = {"debian-xterm"}, .otherNames = {"XTerm", "xterm"}},
      {.identifiers = {"featherpad"}, .otherNames = {"FeatherPad", ""}},
      {.identifiers = {"org.example.Vault", "vault"}, .otherNames = {"Vault"}},
  };
  for (const auto& [reason, patterns, identifier] : Table<std::vector<std::string>, std::string>{
           {"letter case", {"Feather*"}, "featherpad"},
           {"the program's name", {"xterm"}, "debian-xterm"},
           {"the name that is shown", {"none", "XTERM"}, "debian-xterm"},
           {"covered", {"featherpad", "FeatherPad"}, ""},
           {"covered by another identifier", {"vault", "Vault"}, ""},
           {"a part of a name", {"term", "Feather", "FeatherPad2"}, ""},
           {"nothing", {""}, ""},
       }) {
    const auto findings = nearMatches({.bundleIdBlocklist = patterns}, known);
    EXPECT_EQ(findings.size(), identifier.empty() ? 0U : 1U) << reason;
    EXPECT_NE(faultsOf(findings).find(identifier), std::string::npos) << reason;
  }
}

TEST(UnreadablePolicy, SaysWhy) {
  const auto host = platform::makeLinuxHost();
  const auto file = testing::TempDir() + "doctor-policy.yaml";
  for (const auto& [reason, text] : Table<std::string>{
           {"it is not UTF-8, and line 2 is the first.", "a\ncaf\xE9\n"},
           {"it is not UTF-8, and it is UTF-16.", "\xFF\xFE-\n"},
       }) {
    std::ofstream(file) << text;
    EXPECT_TRUE(unreadablePolicy(*host, file).text.ends_with(reason));
  }
  for (const auto& [path, reason] : Table<std::string>{{"~/policy.yaml", "~ is a character like any other"},
                                                       {"/nonexistent", "no such file"},
                                                       {"/bin", "neither a file"}}) {
    EXPECT_NE(unreadablePolicy(*host, path).text.find(reason), std::string::npos) << path;
  }
}

TEST(PolicyInForce, SaysThatTheNamedFileIsNone) {
  fake::FakeDesktop desktop{.environment = {{"TAVIK_PERCEPTION_CONFIG", "/bin"}}, .files = {{"/bin", std::nullopt}}};
  const auto platform = fake::makePlatform(desktop);
  const auto findings = policyInForce(*platform.host, loadPolicyText(*platform.host));
  EXPECT_TRUE(
      faultsOf(findings).starts_with("TAVIK_PERCEPTION_CONFIG is of no effect. The file \"/bin\" is no policy"));
  EXPECT_NE(findings.back().text.find("compiled in, as it is delivered"), std::string::npos);
}

TEST(ExplainPolicy, TellsWhatEachLineIsTakenFor) {
  const std::vector<KnownApplication> known{{.identifiers = {"org.a", "b"}}, {.identifiers = {"c"}}};
  const auto report = explainPolicy({.text = "- x\n" + kApplications + "# c\n\n- \"?\"\n-c"}, known);
  std::string taken;
  for (const auto& line : report.lines) {
    taken += std::to_string(line.number) + ' ' + std::string(line.takenFor) + ' ' + line.text;
    for (const auto& match : line.matches) taken += " = " + match;
    taken += '\n';
  }
  EXPECT_EQ(taken,
            "1 nothing - x\n2 section ax_role_text_blocklist:\n3 role AXSecureTextField\n"
            "4 section bundle_id_blocklist:\n7 application ? = c = org.a\n8 nothing -c\n");
}

TEST(Toolkit, IsToldByBusOrLibraries) {
  for (const auto& [name, version, toolkit] : Table<std::string, std::string>{{"gtk", "3.24.38", "GTK 3"},
                                                                              {"GTK", "4.8.3", "GTK 4"},
                                                                              {"Qt", "5.15.8", "Qt 5"},
                                                                              {"Gecko", "", "Firefox"}}) {
    EXPECT_EQ(toolkitNamed(name, version), toolkit);
    EXPECT_TRUE(treeRemedy(toolkit)) << toolkit;
  }
  EXPECT_EQ(
      toolkitOfLibraries("7f00-7f01 r-xp 0 08:01 1 /usr/lib/libgtk-3.so.0\n7f02-7f03 r-xp 0 08:01 1 /jre/libjvm.so"),
      "Java")
      << "which loads GTK for its dialogs";
  EXPECT_EQ(toolkitOfLibraries("/usr/lib/libX11.so.6"), std::nullopt);
  EXPECT_EQ(treeRemedy("Xt and Xaw"), std::nullopt) << "nothing helps";
}

/// An element with as many children, each with as many, down to a depth.
fake::FakeElementRef tree(int children, int depth) {
  std::vector<platform::UIElementRef> below;
  for (int i = 0; depth > 0 && i < children; ++i) below.push_back(tree(children, depth - 1));
  return fake::element({{"AXChildren", std::move(below)}, {"AXRole", depth == 0 ? "AXWebArea" : "AXGroup"}});
}

TEST(CountElements, CountsWhatAWalkVisitsUpToAHundred) {
  for (const auto& [reason, window, elements, hasPage] : Table<platform::UIElementRef, int, bool>{
           {"all", tree(3, 2), 13, true},
           {"the first fifty children", tree(60, 1), 51, true},
           {"eight levels", tree(1, 20), 9, false},
           {"no more than a hundred", tree(10, 3), 100, false},
           {"no window", nullptr, 0, false},
       }) {
    fake::FakeDesktop desktop;
    if (window) desktop.applicationElements[7] = fake::element({{"AXMainWindow", window}});
    const auto platform = fake::makePlatform(desktop);
    const auto count = countElements(*platform.accessibility, 7);
    EXPECT_EQ(count.elements, elements) << reason;
    EXPECT_EQ(count.hasPage, hasPage) << reason;
  }
}

TEST(ExamineApplications, ListsThoseThatOneCanSwitchTo) {
  fake::FakeDesktop desktop{
      .applications = {fake::application(-1, "org.vault", "Vault"), fake::application(-2, "a", "A"),
                       fake::application(-3, "panel", {}, platform::ActivationPolicy::accessory)}};
  desktop.frontmost = desktop.applications[1];
  const auto platform = fake::makePlatform(desktop);
  const auto reports = examineApplications(platform, nullptr, {.bundleIdBlocklist = {"org.*"}});
  const auto text = reportAsText({.applications = reports}, {});
  EXPECT_NE(
      text.find(
          "  \"Vault\", identifier \"org.vault\"\n         sensitive: no picture is taken of it, and its tree was "
          "not looked at\n  \"A\", identifier \"a\", in front\n         toolkit unknown, tree not read\n\n"),
      std::string::npos)
      << text;
  EXPECT_EQ(std::ranges::count(desktop.calls, "createApplication"), 0) << "without a bus nobody is asked for a tree";
}

TEST(ReportAsText, GivesATerminalNothingToObey) {
  const auto text = reportAsText({.findings = {{.about = "desktop", .text = "a\x1B[2J \u009B2J\nb \u00E9"}},
                                  .applications = {{.name = "\x1B", .elements = 9, .toolkit = "\a"}}},
                                 {});
  EXPECT_NE(text.find("  ok     a?[2J ?2J?b \u00E9\n"), std::string::npos) << text;
  EXPECT_EQ(text.find_first_of("\x1B\a"), std::string::npos);
}

/// A desktop on which all is well.
DesktopFacts wellOnX11() {
  return {.variables = {.display = ":0"},
          .isXReachable = true,
          .windowManager = "Openbox",
          .mayCapture = true,
          .hasBusLibrary = true,
          .hasSessionBus = true,
          .hasAccessibilityBus = true};
}

DesktopFacts wellOnWayland() {
  auto facts = wellOnX11();
  facts.variables.waylandDisplay = "wayland-1";
  facts.isCompositorReachable = facts.tellsWindows = true;
  facts.compositor = "sway";
  return facts;
}

template <class Change>
DesktopFacts but(DesktopFacts facts, Change change) {
  change(facts);
  return facts;
}

TEST(DesktopFindings, NameTheFaultAlone) {
  for (const auto& [fault, facts] : Table<DesktopFacts>{
           {"", wellOnX11()},
           {"", wellOnWayland()},
           {"Neither DISPLAY nor WAYLAND_DISPLAY is set", but(wellOnX11(), [](auto& f) { f.variables.display = ""; })},
           {"DISPLAY is :0, but no X server lets", but(wellOnX11(), [](auto& f) { f.isXReachable = false; })},
           {"but WAYLAND_DISPLAY is not set", but(wellOnX11(), [](auto& f) { f.variables.sessionType = "wayland"; })},
           {"WAYLAND_DISPLAY is wayland-1, but no compositor",
            but(wellOnWayland(), [](auto& f) { f.isCompositorReachable = false; })},
           {"SWAYSOCK is not set", but(wellOnWayland(), [](auto& f) { f.tellsWindows = false; })},
           {"", but(wellOnWayland(), [](auto& f) { f.tellsWindows = false, f.compositor = "phoc"; })},
           {"KWin takes pictures for a program with a desktop file",
            but(wellOnWayland(), [](auto& f) { f.isKWin = true; })},
           {"", but(wellOnWayland(), [](auto& f) { f.isKWin = f.isAllowedByKWin = true, f.mayCapture = false; })},
           {"Pictures cannot be taken", but(wellOnX11(), [](auto& f) { f.mayCapture = false; })},
           {"libsystemd is not there",
            but(wellOnX11(), [](auto& f) { f.hasBusLibrary = f.hasAccessibilityBus = false; })},
           {"The session bus cannot be reached: DBUS_SESSION_BUS_ADDRESS is not set",
            but(wellOnX11(), [](auto& f) { f.hasSessionBus = f.hasAccessibilityBus = false; })},
           {"no accessibility bus runs", but(wellOnX11(), [](auto& f) { f.hasAccessibilityBus = false; })},
       }) {
    const auto faults = faultsOf(desktopFindings(facts));
    EXPECT_EQ(std::ranges::count(faults, '\n'), fault.empty() ? 0 : 1) << faults;
    EXPECT_NE(faults.find(fault), std::string::npos) << fault << " in " << faults;
  }
}

}  // namespace
}  // namespace tavik::doctor
