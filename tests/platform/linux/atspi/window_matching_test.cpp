#include "platform/linux/atspi/window_matching.h"

#include <climits>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

namespace tavik::platform::atspi {
namespace {

/// A window with decorations around the client, of which the contents are all when nothing else is said.
DesktopWindow managed(const std::string& title, const Rect& client, const std::optional<Rect>& contents = {}) {
  const Rect frame{client.x - 1, client.y - 20, client.width + 2, client.height + 25};
  return {.title = title, .frame = frame, .client = client, .contents = contents.value_or(client)};
}

TEST(FrameOfExtents, IsNothingForElementsThatAreNowhere) {
  using Case = std::tuple<std::string_view, Extents, std::optional<Rect>>;
  for (const auto& [reason, extents, expected] : {
           Case{"moved by the offset", {10, 20, 30, 40}, Rect{110, 15, 30, 40}},
           Case{"left of the first monitor", {-500, 0, 1, 1}, Rect{-400, -5, 1, 1}},
           Case{"half nowhere", {5, INT_MIN, 10, 10}, std::nullopt},
           Case{"the other half", {INT_MIN, 5, 10, 10}, std::nullopt},
           Case{"hidden in Qt", {0, 0, 0, 0}, std::nullopt},
           Case{"negative", {3, 4, -1, 9}, std::nullopt},
       }) {
    EXPECT_EQ(frameOfExtents(extents, {.x = 100, .y = -5}), expected) << reason;
  }
}

TEST(MainWindow, IsTheActiveOneElseTheBestFitElseTheFirst) {
  const auto topmost = managed("Letter", {100, 100, 600, 400});
  const WindowClaim other{"Other", Extents{0, 0, 50, 50}}, sameTitle{"Letter", Extents{0, 0, 50, 50}};
  const WindowClaim sameSize{"", Extents{99, 80, 602, 425}}, both{"Letter", Extents{100, 100, 600, 400}};
  const WindowClaim active{.title = "Other", .isActive = true};
  using Case = std::tuple<std::string_view, std::vector<WindowClaim>, std::optional<std::size_t>>;
  for (const auto& [reason, windows, expected] : {
           Case{"activity beats likeness", {both, active}, 1},
           Case{"the first of two active ones", {other, active, active}, 1},
           Case{"title and size beat the title alone", {sameTitle, both}, 1},
           Case{"the title beats the size: sizes lag behind", {sameSize, sameTitle}, 1},
           Case{"the size with decorations is better than nothing", {other, sameSize}, 1},
           Case{"the first when none fits", {other, other}, 0},
           Case{"an application without windows", {}, std::nullopt},
       }) {
    EXPECT_EQ(mainWindow(windows, &topmost), expected) << reason;
  }
  EXPECT_EQ(mainWindow(std::vector{other, both}, nullptr), 0U) << "no window on the X server";
}

TEST(OffsetOfWindow, LeadsFromTheClaimToTheVisibleWindow) {
  const Extents claimed{0, 0, 300, 200};
  const Rect client{40, 60, 352, 252}, contents{66, 83, 300, 200};
  using Case = std::tuple<std::string_view, Extents, DesktopWindow, std::optional<Point>>;
  for (const auto& [reason, extents, window, expected] : {
           Case{"same size", claimed, managed("W", {40, 60, 300, 200}), Point{40, 60}},
           Case{"a shadow of known width", claimed, managed("W", client, contents), Point{66, 83}},
           Case{"a border on all sides", claimed, managed("W", {40, 60, 310, 210}), Point{45, 65}},
           Case{"two to a point", claimed, managed("W", {40, 60, 652, 452}, Rect{66, 83, 600, 400}), Point{33, 41}},
           Case{"right already", {40, 60, 300, 200}, managed("W", {40, 60, 300, 200}), Point{0, 0}},
           Case{"partly off the screen", claimed, managed("W", {-40, -60, 300, 200}), Point{-40, -60}},
           Case{"another size: the window is being resized", claimed, managed("W", {0, 0, 500, 500}), std::nullopt},
           Case{"nowhere", {INT_MIN, INT_MIN, 300, 200}, managed("W", {0, 0, 300, 200}), std::nullopt},
       }) {
    EXPECT_EQ(offsetOfWindow({.title = "W", .extents = extents}, std::vector{window}), expected) << reason;
  }
}

TEST(OffsetOfWindow, ChoosesAmongWindowsOfOneSizeByTitleThenByActivity) {
  auto front = managed("B", {1, 1, 300, 200});
  auto behind = managed("A", {2, 2, 300, 200});
  const WindowClaim claim{.title = "A", .extents = Extents{0, 0, 300, 200}, .isActive = true};
  EXPECT_EQ(offsetOfWindow(claim, std::vector{front, behind}), (Point{2, 2}));
  front.title = behind.title;
  EXPECT_EQ(offsetOfWindow(claim, std::vector{front, behind}), (Point{1, 1})) << "alike: the front one";
  behind.isActive = true;
  EXPECT_EQ(offsetOfWindow(claim, std::vector{front, behind}), (Point{2, 2})) << "the active one";
  EXPECT_EQ(offsetOfWindow(claim, {}), std::nullopt);
}

}  // namespace
}  // namespace tavik::platform::atspi
