#include "platform/linux/desktop_by_accessibility.h"

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "table.h"

namespace tavik::platform {
namespace {

using atspi::RegisteredWindow;
using wayland::Toplevel;
using Toplevels = std::optional<std::vector<Toplevel>>;

std::vector<std::string> namesOf(std::int32_t process) {
  return {process == 3 ? "org.c" : std::string(1, static_cast<char>('`' + process % 3))};  // 1 and 4 are "a"
}

RegisteredWindow of(std::int32_t process, const std::string& title, bool isActive = false) {
  return {.processID = process, .title = title, .isActive = isActive};
}

RegisteredWindow active(std::int32_t process, const std::string& title) { return of(process, title, true); }

Toplevel activated(const std::string& title, const std::string& appID) {
  return {.title = title, .appID = appID, .isActivated = true};
}

TEST(MergedDesktop, KnowsTheFocusOnlyWhereAllAgree) {
  constexpr auto kUnknown = "?";
  const Table<std::vector<RegisteredWindow>, Toplevels, std::string> cases{
      // what has the focus, processes with a title each, and whether that is certain
      {"one says so, the compositor nothing: it may not be in view yet",
       {of(1, "A"), active(2, "B")},
       std::nullopt,
       "2B?"},
      {"nobody says so: it may be one that is not on the bus", {of(1, "A")}, std::nullopt, kUnknown},
      {"two say so", {active(1, "A"), active(2, "B")}, std::nullopt, kUnknown},
      {"two windows of one", {active(1, "A"), active(1, "B"), of(1, "C")}, std::nullopt, "1A1B?"},
      {"the compositor alone knows, by the name", {of(1, "A"), of(2, "B")}, {{activated("x", "B")}}, "2B"},
      {"and which window", {of(2, "A"), of(2, "B")}, {{activated("B", "b")}}, "2B"},
      {"or not", {of(1, "A"), of(2, "A"), of(2, "B")}, {{activated("x", "b")}}, "2A2B"},
      {"its title alone does not do", {of(1, "A")}, {{activated("A", "x")}}, kUnknown},
      {"it does of whoever says so", {active(1, "A"), of(2, "B")}, {{activated("A", "x")}}, "1A"},
      {"not where a stranger has it too", {active(1, "A")}, {{activated("A", "x"), {"A", "y"}}}, kUnknown},
      {"nor without one", {active(1, "")}, {{activated("", "")}}, kUnknown},
      {"two go by the name: by the title", {of(1, "A"), of(4, "B")}, {{activated("A", "a")}}, "1A"},
      {"else by what they say", {of(1, "A"), active(4, "A")}, {{activated("A", "a"), {"A", "a"}}}, "4A"},
      {"else not", {of(1, "A"), of(4, "A")}, {{activated("A", "a"), {"A", "a"}}}, kUnknown},
      {"somebody else says so", {active(1, "A"), of(2, "B")}, {{activated("B", "b")}}, kUnknown},
      {"the name is somebody else's", {active(1, "A"), of(2, "A")}, {{activated("A", "b")}}, kUnknown},
      {"a stranger", {of(1, "A")}, {{activated("T", "foot"), {"A", "a"}}}, kUnknown},
      {"one says so still", {active(1, "A")}, {{activated("T", "foot"), {"A", "a"}}}, kUnknown},
      {"two seats", {of(1, "A"), of(2, "B")}, {{activated("A", "a"), activated("B", "b")}}, kUnknown},
      {"no window has it: what has?", {of(1, "A")}, {{{"A", "a"}}}, kUnknown},
      {"a window that the compositor does not have", {active(1, "A")}, {{}}, kUnknown},
      {"no window at all", {}, {{}}, ""},
  };
  for (const auto& [reason, registered, toplevels, expected] : cases) {
    const auto desktop = mergedDesktop(registered, toplevels, &namesOf);
    std::string focused;
    for (const auto& window : desktop.windows) {
      if (window.isFocused) focused += std::to_string(window.processID) + window.title;
    }
    EXPECT_EQ(focused + (desktop.isFocusCertain ? "" : "?"), expected) << reason;
    EXPECT_EQ(desktop.windows.size(), registered.size()) << reason;
    EXPECT_TRUE(std::ranges::is_partitioned(desktop.windows, &wayland::NativeWindow::isFocused)) << "in front";
  }
}

TEST(MergedDesktop, GivesAWindowWhatItsToplevelsSay) {
  const Table<RegisteredWindow, std::vector<Toplevel>, std::string, bool> cases{
      {"its own", of(3, "C"), {{"C", "ORG.C", false, true}, {"D", "org.c"}}, "ORG.C", true},
      {"one of two is in view", of(3, "C"), {{"C", "org.c", false, true}, {"C", "org.c"}}, "org.c", false},
      {"one with another title", of(3, "C"), {{"D", "org.c", false, true}}, "", false},
      {"somebody else's", of(3, "C"), {{"C", "x", false, true}}, "", false},
      {"its own word counts", {3, "C", false, true}, {{"C", "org.c"}}, "org.c", true},
  };
  for (const auto& [reason, registered, toplevels, appID, isMinimized] : cases) {
    const auto window = mergedDesktop({&registered, 1}, toplevels, &namesOf).windows.front();
    EXPECT_EQ(window.appID, appID) << reason;
    EXPECT_EQ(window.isMinimized, isMinimized) << reason;
    EXPECT_TRUE(window.isCovered && window.contents == Rect{}) << "nobody tells where it is";
  }
}

}  // namespace
}  // namespace tavik::platform
