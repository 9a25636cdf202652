#include "accessibility/capture_ax_tree.h"

#include <string>

#include <gtest/gtest.h>

#include "fake/fake_platform.h"

namespace tavik {
namespace {

using fake::element;
using platform::UIElementRef;

platform::RunningApplicationRef app(std::int32_t pid) { return std::make_shared<fake::FakeApplication>(pid, "a", "A"); }

/// An element that is known by its title.
UIElementRef titled(const std::string& title) { return element({{"AXTitle", title}}); }

TEST(CaptureAXTree, WalksTheRootThatFitsTheTarget) {
  const auto text = [](const char* literal) { return platform::AttributeValue(std::string(literal)); };
  const std::vector<UIElementRef> windows = {titled("first"), titled("second")};
  fake::FakeDesktop desktop{
      .applicationElements = {
          {1, element({{"AXTitle", text("app 1")},
                       {"AXMainWindow", titled("main")},
                       {"AXWindows", windows},
                       {"AXFocusedUIElement", titled("focus 1")}})},
          {2, element({{"AXTitle", text("app 2")}, {"AXWindows", windows}, {"AXFocusedUIElement", titled("focus 2")}})},
          {3,
           element(
               {{"AXTitle", text("app 3")}, {"AXMainWindow", text("?")}, {"AXWindows", std::vector<UIElementRef>{}}})},
      }};
  const auto platform = fake::makePlatform(desktop);
  struct Case {
    std::string reason;
    Target target;
    int targetPid, frontmostPid;  ///< 0: none
    std::string rootTitle;        ///< empty: no walk
  };
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
    desktop.frontmost = frontmostPid != 0 ? app(frontmostPid) : nullptr;
    desktop.calls = {};
    const auto targetApp = targetPid != 0 ? std::optional(ResolvedTargetApp{app(targetPid)}) : std::nullopt;
    for (const bool isTrusted : {true, false}) {
      desktop.isTrusted = isTrusted;
      const auto summary = captureAXTree(target, targetApp, {}, *platform.accessibility, *platform.workspace);
      const bool walks = isTrusted && !rootTitle.empty();
      ASSERT_EQ(summary.tree.has_value(), walks) << reason;
      EXPECT_EQ(summary.nodeCount, walks ? 1 : 0) << reason;
      const auto title = walks ? std::string(summary.tree->at("title").as_string()) : "";
      EXPECT_EQ(title, walks ? rootTitle : "") << reason;
    }
  }
}

TEST(CaptureAXTree, DescribesAnApplicationThatHasQuitAsOneEmptyNode) {
  fake::FakeDesktop desktop;
  const auto platform = fake::makePlatform(desktop);
  const auto summary =
      captureAXTree(Target::app, ResolvedTargetApp{app(9)}, {}, *platform.accessibility, *platform.workspace);
  EXPECT_EQ(summary.tree, ResponseDictionary());
  EXPECT_EQ(summary.nodeCount, 1);
  EXPECT_EQ(desktop.calls.prefetch, 1);
}

}  // namespace
}  // namespace tavik
