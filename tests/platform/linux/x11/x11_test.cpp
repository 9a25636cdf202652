#include <cstdint>
#include <cstdio>
#include <fstream>
#include <limits>
#include <numeric>
#include <optional>
#include <string>
#include <sys/utsname.h>
#include <vector>

#include <gtest/gtest.h>

#include "platform/imaging/display_region.h"
#include "platform/imaging/pixel_rect.h"
#include "platform/linux/x11/capture/offscreen_window.h"
#include "platform/linux/x11/scale_factor.h"
#include "platform/linux/x11/server/x_clients.h"
#include "platform/linux/x11/windows/outer_rect.h"
#include "platform/linux/x11/windows/window_traits.h"
#include "platform/linux/x11/windows/window_tree.h"
#include "platform/linux/x11/xsettings.h"
#include "table.h"

namespace tavik::platform::x11 {
namespace {

using imaging::PixelRect;
using namespace std::string_literals;

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
  const std::vector shaded{number(Atom::stateShaded)}, hidden{number(Atom::stateHidden)};
  constexpr std::uint32_t kCurrent = 1, kOther = 0, kAll = 0xFFFFFFFF;
  for (const auto& [reason, hints, isOnScreen, isOnOtherWorkspace] : Table<WindowHints, bool, bool>{
           {"ordinary", {.isViewable = true, .workspace = kCurrent}, true, false},
           {"minimized", {.workspace = kCurrent}, false, false},
           {"minimized on all workspaces", {.workspace = kAll}, false, false},
           {"on another workspace", {.workspace = kOther}, false, true},
           {"another monitor shows another workspace", {.isViewable = true, .workspace = kOther}, true, false},
           {"shaded", {.isViewable = true, .states = shaded}, false, false},
           {"rolled up without a word for it", {.isViewable = true, .isIconic = true}, true, false},
           {"minimized, kept viewable", {.isViewable = true, .states = hidden, .isIconic = true}, false, false},
           {"a tab behind another one", {.isViewable = true, .states = hidden}, true, false},
           {"elsewhere, kept viewable", {.isViewable = true, .workspace = kOther, .isIconic = true}, true, true},
           {"elsewhere, out of reach", {.isViewable = true, .workspace = kOther, .takesInput = false}, true, true},
           {"here, never clicked", {.isViewable = true, .workspace = kCurrent, .takesInput = false}, true, false},
       }) {
    const auto window = hinted(hints, kCurrent);
    EXPECT_TRUE(window.isOnScreen == isOnScreen && window.isOnOtherWorkspace == isOnOtherWorkspace) << reason;
  }
}

TEST(WindowHints, TellLayerAndKind) {
  const Table<std::vector<std::uint32_t>, std::vector<std::uint32_t>, int, bool> cases{
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
  for (const auto& [reason, types, states, sign, isRegular] : cases) {
    const auto window = hinted({.isViewable = true, .states = states, .types = types});
    EXPECT_TRUE((window.layer > 0) - (window.layer < 0) == sign && window.isRegular == isRegular) << reason;
  }
  const auto window = hinted({.states = {XCB_ATOM_NONE}, .types = {XCB_ATOM_NONE}}, std::nullopt, AtomTable{});
  EXPECT_TRUE(window.isRegular && window.layer == 0) << "a server that has never heard of EWMH";
}

TEST(OtherMachines, HaveAProcessOfTheirOwnForEachClient) {
  utsname system{};
  ASSERT_EQ(::uname(&system), 0);
  const std::string own = system.nodename, other = own + "-other";
  EXPECT_TRUE(isOfOtherMachine(other, 7, 42)) << "which reaches the server through process 42";
  EXPECT_TRUE(isOfOtherMachine(other, 42, 0)) << "and through no process of this machine";
  EXPECT_FALSE(isOfOtherMachine(other, 42, 42)) << "this machine has been renamed";
  EXPECT_FALSE(isOfOtherMachine(own, 7, 42)) << "in a sandbox of its own numbers";
  EXPECT_FALSE(isOfOtherMachine("", 7, 42)) << "it does not say";
  std::vector<ManagedWindow> windows{{.client = 0x200001, .processID = 42},
                                     {.client = 0x200002, .processID = 42, .isOfOtherMachine = true},
                                     {.client = 0x400001, .processID = 42, .isOfOtherMachine = true},
                                     {.client = 0x600001, .processID = 42}};
  separateOtherMachines(windows, 0x1FFFFF);
  const std::vector<std::int32_t> processes{-0x200000, -0x200000, -0x400000, 42}, relays{42, 42, 42, 0};
  for (std::size_t i = 0; i < windows.size(); ++i) {
    EXPECT_EQ(windows[i].processID, processes[i]) << i;
    EXPECT_EQ(windows[i].relayProcessID, relays[i]) << i;
  }
}

TEST(VisibleRect, LeavesOutOnlyMarginsThatNobodySees) {
  const PixelRect client{101, 120, 300, 200}, decorated{100, 100, 302, 221};
  for (const auto& [reason, frame, extents, visible] : Table<PixelRect, std::vector<std::uint32_t>, PixelRect>{
           {"decorations belong to the window", decorated, {}, decorated},
           {"a shadow does not", client, {10, 12, 14, 16}, {111, 134, 278, 170}},
           {"under decorations there is no shadow", decorated, {10, 12, 14, 16}, decorated},
           {"margins beyond all measure", client, {0xFFFFFFFF, 7, 7, 7}, client},
           {"margins that leave nothing", client, {150, 150, 0, 0}, client},
           {"half of the numbers", client, {10, 12}, client},
       }) {
    auto window = hinted({.gtkExtents = extents});
    window.clientRect = client, window.frameRect = frame;
    EXPECT_EQ(visibleRect(window), visible) << reason;
  }
}

TEST(VisibleRect, HasTheDecorationThatIsThereAndIsSeen) {
  const PixelRect client{110, 140, 300, 200}, frame{100, 100, 320, 250}, decorated{109, 103, 303, 240};
  using Extents = std::vector<std::uint32_t>;
  using enum DecorationPlace;
  for (const auto& [reason, decoration, shadow, place, visible] : Table<Extents, Extents, DecorationPlace, PixelRect>{
           {"borders to grab are not seen", {1, 2, 37, 3}, {}, inFrame, decorated},
           {"nor is what the frame does not have", {50, 50, 50, 50}, {}, inFrame, frame},
           {"undecorated in a frame to grab", {0, 0, 0, 0}, {7, 8, 9, 9}, inFrame, {117, 149, 285, 182}},
           {"half of the numbers", {1, 2}, {}, inFrame, frame},
           {"numbers beyond all measure", {0xFFFFFFFF, 2, 37, 3}, {}, inFrame, frame},
           {"on the screen", {1, 2, 37, 3}, {}, onScreen, decorated},
           {"covered there", {1, 2, 37, 3}, {}, hidden, client},
       }) {
    auto window = hinted({.gtkExtents = shadow, .decoration = decoration});
    window.clientRect = client, window.frameRect = frame, window.decorationPlace = place;
    EXPECT_EQ(visibleRect(window), visible) << reason;
  }
}

TEST(WindowTree, TakesNoMoreFromAReplyThanItHolds) {
  xcb_query_tree_reply_t tree{};
  tree.children_len = 1;
  EXPECT_TRUE(childrenOfReply(tree).empty());
  xcb_get_geometry_reply_t geometry{};
  geometry.border_width = geometry.width = geometry.height = 3;
  EXPECT_EQ(outerRect(geometry), (PixelRect{0, 0, 9, 9})) << "a border is on both sides";
}

TEST(DisplayRegion, IsCutToTheDisplay) {
  constexpr auto kNan = std::numeric_limits<double>::quiet_NaN();
  const PixelRect display{1000, 50, 640, 480};
  for (const auto& [reason, sourceRect, expected] : Table<Rect, imaging::DisplayRegion>{
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
       }) {
    const auto region = imaging::regionOfDisplay(sourceRect, display).value_or(imaging::DisplayRegion{});
    EXPECT_TRUE(region.size == expected.size && region.source == expected.source) << reason;
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

TEST(ScaleFactor, ComesFromTheResources) {
  const Table<std::string, double> cases{
      {"twice the resolution", "Xft.antialias: 1\nXft.dpi:\t192\n", 2},
      {"matches loosely, too", "*dpi: 144", 1.5},
      {"text of small screens is not shrunk", "Xft.dpi: 72", 1},
      {"no number", "Xft.dpi: large", 1},
      {"no finite number", "Xft.dpi: inf", 1},
      {"broken lines", "::::\n\\\n: \n!\nXft.dpi", 1},
  };
  for (const auto& [reason, resources, factor] : cases) EXPECT_EQ(scaleFactorOf(resources, ""), factor) << reason;
}

TEST(ScaleFactor, OpensNoFileThatAResourceNames) {
  const auto path = testing::TempDir() + "scale-factor-resources";
  std::ofstream(path) << "Xft.dpi: 288\n";
  EXPECT_EQ(scaleFactorOf("Xft.dpi: 192\n#include \"" + path + "\"\n \\\n \t#include \"" + path + "\"\n", ""), 2);
  std::remove(path.c_str());
}

/// The bytes of a number, the least significant one first.
template <class Integer>
std::string number(Integer value, std::size_t size = 4) {
  return {reinterpret_cast<const char*>(&value), size};
}

std::string padded(const std::string& text) { return text + std::string((4 - text.size() % 4) % 4, '\0'); }

/// One setting as a manager writes it: an integer has type 0, a string 1, a colour 2.
std::string setting(std::uint32_t type, const std::string& name, const std::string& value) {
  return number(type, 2) + number(name.size(), 2) + padded(name) + number(3) + value;
}

std::string integer(const std::string& name, std::int32_t value) { return setting(0, name, number(value)); }

std::string string(const std::string& name, const std::string& value) {
  return setting(1, name, number(value.size()) + padded(value));
}

/// A whole property, which promises so many settings.
std::string settings(std::uint32_t count, const std::string& all) {
  return number(0) + number(7) + number(count) + all;
}

TEST(ScaleFactor, ComesFromTheSettingsManagerFirst) {
  const auto scale = [](std::int32_t factor) { return integer("Gdk/WindowScalingFactor", factor); };
  const auto dpi = [](std::int32_t dots) { return integer("Xft/DPI", dots * 1024); };
  const Table<std::string, double> cases{
      {"windows of twice the size, in which text is", settings(2, scale(2) + dpi(192)), 2},
      {"half as much again, by text alone", settings(2, scale(1) + dpi(144)), 1.5},
      {"twice the size, with small text", settings(2, scale(2) + dpi(96)), 2},
      {"unscaled, whatever the resources say", settings(1, scale(1)), 1},
      {"no resolution is set", settings(1, dpi(-1)), 1},
      {"it says nothing about it: the resources", settings(1, string("Net/ThemeName", "Default")), 3},
  };
  for (const auto& [reason, bytes, factor] : cases) EXPECT_EQ(scaleFactorOf("Xft.dpi: 288", bytes), factor) << reason;
}

TEST(XSettings, ReadsWhatIsWellFormed) {
  const auto name = "Xft/DPI"s, wanted = integer(name, 7), none = ""s;
  const auto others = string("a", "12345") + setting(2, "bc", "colours.") + string("empty", none) + wanted;
  // Byte order, how often they have changed, how many there are; type, length and name, when it has changed, value.
  const auto bigEndian = "\1\0\0\0\0\0\0\7\0\0\0\1\0\0\0\7Xft/DPI\0\0\0\0\3\xFF\xFF\xFF\xF9"s;
  auto endless = wanted;
  endless.replace(2, 2, "\xFF\xFF");
  Table<std::string, std::optional<std::int32_t>> cases{
      {"after others of all types", settings(4, others), 7},
      {"most significant byte first", bigEndian, -7},
      {"of another type", settings(1, string(name, "7")), {}},
      {"another name that begins alike", settings(1, integer(name + "x", 7)), {}},
      {"a type whose length nobody knows", settings(2, setting(3, "a", none) + wanted), {}},
      {"a name longer than everything", settings(1, endless), {}},
      {"more settings promised than there are", settings(~0U, wanted), 7},
  };
  const auto whole = settings(1, wanted);
  for (std::size_t length = 0; length < whole.size(); ++length) cases.push_back({"cut", whole.substr(0, length), {}});
  for (const auto& [reason, bytes, value] : cases) EXPECT_EQ(integerSetting(bytes, name), value) << reason;
}

}  // namespace
}  // namespace tavik::platform::x11
