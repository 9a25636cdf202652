#include "platform/linux/atspi/application.h"

#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "platform/linux/atspi/fake_peer.h"

namespace tavik::platform::atspi {
namespace {

using Strings = std::vector<std::string>;
using Windows = std::vector<DesktopWindow>;

constexpr std::uint32_t kIsActive = 1U << 1U;
constexpr std::uint32_t kIsFocused = 1U << 12U;

/// An application with two windows, the second of which is active and holds "a", two levels down, and then "b".
FakeObjects twoWindows(const std::string& toolkit, const std::string& version) {
  const Strings component{"Component"};
  const Strings children{"/box", "/b"};
  return {
      {"/root", {.role = 75, .toolkitName = toolkit, .toolkitVersion = version, .children = {"/first", "/second"}}},
      {"/first", {.interfaces = component, .name = "First", .extents = {0, 0, 90, 90}}},
      {"/second",
       {.states = kIsActive, .interfaces = component, .name = "W", .extents = {0, 0, 300, 200}, .children = children}},
      {"/box", {.children = {"", "/a"}}},
      {"/a", {.name = "a"}},
      {"/b", {.name = "b"}},
  };
}

Application applicationOn(FakePeer& peer, const Windows& windows = {}) {
  return {[root = peer.takeRoot()] { return root; }, [windows] { return windows; }};
}

TEST(Application, ShowsWindowCoordinatesOfGTK4OnTheScreen) {
  using Case = std::tuple<std::string_view, std::string, std::string, Point>;
  for (const auto& [reason, toolkit, version, expected] : {
           Case{"GTK 4: half of the border, then the window's corner", "GTK", "4.8.3", {505, 405}},
           Case{"GTK 3 knows the screen", "gtk", "3.24.38", {0, 0}},
           Case{"so does Qt of any version", "Qt", "5.15.8", {0, 0}},
           Case{"and whoever says nothing", "", "", {0, 0}},
       }) {
    const bool knowsScreen = expected == Point{};
    auto objects = twoWindows(toolkit, version);
    for (auto& [path, object] : objects) object.knowsScreen = knowsScreen;
    FakePeer peer(objects);
    auto application =
        applicationOn(peer, {{.title = "W", .client = {500, 400, 310, 210}, .contents = {500, 400, 310, 210}}});
    const auto windows = std::get<std::vector<UIElementRef>>(*application.copyAttributeValue("AXWindows"));
    ASSERT_EQ(windows.size(), 2U);
    EXPECT_EQ(std::get<UIElementRef>(*application.copyAttributeValue("AXMainWindow")), windows[1]) << reason;
    EXPECT_EQ(std::get<Point>(*windows[1]->copyAttributeValue("AXPosition")), expected) << reason;
    EXPECT_EQ(windows[0]->copyAttributeValue("AXPosition").has_value(), knowsScreen)
        << "no frame is better than a wrong one: the X server has no window like the first";
  }
}

TEST(Application, FindsTheFocusedElement) {
  using Case = std::tuple<std::string_view, Strings, Strings, Strings, std::string_view>;
  for (const auto& [reason, focused, interfacesOfSecond, matches, title] : {
           Case{"the first of several in pre-order, not the shallowest", {"/a", "/b"}, {}, {}, "a"},
           Case{"the active window goes first", {"/first", "/b"}, {}, {}, "b"},
           Case{"in another window", {"/first"}, {}, {}, "First"},
           Case{"a collection answers without a search", {"/a"}, {"Collection"}, {"/b"}, "b"},
           Case{"also that there is none", {"/a"}, {"Collection"}, {}, "nobody"},
       }) {
    auto objects = twoWindows("Qt", "5.15.8");
    for (const auto& path : focused) objects[path].states |= kIsFocused;
    objects["/second"].interfaces = interfacesOfSecond;
    objects["/second"].matches = matches;
    FakePeer peer(objects);
    const auto element = applicationOn(peer).copyAttributeValue("AXFocusedUIElement");
    const auto focusedTitle = element ? std::get<UIElementRef>(*element)->copyAttributeValue("AXTitle") : "nobody";
    EXPECT_EQ(std::get<std::string>(*focusedTitle), title) << reason;
  }
}

TEST(Application, OfAProcessWithoutOneFindsNothing) {
  Application application([] { return nullptr; }, [] { return Windows{}; });
  for (const auto* attribute : {"AXRole", "AXMainWindow", "AXWindows", "AXFocusedUIElement", "AXChildren"}) {
    EXPECT_FALSE(application.copyAttributeValue(attribute).has_value()) << attribute;
  }
}

}  // namespace
}  // namespace tavik::platform::atspi
