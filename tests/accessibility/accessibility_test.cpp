#include <algorithm>
#include <array>
#include <limits>
#include <string>

#include <boost/json/parse.hpp>
#include <gtest/gtest.h>

#include "accessibility/capture_ax_tree.h"
#include "accessibility/walk_ax_element.h"
#include "fake/fake_platform.h"
#include "table.h"

namespace tavik {
namespace {

using fake::element;
using platform::AttributeValue;
using platform::OtherValue;
using platform::Point;
using platform::Size;
using platform::UIElementRef;
using namespace std::string_literals;

namespace json = boost::json;

const SensitiveAppsConfig kPolicy{.axRoleTextBlocklist = {"AXCheckBox", "*", "AX*"}};

/// An element with so many times the same child.
fake::FakeElementRef parent(std::size_t count, const UIElementRef& child) {
  return element({{"AXChildren", std::vector(count, child)}});
}

/// An element with all five texts, or what stands in their place.
fake::FakeElementRef texts(const std::array<AttributeValue, 5>& v) {
  return element({{"AXRole", v[0]}, {"AXTitle", v[1]}, {"AXValue", v[2]}, {"AXHelp", v[3]}, {"AXDescription", v[4]}});
}

using Value = const AttributeValue&;

auto valued(Value role, Value value) { return element({{"AXRole", role}, {"AXValue", value}}); }

auto framed(Value position, Value size) { return element({{"AXPosition", position}, {"AXSize", size}}); }

TEST(WalkAXElement, ReportsCountsAndRedacts) {
  constexpr double kInfinite = std::numeric_limits<double>::infinity();
  const auto flag = "\U0001F1E9\U0001F1EA"s, accented = "e\u0301"s;
  const auto all =
      R"({"role":"AXButton","title":"e\u0301","value":"\ud83c\udde9\ud83c\uddea","help":"h","description":""})";
  const auto empty = R"({"role":"AXCheckBox","value":"<redacted>"})";
  const auto secret = R"({"role":"AXCheckBox","title":"abc","value":"<redacted>","help":"h","description":"de"})";
  const Table<fake::FakeElementRef, std::string, std::int64_t, bool> cases{
      {"perceived characters count", texts({"AXButton"s, accented, flag, "h"s, ""s}), all, 2, false},
      {"other types: no key", texts({1.0, true, OtherValue{}, element({}), Point{}}), "{}", 0, false},
      {"a secret is withheld", texts({"AXCheckBox"s, "abc"s, "hunter2"s, "h"s, "de"s}), secret, 5, true},
      {"an empty one too", valued("AXCheckBox"s, ""s), empty, 0, true},
      {"a number is none", valued("AXCheckBox"s, 1.0), R"({"role":"AXCheckBox"})", 0, false},
      {"another case", valued("axcheckbox"s, "v"s), R"({"role":"axcheckbox","value":"v"})", 1, false},
      {"nor a pattern", valued("AXLink"s, "v"s), R"({"role":"AXLink","value":"v"})", 1, false},
      {"no role", element({{"AXValue", "v"s}}), R"({"value":"v"})", 1, false},
      {"truncates to zero", framed(Point{12.9, -3.5}, Size{-0.7, 1e6}), R"({"frame":[12,-3,0,1000000]})", 0, false},
      {"another type leaves zeros", framed(Size{1, 2}, "3"s), R"({"frame":[0,0,0,0]})", 0, false},
      {"no size", element({{"AXPosition", Point{1, 2}}}), "{}", 0, false},
      {"no integer form", framed(Point{1, kInfinite}, Size{1, 1}), "{}", 0, false},
      {"beyond 64 bits", framed(Point{1, 2}, Size{0x1p63, 1}), "{}", 0, false},
      {"no children in an empty list", parent(0, nullptr), "{}", 0, false},
      {"none in a value of another type", element({{"AXChildren", element({})}}), "{}", 0, false},
  };
  for (const auto& [reason, root, node, textChars, redacted] : cases) {
    AXSummary summary;
    EXPECT_EQ(walkAXElement(*root, {.depth = 0, .maxDepth = 8}, summary, kPolicy), json::parse(node)) << reason;
    EXPECT_TRUE(summary.nodeCount == 1 && summary.textChars == textChars) << reason;
    EXPECT_EQ(summary.redactionApplied, redacted) << reason;
  }
}

TEST(WalkAXElement, ReadsDepthFirstNothingTwiceAndFiftyChildren) {
  const auto leaf = element({{"AXTitle", "xy"s}}), first = parent(50, parent(4, leaf));
  const auto wide = element({{"AXChildren", std::vector<UIElementRef>(120, first)}, {"AXPosition", Point{}}});
  AXSummary summary{.redactionApplied = true};
  const auto node = walkAXElement(*wide, {.depth = 7, .maxDepth = 10}, summary, SensitiveAppsConfig::empty);
  const json::object deepest{{"children", json::array(4, {{"title", "xy"}})}};
  const json::object middle{{"children", json::array(50, deepest)}};
  EXPECT_TRUE(node.at("children") == json::array(50, middle));
  EXPECT_EQ(summary.nodeCount, 1 + 50 * (1 + 50 * 5));
  EXPECT_EQ(summary.textChars, 50 * 50 * 4 * 2);
  EXPECT_TRUE(summary.redactionApplied) << "what was withheld before stays so";
  EXPECT_TRUE(std::ranges::equal(wide->asked, kWalkedAXAttributes)) << "what a backend has been told";
  EXPECT_EQ(leaf->asked.size(), 50U * 50 * 4 * 6) << "no children are asked for at the last level";
}

TEST(CaptureAXTree, WalksTheRootThatFitsTheTarget) {
  const auto titled = [](const std::string& title) -> UIElementRef { return element({{"AXTitle", title}}); };
  const std::vector windows = {titled("first"), titled("second")}, none(0, titled(""));
  UIElementRef chain = titled("the thirteenth");
  for (int i = 0; i < 12; ++i) chain = parent(1, chain);
  fake::FakeDesktop desktop;
  desktop.applicationElements = {
      {1, element({{"AXTitle", "app 1"s}, {"AXMainWindow", titled("main")}, {"AXWindows", windows}})},
      {2, element({{"AXTitle", "app 2"s}, {"AXWindows", windows}, {"AXFocusedUIElement", titled("focus 2")}})},
      {3, element({{"AXTitle", "app 3"s}, {"AXMainWindow", "?"s}, {"AXWindows", none}})},
      {4, element({{"AXTitle", "app 4"s}, {"AXChildren", std::vector{chain}}})}};
  const auto app = [](int pid) {
    return pid != 0 ? std::optional(ResolvedTargetApp{fake::application(pid, "a", "A")}) : std::nullopt;
  };
  const auto platform = fake::makePlatform(desktop);
  const Table<Target, int, int, std::string, int> cases{
      {"the main window", Target::app, 1, 2, "main", 1},
      {"else the first window", Target::app, 2, 1, "first", 1},
      {"else the application", Target::app, 3, 1, "app 3", 1},
      {"to the eighth level below it", Target::app, 4, 1, "app 4", 9},
      {"no application", Target::app, 0, 1, "", 0},
      {"the frontmost application's focus, not the target's", Target::focused_element, 1, 2, "focus 2", 1},
      {"else the frontmost application", Target::focused_element, 1, 3, "app 3", 1},
      {"nobody in front", Target::focused_element, 1, 0, "", 0},
      {"a screen alone has no application", Target::screen, 0, 1, "", 0},
      {"with one it is walked whole", Target::region, 1, 2, "app 1", 1},
  };
  for (const auto& [reason, target, targetPid, frontmostPid, rootTitle, nodes] : cases) {
    desktop.frontmost = frontmostPid != 0 ? app(frontmostPid)->app : nullptr;
    for (const bool isTrusted : {true, false}) {
      desktop.isTrusted = isTrusted;
      const auto summary = captureAXTree(target, app(targetPid), {}, *platform.accessibility, *platform.workspace);
      const auto title = summary.tree ? summary.tree->at("title") : json::value("");
      EXPECT_EQ(title, json::value(isTrusted ? rootTitle : "")) << reason;
      EXPECT_EQ(summary.nodeCount, isTrusted ? nodes : 0) << reason;
    }
  }
  EXPECT_EQ(std::ranges::count(desktop.calls, "prefetch 8"), 7);
}

}  // namespace
}  // namespace tavik
