#include "platform/linux/atspi/application.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/linux/atspi/fake_peer.h"

namespace tavik::platform::atspi {
namespace {

using Strings = std::vector<std::string>;

constexpr std::uint32_t kIsActive = 1U << 1U, kIsFocused = 1U << 12U;

/// An application with two windows, the second of which is active and holds "a", two levels down, and then "b".
FakeObjects twoWindows(const std::string& toolkit, const std::string& version) {
  FakeObject second{.states = kIsActive, .interfaces = {"Component"}, .name = "W", .extents = {0, 0, 300, 200}};
  second.children = {"/box", "/b"};
  return {
      {"/root", {.role = 75, .toolkitName = toolkit, .toolkitVersion = version, .children = {"/first", "/second"}}},
      {"/first", {.interfaces = {"Component"}, .name = "First", .extents = {0, 0, 90, 90}}},
      {"/second", second},
      {"/box", {.children = {"", "/a"}}},
      {"/a", {.name = "a"}},
      {"/b", {.name = "b"}},
  };
}

/// Beside a window "W" on the X server.
Application applicationOn(FakePeer& peer) {
  constexpr Rect kPlace{500, 400, 310, 210};
  const DesktopWindow window{.title = "W", .client = kPlace, .contents = kPlace};
  return {[root = peer.takeRoot()] { return root; }, [window] { return std::vector{window}; }};
}

TEST(Application, ShowsWindowCoordinatesOfGTK4OnTheScreen) {
  const struct Case {
    std::string reason, toolkit, version;
    Point expected;
  } cases[] = {
      {"GTK 4: half of the border, then the window's corner", "GTK", "4.8.3", {505, 405}},
      {"GTK 3 knows the screen", "gtk", "3.24.38", {0, 0}},
      {"so does Qt of any version", "Qt", "5.15.8", {0, 0}},
      {"and whoever says nothing", "", "", {0, 0}},
  };
  for (const auto& [reason, toolkit, version, expected] : cases) {
    const bool knowsScreen = expected == Point{};
    auto objects = twoWindows(toolkit, version);
    for (auto& [path, object] : objects) object.knowsScreen = knowsScreen;
    FakePeer peer(objects);
    auto application = applicationOn(peer);
    const auto windows = std::get<std::vector<UIElementRef>>(*application.copyAttributeValue("AXWindows"));
    ASSERT_EQ(windows.size(), 2U);
    EXPECT_EQ(std::get<UIElementRef>(*application.copyAttributeValue("AXMainWindow")), windows[1]) << reason;
    EXPECT_EQ(std::get<Point>(*windows[1]->copyAttributeValue("AXPosition")), expected) << reason;
    EXPECT_EQ(windows[0]->copyAttributeValue("AXPosition").has_value(), knowsScreen)
        << "no frame is better than a wrong one: the X server has no window like the first";
  }
}

TEST(Application, FindsTheFocusedElement) {
  const struct Case {
    std::string reason;
    Strings focused, interfacesOfSecond, matches;
    std::string title;
  } cases[] = {
      {"the first of several in pre-order, not the shallowest", {"/a", "/b"}, {}, {}, "a"},
      {"the active window goes first", {"/first", "/b"}, {}, {}, "b"},
      {"in another window", {"/first"}, {}, {}, "First"},
      {"a collection answers without a search", {"/a"}, {"Collection"}, {"/b"}, "b"},
      {"also that there is none", {"/a"}, {"Collection"}, {}, "nobody"},
  };
  for (const auto& [reason, focused, interfacesOfSecond, matches, title] : cases) {
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

}  // namespace
}  // namespace tavik::platform::atspi
