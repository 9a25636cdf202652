#include "platform/linux/accessibility_application.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "platform/linux/accessibility_fake_peer.h"

namespace tavik::platform::atspi {
namespace {

constexpr std::uint32_t kIsActive = 1U << 1U;
constexpr std::uint32_t kIsFocused = 1U << 12U;

/// An application with two windows, the second of which is active and holds "a", two levels down, and then "b".
std::map<std::string, FakeObject> twoWindows(const std::string& toolkit, const std::string& version) {
  const std::vector<std::string> component{"Component"};
  return {
      {"/root", {.role = 75, .toolkitName = toolkit, .toolkitVersion = version, .children = {"/first", "/second"}}},
      {"/first", {.interfaces = component, .name = "First", .extents = {0, 0, 90, 90}}},
      {"/second",
       {.states = kIsActive,
        .interfaces = component,
        .name = "W",
        .extents = {0, 0, 300, 200},
        .children = {"/box", "/b"}}},
      {"/box", {.children = {"", "/a"}}},
      {"/a", {.interfaces = component, .name = "a", .extents = {10, 20, 30, 40}}},
      {"/b", {.name = "b"}},
  };
}

/// The application on the peer; the X server has one window of its second window's size.
Application applicationOn(FakePeer& peer) {
  const auto session = std::make_shared<Session>(peer.takeConnection());
  auto root = std::make_shared<const Element>(session, Reference{.busName = ":1.1", .path = "/root"}, Point{});
  return {[root] { return root; },
          [] {
            return std::vector{x11::ManagedWindow{.title = "W", .clientRect = {500, 400, 310, 210}, .isActive = true}};
          }};
}

UIElementRef elementOf(const UIElement& element, std::string_view attribute) {
  const auto value = element.copyAttributeValue(attribute);
  return value ? std::get<UIElementRef>(*value) : nullptr;
}

std::optional<std::string> titleOf(const UIElementRef& element) {
  const auto title = element ? element->copyAttributeValue("AXTitle") : std::nullopt;
  return title ? std::optional(std::get<std::string>(*title)) : std::nullopt;
}

TEST(Application, ShowsWindowCoordinatesOfGTK4OnTheScreen) {
  struct Case {
    std::string_view reason;
    std::string toolkit;
    std::string version;
    Point expected;
  };
  for (const auto& row : {
           Case{"GTK 4: half of the border, then the window's corner", "GTK", "4.8.3", {505, 405}},
           Case{"GTK 3 knows the screen", "gtk", "3.24.38", {0, 0}},
           Case{"so does Qt of any version", "Qt", "5.15.8", {0, 0}},
           Case{"and whoever says nothing", "", "", {0, 0}},
       }) {
    auto objects = twoWindows(row.toolkit, row.version);
    for (auto& [path, object] : objects) object.knowsScreen = row.expected == Point{};
    FakePeer peer(objects);
    const Application application = applicationOn(peer);
    const auto position = elementOf(application, "AXMainWindow")->copyAttributeValue("AXPosition");
    EXPECT_EQ(std::get<Point>(*position), row.expected) << row.reason;
    const auto windows = std::get<std::vector<UIElementRef>>(*application.copyAttributeValue("AXWindows"));
    EXPECT_EQ(windows.size(), 2U);
    EXPECT_EQ(windows[0]->copyAttributeValue("AXPosition").has_value(), row.expected == Point{})
        << "no frame is better than a wrong one: the X server has no window like the first";
  }
}

TEST(Application, FindsTheFocusedElement) {
  struct Case {
    std::string_view reason;
    std::vector<std::string> focused;
    std::vector<std::string> interfaces;  ///< of the active window
    std::vector<std::string> matches;
    std::optional<std::string> title;
  };
  for (const auto& row : {
           Case{"the first of several in pre-order, not the shallowest", {"/a", "/b"}, {}, {}, "a"},
           Case{"the active window goes first", {"/first", "/b"}, {}, {}, "b"},
           Case{"in another window", {"/first"}, {}, {}, "First"},
           Case{"a collection answers without a search", {"/a"}, {"Collection"}, {"/b"}, "b"},
           Case{"nobody", {}, {"Collection"}, {}, std::nullopt},
       }) {
    auto objects = twoWindows("Qt", "5.15.8");
    for (const auto& path : row.focused) objects[path].states |= kIsFocused;
    objects["/second"].interfaces = row.interfaces;
    objects["/second"].matches = row.matches;
    FakePeer peer(objects);
    const Application application = applicationOn(peer);
    EXPECT_EQ(titleOf(elementOf(application, "AXFocusedUIElement")), row.title) << row.reason;
  }
}

TEST(Application, OfAProcessWithoutOneFindsNothing) {
  const Application application([] { return nullptr; }, [] { return std::vector<x11::ManagedWindow>{}; });
  for (const auto* attribute : {"AXRole", "AXMainWindow", "AXWindows", "AXFocusedUIElement", "AXChildren"})
    EXPECT_FALSE(application.copyAttributeValue(attribute).has_value()) << attribute;
}

}  // namespace
}  // namespace tavik::platform::atspi
