#include "accessibility/capture_ax_tree.h"

#include <string>
#include <tuple>

#include <gtest/gtest.h>

#include "fake/fake_platform.h"

namespace tavik {
namespace {

using fake::element;
using platform::UIElementRef;
using namespace std::string_literals;

std::optional<ResolvedTargetApp> app(std::int32_t pid) {
  return pid != 0 ? std::optional(ResolvedTargetApp{fake::application(pid, "a", "A")}) : std::nullopt;
}

/// An element that is known by its title.
UIElementRef titled(const std::string& title) { return element({{"AXTitle", title}}); }

TEST(CaptureAXTree, WalksTheRootThatFitsTheTarget) {
  const std::vector<UIElementRef> windows = {titled("first"), titled("second")}, none;
  fake::FakeDesktop desktop;
  desktop.applicationElements = {
      {1, element({{"AXTitle", "app 1"s}, {"AXMainWindow", titled("main")}, {"AXWindows", windows}})},
      {2, element({{"AXTitle", "app 2"s}, {"AXWindows", windows}, {"AXFocusedUIElement", titled("focus 2")}})},
      {3, element({{"AXTitle", "app 3"s}, {"AXMainWindow", "?"s}, {"AXWindows", none}})}};
  const auto platform = fake::makePlatform(desktop);
  using Case = std::tuple<std::string, Target, int, int, std::string>;
  for (const auto& [reason, target, targetPid, frontmostPid, rootTitle] : {
           Case{"the main window", Target::app, 1, 2, "main"},
           Case{"else the first window", Target::app, 2, 1, "first"},
           Case{"else the application", Target::app, 3, 1, "app 3"},
           Case{"no application", Target::app, 0, 1, ""},
           Case{"the frontmost application's focus, not the target's", Target::focused_element, 1, 2, "focus 2"},
           Case{"else the frontmost application", Target::focused_element, 1, 3, "app 3"},
           Case{"nobody in front", Target::focused_element, 1, 0, ""},
           Case{"a screen alone has no application", Target::screen, 0, 1, ""},
           Case{"with one it is walked whole", Target::region, 1, 2, "app 1"},
       }) {
    desktop.frontmost = frontmostPid != 0 ? app(frontmostPid)->app : nullptr;
    for (const bool isTrusted : {true, false}) {
      desktop.isTrusted = isTrusted;
      const auto summary = captureAXTree(target, app(targetPid), {}, *platform.accessibility, *platform.workspace);
      const bool walks = isTrusted && !rootTitle.empty();
      EXPECT_EQ(summary.nodeCount, walks ? 1 : 0) << reason;
      EXPECT_EQ(summary.tree, walks ? std::optional(ResponseDictionary{{"title", rootTitle}}) : std::nullopt) << reason;
    }
  }
}

TEST(CaptureAXTree, EndsAtTheEighthLevelBelowItsRoot) {
  UIElementRef chain = element({});
  for (int i = 0; i < 12; ++i) chain = element({{"AXChildren", std::vector{chain}}});
  fake::FakeDesktop desktop;
  desktop.applicationElements = {{1, chain}};
  const auto platform = fake::makePlatform(desktop);
  const auto walked = [&](std::int32_t pid) {
    return captureAXTree(Target::app, app(pid), {}, *platform.accessibility, *platform.workspace);
  };
  EXPECT_EQ(walked(1).nodeCount, 9);
  EXPECT_EQ(walked(9).tree, ResponseDictionary()) << "an application that has quit is one empty node";
  EXPECT_EQ(desktop.calls.prefetch, 2);
}

}  // namespace
}  // namespace tavik
