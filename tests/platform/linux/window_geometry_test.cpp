#include <limits>
#include <optional>
#include <vector>

#include <gtest/gtest.h>

#include "platform/linux/display_region.h"
#include "platform/linux/offscreen_window.h"
#include "platform/linux/pixel_rect.h"
#include "platform/linux/window_traits.h"

namespace tavik::platform::x11 {
namespace {

/// Every atom has its place in the enumeration, counted from 1, as its number.
AtomTable someAtoms() {
  AtomTable atoms{};
  for (std::size_t i = 0; i < atoms.size(); ++i) atoms[i] = static_cast<xcb_atom_t>(i + 1);
  return atoms;
}

std::uint32_t number(Atom atom) { return static_cast<std::uint32_t>(atom) + 1; }

TEST(WindowHints, TellHowAWindowIsShown) {
  struct Row {
    const char* reason;
    WindowHints hints;
    bool isOnScreen, isMinimized, isOnOtherWorkspace;
  };
  const std::vector hidden{number(Atom::stateHidden)};
  const std::vector shaded{number(Atom::stateShaded)};
  constexpr std::uint32_t iconic = 3, current = 1, other = 0, all = 0xFFFFFFFF;
  const std::vector<Row> rows{
      {"ordinary", {.isViewable = true, .workspace = current}, true, false, false},
      {"minimized", {.states = hidden, .icccmState = iconic, .workspace = current}, false, true, false},
      {"minimized, not marked as hidden", {.icccmState = iconic, .workspace = current}, false, true, false},
      {"minimized on all workspaces", {.states = hidden, .workspace = all}, false, true, false},
      {"on another workspace", {.icccmState = iconic, .workspace = other}, false, false, true},
      {"minimized on another workspace", {.states = hidden, .workspace = other}, false, true, true},
      {"another monitor shows another workspace", {.isViewable = true, .workspace = other}, true, false, false},
      {"shaded: only the title bar is left",
       {.isViewable = true, .states = shaded, .icccmState = iconic},
       false,
       false,
       false},
  };
  for (const auto& [reason, hints, isOnScreen, isMinimized, isOnOtherWorkspace] : rows) {
    ManagedWindow window;
    applyHints(window, hints, someAtoms(), current);
    EXPECT_EQ(window.isOnScreen, isOnScreen) << reason;
    EXPECT_EQ(window.isMinimized, isMinimized) << reason;
    EXPECT_EQ(window.isOnOtherWorkspace, isOnOtherWorkspace) << reason;
  }
}

TEST(WindowHints, TellLayerAndKind) {
  struct Row {
    const char* reason;
    std::vector<std::uint32_t> types, states;
    int sign;
    bool isRegular;
  };
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
    ManagedWindow window;
    applyHints(window, {.isViewable = true, .states = states, .types = types}, someAtoms(), std::nullopt);
    EXPECT_EQ((window.layer > 0) - (window.layer < 0), sign) << reason;
    EXPECT_EQ(window.isRegular, isRegular) << reason;
  }
  ManagedWindow window;
  applyHints(window, {.states = {XCB_ATOM_NONE}, .types = {XCB_ATOM_NONE}}, AtomTable{}, std::nullopt);
  EXPECT_TRUE(window.isRegular && window.layer == 0) << "a server that has never heard of EWMH";
}

TEST(VisibleRect, LeavesOutOnlyMarginsThatNobodySees) {
  struct Row {
    const char* reason;
    PixelRect client, frame;
    std::vector<std::uint32_t> extents;
    PixelRect visible;
  };
  const PixelRect client{101, 120, 300, 200}, decorated{100, 100, 302, 221};
  const std::vector<Row> rows{
      {"decorations belong to the window", client, decorated, {}, decorated},
      {"a shadow does not", client, client, {10, 12, 14, 16}, {111, 134, 278, 170}},
      {"under decorations there is no shadow", client, decorated, {10, 12, 14, 16}, decorated},
      {"margins beyond all measure", client, client, {0xFFFFFFFF, 0x80000000, 7, 7}, client},
      {"margins that leave nothing", client, client, {150, 150, 0, 0}, client},
      {"half of the numbers", client, client, {10, 12}, client},
  };
  for (const auto& [reason, clientRect, frameRect, extents, visible] : rows) {
    ManagedWindow window{.clientRect = clientRect, .frameRect = frameRect};
    applyHints(window, {.extents = extents}, someAtoms(), std::nullopt);
    EXPECT_EQ(visibleRect(window), visible) << reason;
  }
}

TEST(DisplayRegion, IsCutToTheDisplay) {
  struct Row {
    const char* reason;
    Rect sourceRect;
    std::optional<DisplayRegion> region;
  };
  constexpr auto nan = std::numeric_limits<double>::quiet_NaN();
  const PixelRect display{1000, 50, 640, 480};
  const std::vector<Row> rows{
      {"inside", {10, 20, 300, 200}, DisplayRegion{{300, 200}, {1010, 70, 300, 200}, 0, 0}},
      {"truncates", {10.9, 20.9, 300.9, 200.9}, DisplayRegion{{300, 200}, {1010, 70, 300, 200}, 0, 0}},
      {"beyond the right and the bottom", {600, 400, 100, 100}, DisplayRegion{{100, 100}, {1600, 450, 40, 80}, 0, 0}},
      {"before the left and the top", {-30, -0.9, 100, 100}, DisplayRegion{{100, 100}, {1000, 50, 70, 100}, 30, 0}},
      {"all around", {-5, -5, 32767, 500}, DisplayRegion{{32767, 500}, {1000, 50, 640, 480}, 5, 5}},
      {"empty", {0, 0, 10, 0.9}, std::nullopt},
      {"negative", {100, 100, -50, 50}, std::nullopt},
      {"beside the display", {640, 0, 10, 10}, std::nullopt},
      {"too long", {0, 0, 32768, 1}, std::nullopt},
      {"numbers that no integer holds", {-9e18, 0, 9e18, 9e18}, std::nullopt},
      {"no numbers", {nan, 0, 10, nan}, std::nullopt},
  };
  for (const auto& [reason, sourceRect, expected] : rows) {
    const auto region = regionOfDisplay(sourceRect, display);
    ASSERT_EQ(region.has_value(), expected.has_value()) << reason;
    if (!region) continue;
    EXPECT_EQ(region->size, expected->size) << reason;
    EXPECT_EQ(region->source, expected->source) << reason;
    EXPECT_TRUE(region->x == expected->x && region->y == expected->y) << reason;
  }
}

TEST(PixelRect, SubtractionLeavesEveryOtherPixelOnce) {
  const PixelRect area{0, 0, 6, 5};
  const std::vector<PixelRect> holes{{2, 1, 2, 2},   {-3, -3, 5, 5}, {4, 0, 9, 9}, {0, 2, 6, 1},
                                     {-1, -1, 9, 9}, {6, 0, 3, 3},   {2, 2, 0, 4}};
  for (const auto& hole : holes) {
    const auto rest = subtract({area}, hole);
    for (std::int32_t y = 0; y < area.height; ++y) {
      for (std::int32_t x = 0; x < area.width; ++x) {
        const PixelRect pixel{x, y, 1, 1};
        EXPECT_EQ(intersection(rest, {pixel}).size(), isEmpty(intersection(hole, pixel)) ? 1U : 0U);
      }
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
