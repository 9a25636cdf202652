#include <limits>
#include <numeric>
#include <optional>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "platform/imaging/pixel_rect.h"
#include "platform/linux/x11/capture/display_region.h"
#include "platform/linux/x11/capture/offscreen_window.h"
#include "platform/linux/x11/windows/window_traits.h"

namespace tavik::platform::x11 {
namespace {

using imaging::PixelRect;

/// Every atom has its place in the enumeration, counted from 1, as its number.
AtomTable someAtoms() {
  AtomTable atoms{};
  std::iota(atoms.begin(), atoms.end(), xcb_atom_t{1});
  return atoms;
}

std::uint32_t number(Atom atom) { return static_cast<std::uint32_t>(atom) + 1; }

ManagedWindow hinted(const WindowHints& hints, std::optional<std::uint32_t> currentWorkspace = {},
                     const AtomTable& atoms = someAtoms()) {
  ManagedWindow window;
  applyHints(window, hints, atoms, currentWorkspace);
  return window;
}

TEST(WindowHints, TellHowAWindowIsShown) {
  struct Row {
    const char* reason;
    WindowHints hints;
    bool isOnScreen, isOnOtherWorkspace;
  };
  const std::vector shaded{number(Atom::stateShaded)};
  constexpr std::uint32_t kCurrent = 1, kOther = 0, kAll = 0xFFFFFFFF;
  for (const auto& [reason, hints, isOnScreen, isOnOtherWorkspace] : {
           Row{"ordinary", {.isViewable = true, .workspace = kCurrent}, true, false},
           Row{"minimized", {.workspace = kCurrent}, false, false},
           Row{"minimized on all workspaces", {.workspace = kAll}, false, false},
           Row{"on another workspace", {.workspace = kOther}, false, true},
           Row{"another monitor shows another workspace", {.isViewable = true, .workspace = kOther}, true, false},
           Row{"shaded", {.isViewable = true, .states = shaded}, false, false},
       }) {
    const auto window = hinted(hints, kCurrent);
    EXPECT_EQ(window.isOnScreen, isOnScreen) << reason;
    EXPECT_EQ(window.isOnOtherWorkspace, isOnOtherWorkspace) << reason;
  }
}

TEST(WindowHints, TellLayerAndKind) {
  using Row = std::tuple<const char*, std::vector<std::uint32_t>, std::vector<std::uint32_t>, int, bool>;
  const std::vector<Row> rows{
      {"ordinary", {}, {}, 0, true},
      {"unknown atoms mean nothing", {9999, XCB_ATOM_NONE}, {9999}, 0, true},
      {"wallpaper", {number(Atom::typeDesktop)}, {number(Atom::stateAbove)}, -1, false},
      {"panel", {number(Atom::typeDock)}, {}, 1, false},
      {"panel of a toolkit that names its own type first", {9999, number(Atom::typeDock)}, {}, 1, false},
      {"kept above", {}, {9999, number(Atom::stateAbove)}, 1, true},
      {"kept below", {}, {number(Atom::stateBelow)}, -1, true},
      {"not in the task bar", {}, {number(Atom::stateSkipTaskbar)}, 0, false},
      {"tool palette", {number(Atom::typeUtility)}, {}, 0, false},
  };
  for (const auto& [reason, types, states, sign, isRegular] : rows) {
    const auto window = hinted({.isViewable = true, .states = states, .types = types});
    EXPECT_EQ((window.layer > 0) - (window.layer < 0), sign) << reason;
    EXPECT_EQ(window.isRegular, isRegular) << reason;
  }
  const auto window = hinted({.states = {XCB_ATOM_NONE}, .types = {XCB_ATOM_NONE}}, std::nullopt, AtomTable{});
  EXPECT_TRUE(window.isRegular && window.layer == 0) << "a server that has never heard of EWMH";
}

TEST(VisibleRect, LeavesOutOnlyMarginsThatNobodySees) {
  using Row = std::tuple<const char*, PixelRect, std::vector<std::uint32_t>, PixelRect>;
  const PixelRect client{101, 120, 300, 200}, decorated{100, 100, 302, 221};
  const std::vector<Row> rows{
      {"decorations belong to the window", decorated, {}, decorated},
      {"a shadow does not", client, {10, 12, 14, 16}, {111, 134, 278, 170}},
      {"under decorations there is no shadow", decorated, {10, 12, 14, 16}, decorated},
      {"margins beyond all measure", client, {0xFFFFFFFF, 7, 7, 7}, client},
      {"margins that leave nothing", client, {150, 150, 0, 0}, client},
      {"half of the numbers", client, {10, 12}, client},
  };
  for (const auto& [reason, frame, extents, visible] : rows) {
    auto window = hinted({.extents = extents});
    window.clientRect = client, window.frameRect = frame;
    EXPECT_EQ(visibleRect(window), visible) << reason;
  }
}

TEST(DisplayRegion, IsCutToTheDisplay) {
  using Row = std::tuple<const char*, Rect, DisplayRegion>;  // the region: empty for none
  constexpr auto kNan = std::numeric_limits<double>::quiet_NaN();
  const PixelRect display{1000, 50, 640, 480};
  const std::vector<Row> rows{
      {"inside", {10, 20, 300, 200}, {{300, 200}, {1010, 70, 300, 200}, 0, 0}},
      {"truncates", {10.9, 20.9, 300.9, 200.9}, {{300, 200}, {1010, 70, 300, 200}, 0, 0}},
      {"beyond the right and the bottom", {600, 400, 100, 100}, {{100, 100}, {1600, 450, 40, 80}, 0, 0}},
      {"before the left and the top", {-30, -0.9, 100, 100}, {{100, 100}, {1000, 50, 70, 100}, 30, 0}},
      {"all around", {-5, -5, 32767, 500}, {{32767, 500}, {1000, 50, 640, 480}, 5, 5}},
      {"empty", {0, 0, 10, 0.9}, {}},
      {"negative", {100, 100, -50, 50}, {}},
      {"beside the display", {640, 0, 10, 10}, {}},
      {"too long", {0, 0, 32768, 1}, {}},
      {"numbers that no integer holds", {-9e18, 0, 9e18, 9e18}, {}},
      {"no numbers", {kNan, 0, 10, kNan}, {}},
  };
  for (const auto& [reason, sourceRect, expected] : rows) {
    const auto region = regionOfDisplay(sourceRect, display).value_or(DisplayRegion{});
    EXPECT_EQ(region.size, expected.size) << reason;
    EXPECT_EQ(region.source, expected.source) << reason;
    EXPECT_TRUE(region.x == expected.x && region.y == expected.y) << reason;
  }
}

TEST(PixelRect, SubtractionLeavesEveryOtherPixelOnce) {
  const PixelRect area{0, 0, 6, 5};
  const std::vector<PixelRect> holes{{2, 1, 2, 2},   {-3, -3, 5, 5}, {4, 0, 9, 9}, {0, 2, 6, 1},
                                     {-1, -1, 9, 9}, {6, 0, 3, 3},   {2, 2, 0, 4}};
  for (const auto& hole : holes) {
    const auto rest = subtract({area}, hole);
    for (std::int32_t i = 0; i < area.width * area.height; ++i) {
      const PixelRect pixel{i % area.width, i / area.width, 1, 1};
      EXPECT_EQ(intersection(rest, {pixel}).size(), isEmpty(intersection(hole, pixel)) ? 1U : 0U);
    }
  }
}

TEST(RepaintProgress, IsCompleteWhenAllThatWasHiddenHasBeenDrawn) {
  const PixelRect client{0, 20, 100, 80};
  RepaintProgress progress({{50, 0, 50, 100}, {0, 90, 100, 10}}, client);
  const auto patience = progress.quietPeriod();
  progress.noteDrawing({0, 0, 100, 60}, true);
  EXPECT_FALSE(progress.isComplete()) << "the lower part is missing";
  progress.noteDrawing({0, 60, 100, 40}, true);
  EXPECT_TRUE(progress.isComplete());
  EXPECT_EQ(progress.quietPeriod(), patience) << "the background alone may not be all";
  progress.noteDrawing({0, 20, 50, 50}, false);
  EXPECT_EQ(progress.quietPeriod(), patience) << "drawing elsewhere says nothing about it";
  progress.noteDrawing({60, 30, 1, 1}, false);
  EXPECT_LT(progress.quietPeriod(), patience) << "the application has begun";
}

}  // namespace
}  // namespace tavik::platform::x11
