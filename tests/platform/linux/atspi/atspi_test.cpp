#include <climits>
#include <cstdlib>
#include <optional>
#include <sched.h>
#include <set>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "accessibility/walk_ax_element.h"
#include "platform/linux/atspi/accessibility_bus.h"
#include "platform/linux/atspi/application.h"
#include "platform/linux/atspi/element.h"
#include "platform/linux/atspi/fake_peer.h"
#include "platform/linux/atspi/registered_windows.h"
#include "platform/linux/atspi/role_names.h"
#include "platform/linux/atspi/tree.h"
#include "platform/linux/atspi/window_matching.h"
#include "table.h"

namespace tavik::platform::atspi {
namespace {

/// A window with decorations around the client, of which the contents are all when nothing else is said.
DesktopWindow managed(const std::string& title, const Rect& client, const std::optional<Rect>& contents = {}) {
  const Rect frame{client.x - 1, client.y - 20, client.width + 2, client.height + 25};
  return {.title = title, .client = client, .contents = contents.value_or(client), .visible = contents.value_or(frame)};
}

constexpr ToolkitUnits kQt{}, kGTK3{.areWhole = true}, kGTK4{.areOnScreen = false, .areWhole = true};

TEST(FrameOfExtents, IsNothingForElementsThatAreNowhere) {
  constexpr Placement kMoved{.origin = {100, 0}, .place = {200, -5}}, kScaled{{10, 20}, {15, 33}, 1.5};
  const Table<Extents, Placement, std::optional<Rect>> cases{
      {"moved", {10, 20, 30, 40}, kMoved, Rect{110, 15, 30, 40}},
      {"left of the first monitor", {-500, 0, 1, 1}, kMoved, Rect{-400, -5, 1, 1}},
      {"scaled", {12, 20, 30, 40}, kScaled, Rect{18, 33, 45, 60}},
      {"whole pixels, without a gap to the one on the left", {43, 21, 3, 1}, kScaled, Rect{65, 35, 4, 1}},
      {"half nowhere", {5, INT_MIN, 10, 10}, kMoved, std::nullopt},
      {"the other half", {INT_MIN, 5, 10, 10}, kMoved, std::nullopt},
      {"hidden in Qt", {0, 0, 0, 0}, kMoved, std::nullopt},
      {"negative", {3, 4, -1, 9}, kMoved, std::nullopt},
  };
  for (const auto& [reason, extents, placement, expected] : cases) {
    EXPECT_EQ(frameOfExtents(extents, placement), expected) << reason;
  }
}

TEST(MainWindow, IsTheActiveOneElseTheBestFitElseTheFirst) {
  const auto topmost = managed("Letter", {100, 100, 600, 400});
  const WindowClaim other{"Other", Extents{0, 0, 50, 50}}, sameTitle{"Letter", Extents{0, 0, 50, 50}};
  const WindowClaim sameSize{"", Extents{99, 80, 602, 425}}, both{"Letter", Extents{100, 100, 600, 400}};
  const WindowClaim active{.title = "Other", .isActive = true};
  const Table<std::vector<WindowClaim>, std::optional<std::size_t>> cases{
      {"activity beats likeness", {both, active}, 1},
      {"the first of two active ones", {other, active, active}, 1},
      {"title and size beat the title alone", {sameTitle, both}, 1},
      {"the title beats the size: sizes lag behind", {sameSize, sameTitle}, 1},
      {"the size with decorations is better than nothing", {other, sameSize}, 1},
      {"the first when none fits", {other, other}, 0},
      {"an application without windows", {}, std::nullopt},
  };
  for (const auto& [reason, windows, expected] : cases) {
    EXPECT_EQ(mainWindow(windows, &topmost, kQt), expected) << reason;
  }
  EXPECT_EQ(mainWindow(std::vector{other, both}, nullptr, kQt), 0U) << "no window on the X server";
}

TEST(PlaceWindows, MeasuresTheScaleAndLeadsToTheScreen) {
  constexpr Rect kHere{40, 60, 300, 200}, kShadow{40, 60, 352, 252}, kInShadow{66, 83, 300, 200};
  constexpr Extents kThis{40, 60, 300, 200}, kWindow{0, 0, 300, 200};
  const struct Case {
    std::string reason;
    ToolkitUnits units;
    Extents extents;
    Rect client;
    std::optional<Placement> expected;
    std::optional<Rect> contents = {};
  } cases[] = {
      {"pixels", kQt, kThis, kHere, Placement{{40, 60}, {40, 60}}},
      {"Qt at 1.5", kQt, {120, 90, 301, 203}, {180, 135, 452, 304}, Placement{{120, 90}, {180, 135}, 1.5}},
      {"at 1.1", kQt, {10, 10, 509, 500}, {11, 11, 559, 550}, Placement{{10, 10}, {11, 11}, 1.1}},
      {"at 106 dpi", kQt, {10, 10, 960, 480}, {11, 11, 1060, 530}, Placement{{10, 10}, {11, 11}, 106.0 / 96}},
      {"Chromium counts its shadow", kQt, kThis, {80, 120, 600, 400}, Placement{{40, 60}, {80, 120}, 2}, kInShadow},
      {"an offset of the toolkit's own", kQt, {3, 9, 300, 200}, kHere, Placement{{3, 9}, {40, 60}}},
      {"while it is resized", kQt, {40, 60, 290, 190}, kHere, Placement{{40, 60}, {40, 60}}},
      {"GTK 3 counts decorations", kGTK3, {39, 40, 302, 225}, kHere, Placement{{40, 60}, {40, 60}}},
      {"and halves corners", kGTK3, {234, 122, 332, 356}, {469, 264, 662, 686}, Placement{{234, 132}, {469, 264}, 2}},
      {"GTK 4", kGTK4, kWindow, kHere, Placement{{0, 0}, {40, 60}}},
      {"a shadow of known width", kGTK4, kWindow, kShadow, Placement{{0, 0}, {66, 83}}, kInShadow},
      {"a border", kGTK4, {0, 0, 355, 498}, {435, 129, 730, 1016}, Placement{{0, 0}, {445, 139}, 2}},
      {"partly off the screen", kGTK4, kWindow, {-40, -60, 300, 200}, Placement{{0, 0}, {-40, -60}}},
      {"another size", kGTK4, kWindow, {0, 0, 500, 500}, std::nullopt},
      {"then Qt is believed", kQt, kWindow, {0, 0, 500, 500}, Placement{}},
      {"nowhere", kGTK4, {INT_MIN, INT_MIN, 300, 200}, kHere, std::nullopt},
  };
  for (const auto& [reason, units, extents, client, expected, contents] : cases) {
    const auto window = managed("W", client, contents);
    const auto placed = placeWindows(std::vector{WindowClaim{"W", extents}}, std::vector{window}, units).front();
    ASSERT_EQ(placed.placement.has_value(), expected.has_value()) << reason;
    if (!expected) continue;
    EXPECT_EQ(placed.placement->origin, expected->origin) << reason;
    EXPECT_EQ(placed.placement->place, expected->place) << reason;
    EXPECT_NEAR(placed.placement->scale, expected->scale, 0.001) << reason;
    EXPECT_EQ(placed.visible, expected == Placement{} ? std::nullopt : std::optional(window.visible)) << reason;
  }
}

TEST(PlaceWindows, PutsTheClientBelowATitleBar) {
  const Table<Extents, double, std::optional<Point>> cases{
      {"a title bar alone", {0, 0, 300, 163}, 1, Point{40, 97}},
      {"borders too, alike on three sides", {0, 0, 290, 158}, 1, Point{45, 97}},
      {"at a scale", {0, 0, 150, 82}, 2, Point{40, 96}},
      {"no decorations", {0, 0, 300, 200}, 1, Point{40, 60}},
      {"half as high: another window", {0, 0, 300, 90}, 1, std::nullopt},
      {"wider: a shadow that the client counts", {0, 0, 352, 239}, 1, std::nullopt},
  };
  for (const auto& [reason, extents, scale, expected] : cases) {
    auto window = managed("W", {40, 60, 300, 200});
    window.isNative = true;
    window.visible = window.client;
    window.scaleOfDecorated = scale;
    const auto placed = placeWindows(std::vector{WindowClaim{"W", extents}}, std::vector{window}, kGTK4).front();
    EXPECT_EQ(placed.placement ? std::optional(placed.placement->place) : std::nullopt, expected) << reason;
    EXPECT_EQ(placed.visible, window.visible) << reason;
  }
}

TEST(PlaceWindows, ChoosesByTitleThenBySizePlaceAndActivity) {
  auto front = managed("B", {1, 1, 300, 200}), behind = managed("A", {102, 2, 300, 200});
  const auto seen = [&](const WindowClaim& claim, const ToolkitUnits& units) {
    return placeWindows(std::vector{claim}, std::vector{front, behind}, units).front().visible.value_or(Rect{});
  };
  const WindowClaim claim{.title = "A", .extents = Extents{0, 0, 300, 200}, .isActive = true};
  EXPECT_EQ(seen(claim, kGTK4), behind.visible);
  EXPECT_EQ(seen({.title = "A"}, kQt), behind.visible) << "the title is all there is of a window without extents";
  front.title = behind.title;
  EXPECT_EQ(seen(claim, kGTK4), front.visible) << "alike: the front one";
  EXPECT_EQ(seen({"A", Extents{102, 2, 300, 200}}, kQt), behind.visible) << "the one in that place";
  EXPECT_EQ(seen({"", Extents{102, 2, 300, 200}}, kQt), behind.visible) << "also without a title";
  EXPECT_EQ(seen({"", Extents{202, 2, 300, 200}}, kQt), Rect{}) << "a menu of the size of a window is none";
  behind.isActive = true;
  EXPECT_EQ(seen(claim, kGTK4), behind.visible) << "the active one";
}

TEST(PlaceWindows, GivesMenusThePlacementOfTheMainWindow) {
  const std::vector<WindowClaim> claims{{"", Extents{70, 70, 50, 90}}, {"W", Extents{50, 50, 300, 200}, true}};
  const std::vector windows{managed("W", {100, 100, 600, 400})};
  const auto placed = placeWindows(claims, windows, kQt);
  EXPECT_EQ(placed[0], (PlacedWindow{.placement = Placement{{50, 50}, {100, 100}, 2}}));
  EXPECT_EQ(placeWindows(claims, windows, kGTK4)[0], PlacedWindow{});
  EXPECT_EQ(placeWindows(claims, {}, kQt)[0], PlacedWindow{.placement = Placement{}});
}

TEST(PlaceWindows, LeavesOutWhatNobodyKnows) {
  const std::vector<WindowClaim> claims{{"W", Extents{0, 0, 9, 9}}, {.title = "W"}, {"", Extents{0, 0, 9, 9}}};
  const std::vector somewhere{DesktopWindow{.title = "W", .isNative = true}};
  for (const auto& units : {kQt, kGTK3, kGTK4}) {
    EXPECT_EQ(placeWindows(claims, somewhere, units), std::vector<PlacedWindow>(3));
  }
}

std::string string(UIElement& element, std::string_view attribute) {
  const auto value = element.copyAttributeValue(attribute);
  return value ? std::get<std::string>(*value) : "-";
}

TEST(Element, GivesAValueOnlyWithTheRoleThatSaysWhetherItIsSecret) {
  const auto field = [](std::uint32_t role, const char* text, std::set<std::string> failing = {}) {
    return FakeObject{
        .role = role, .roleName = "password text", .interfaces = {"Text"}, .text = text, .failing = std::move(failing)};
  };
  auto area = field(61, "t");
  area.states = 1U << 17U;
  for (const auto& [reason, object, role, value] : Table<FakeObject, std::string, std::string>{
           {"a password field", field(40, "s"), "AXSecureTextField", "s"},
           {"the name decides for a role of no number", field(70, "s"), "AXSecureTextField", "s"},
           {"no role", field(40, "s", {"GetRole"}), "-", "-"},
           {"no name of the role", field(70, "s", {"GetRoleName"}), "-", "-"},
           {"no state", field(61, "s", {"GetState"}), "-", "-"},
           {"no interfaces", field(29, "t", {"GetInterfaces"}), "AXStaticText", "-"},
           {"no text at all", {.role = 43, .interfaces = {"Value"}, .text = "t"}, "AXButton", "-"},
           {"several lines", area, "AXTextArea", "t"},
           {"an empty text is a value", field(61, ""), "AXTextField", ""},
           {"so are blanks", field(29, " \n"), "AXStaticText", " \n"},
           {"embedded objects alone say nothing", field(29, " \uFFFC\n\uFFFC "), "AXStaticText", "-"},
           {"among words they keep them apart", field(29, "\uFFFCa\uFFFCb"), "AXStaticText", "\uFFFCa\uFFFCb"},
       }) {
    FakePeer peer({{"/root", object}});
    const auto root = peer.takeRoot();
    EXPECT_EQ(string(*root, "AXValue"), value) << reason;
    EXPECT_EQ(string(*root, "AXRole"), role) << reason;
    EXPECT_EQ(string(*root, "AXTitle"), "-") << "an empty name is none";
  }
}

TEST(AXRole, FollowsTheNumberOfTheRoleElseItsName) {
  EXPECT_EQ(axRole(40, true), "AXSecureTextField") << "a password stays secret over several lines";
  EXPECT_EQ(axRole(79, true), "AXTextArea") << "an entry of several lines";
  EXPECT_EQ(axRole(43, true), "AXButton") << "the state is of no interest elsewhere";
  EXPECT_EQ(axRole(60, false), "AXTextArea") << "a terminal needs no state for that";
  EXPECT_EQ(axRole(130, false), "AXCheckBox") << "the last known number";
  EXPECT_EQ(axRole(0xFFFFFFFF, false), "AXUnknown");
  EXPECT_TRUE(needsRoleName(70) && needsRoleName(131)) << "extended, or of a newer AT-SPI";
  EXPECT_FALSE(needsRoleName(40) || needsRoleName(130));
  for (const auto& [name, role] : {std::pair{"link", "AXLink"}, {"heading", "AXHeading"}, {"table", "AXTable"}}) {
    EXPECT_EQ(axRole(name), role);
  }
  for (const auto* name : {"Link", ""}) EXPECT_EQ(axRole(name), "AXUnknown") << name;
}

/// A tree with everything that reading ahead could get wrong.
FakeObjects trickyTree() {
  FakeObjects objects{
      {"/root", {.interfaces = {"Component"}, .name = "root", .extents = {7, 8, 9, 10}}},
      {"/nulls", {.role = 40, .interfaces = {"Text"}, .text = "s", .children = {"", "/leaf", "", "/leaf", "/leaf"}}},
      {"/many", {.name = "many", .children = std::vector<std::string>(300, "/leaf")}},
      {"/holes", {.name = "holes", .children = std::vector<std::string>(300, "/leaf")}},
      {"/broken", {.name = "broken", .children = {"/leaf"}, .failing = {"GetChildren", "GetInterfaces"}}},
      {"/itself", {.name = "itself", .children = {"/itself", "/root", "/leaf"}}},
      {"/sockets", {.name = "sockets", .children = {"!/plug", "/leaf", "!/stolen", "!/gone"}}},
      {"/plug", {.states = kShowing, .name = "plug", .parent = "/sockets"}},
      {"/shown", {.name = "shown", .children = {"/hidden", "/mystery", "/scrolled", "/menu", "/open"}}},
      {"/hidden", {.states = 0, .name = "secret", .children = {"/leaf"}}},
      {"/mystery", {.states = 0, .name = "mystery", .failing = {"GetRole"}}},
      {"/scrolled", {.states = kVisible, .name = "scrolled"}},
      {"/menu", {.role = 41, .states = 0, .name = "menu", .children = {"/item"}}},
      {"/item", {.role = 35, .states = 0, .interfaces = {"Component"}, .name = "item", .extents = {INT_MIN, INT_MIN}}},
      {"/open", {.role = 35, .interfaces = {"Component"}, .name = "open", .extents = {1, 2, 3, 4}}},
      {"/halves", {.name = "halves", .children = std::vector<std::string>(300, "/hidden")}},
      {"/stolen", {.name = "stolen", .parent = "/elsewhere"}},
      {"/leaf", {.role = 29, .interfaces = {"Text"}, .name = "leaf", .text = "leaf"}},
  };
  objects["/root"].children = {"/nulls",   "/many",  "",        "/holes", "/gone",   "/itself",
                               "/sockets", "/shown", "/halves", "/fewer", "/broken", "/leaf"};
  objects["/many"].children[0] = "/nulls";
  objects["/holes"].children[1] = "";
  for (std::size_t at = 1; at < 300; at += 2) objects["/halves"].children[at] = "/leaf";
  objects["/fewer"] = objects["/halves"];
  objects["/fewer"].children.resize(150);
  return objects;
}

TEST(ReadTree, ShowsTheSameTreeAsReadingOneByOne) {
  FakePeer ahead(trickyTree()), oneByOne(trickyTree()), atOnce(trickyTree());
  const auto walked = [](Element& root) {
    AXSummary summary;
    auto tree = walkAXElement(root, {.depth = 0, .maxDepth = 3}, summary, SensitiveAppsConfig::empty);
    return std::pair(std::move(tree), summary.nodeCount);
  };
  const auto root = ahead.takeRoot();
  readTree(*root, {3, kMaxAXChildren, 10'000, factsFor(kWalkedAXAttributes)});
  const auto calls = ahead.calls("Description");
  const auto seen = walked(*root);
  EXPECT_EQ(seen, walked(*oneByOne.takeRoot()));
  EXPECT_EQ(seen.second, calls);
  EXPECT_EQ(ahead.calls("Description"), calls) << "the walk asks nothing more";
  const auto ofHidden = [](const FakePeer& peer, const char* question) {
    return peer.calls(question, "/hidden") + peer.calls(question, "/mystery");
  };
  for (const auto* question : {"GetInterfaces", "GetRole"}) {
    EXPECT_LE(oneByOne.calls(question) - ofHidden(oneByOne, question), calls) << question << ": nor twice for anything";
  }
  EXPECT_EQ(ahead.calls("ChildCount") - ofHidden(ahead, "ChildCount"), oneByOne.calls("ChildCount"))
      << "nothing below the deepest level";
  EXPECT_EQ(ofHidden(ahead, "Name") + ofHidden(ahead, "GetChildren"), 0) << "nobody can see them";
  EXPECT_EQ(ahead.calls("Name", "/scrolled") + ahead.calls("Name", "/item"), 2) << "and these whoever scrolls or opens";
  EXPECT_EQ(ahead.calls("Name", "/plug"), 1) << "shown, whatever it is in";
  EXPECT_EQ(ahead.calls("Name", "/org/a11y/atspi/null"), 0) << "the null object is no child";
  EXPECT_EQ(ahead.calls("GetChildren", "/many"), 0) << "a big container is not listed whole";
  EXPECT_EQ(ahead.calls("GetText", "/many"), 0) << "no text is asked for where there is none";
  EXPECT_EQ(ahead.calls("GetRole", "/plug"), 1) << "another process's object that says whose it is";
  EXPECT_EQ(ahead.calls("GetRole", "/stolen"), 0) << "and one that belongs to somebody else";
  EXPECT_EQ(ahead.calls("GetRole", "/itself"), 1) << "nothing is below itself";
  EXPECT_EQ(ahead.calls("GetAll") + ahead.calls("GetLocale"), 0) << "applications crash or hang on them";

  const auto gtk = atOnce.takeRoot();
  gtk->session()->hasAllProperties = gtk->session()->placesOpenMenusOnly = true;
  readTree(*gtk, {3, kMaxAXChildren, 10'000, factsFor(kWalkedAXAttributes)});
  EXPECT_EQ(walked(*gtk), seen);
  EXPECT_EQ(atOnce.calls("Name") + atOnce.calls("ChildCount"), 0) << "one question where there were four";
  EXPECT_EQ(atOnce.calls("GetAll", "/shown"), 1);
  EXPECT_EQ(ahead.calls("GetExtents", "/item"), 1);
  EXPECT_EQ(atOnce.calls("GetExtents", "/item"), 0) << "in a closed menu";
  EXPECT_EQ(atOnce.calls("GetExtents", "/open"), 1);
}

TEST(ReadTree, EndsInATreeThatIsTooLarge) {
  const auto twenty = [](const std::string& path) { return std::vector<std::string>(20, path); };
  for (const auto& [elementsLeft, maxElements] : {std::pair<std::size_t, std::size_t>{50, 1000}, {1000, 50}}) {
    FakePeer peer({{"/root", {.name = "n", .children = twenty("/a")}},
                   {"/a", {.name = "n", .children = twenty("/b")}},
                   {"/b", {.name = "n"}}});
    const auto root = peer.takeRoot();
    root->session()->elementsLeft = elementsLeft;
    readTree(*root, {.maxDepth = 1000, .maxChildren = 50, .maxElements = maxElements, .facts = fact::name});
    EXPECT_EQ(peer.calls("Name"), 51);
  }
}

TEST(ReadTree, CountsNothingThatIsHidden) {
  std::vector<std::string> above(30, "/hidden"), below = above;
  above.emplace_back("/shown");
  below.emplace_back("/leaf");
  FakePeer peer({{"/root", {.children = {"/box"}}},
                 {"/box", {.children = above}},
                 {"/shown", {.children = below}},
                 {"/hidden", {.states = 0}},
                 {"/leaf", {}}});
  const auto root = peer.takeRoot();
  root->session()->elementsLeft = 50;
  EXPECT_EQ(readTree(*root, {.maxDepth = 4, .maxChildren = 50, .maxElements = 1000, .facts = fact::name}), 3U);
}

TEST(Element, HasNoTitleWhereThatMayBeAPassword) {
  const FakeObject unknown{.role = 40, .failing = {"GetRole"}};
  for (const auto& [box, child, title] : {std::tuple{FakeObject{}, FakeObject{.role = 40}, "-"},
                                          {{}, unknown, "-"},
                                          {unknown, {}, "-"},
                                          {{}, {.role = 29}, "text"}}) {
    FakeObject root{.role = 11, .name = "text", .children = {"/field"}, .failing = box.failing};
    FakePeer peer({{"/root", root}, {"/field", child}});
    EXPECT_EQ(string(*peer.takeRoot(), "AXTitle"), title);
  }
}

TEST(Element, KeepsNoMoreTextThanTheSessionAdmits) {
  FakePeer peer({{"/root", {.role = 29, .interfaces = {"Text"}, .name = "12345", .text = "123456"}}});
  const auto root = peer.takeRoot();
  root->session()->textBytesLeft = 10;
  EXPECT_EQ(string(*root, "AXTitle"), "12345");
  EXPECT_EQ(string(*root, "AXValue"), "-");
}

TEST(Element, IsAskedNothingMoreOnceItIsSilent) {
  FakePeer peer({{"/root", {.name = "n", .children = {"/root"}, .mute = {"GetInterfaces"}}}});
  const auto root = peer.takeRoot({.silence = std::chrono::milliseconds(60)});
  EXPECT_EQ(string(*root, "AXTitle"), "n");
  for (const auto* attribute : {"AXPosition", "AXDescription", "AXValue", "AXChildren"}) {
    EXPECT_FALSE(root->copyAttributeValue(attribute)) << attribute;
  }
  EXPECT_EQ(peer.calls("Description") + peer.calls("ChildCount"), 0);
  EXPECT_EQ(string(*root, "AXTitle"), "n") << "what it said before remains";
}

TEST(Conversation, InterruptsNobodyWhileManyAnswersAreOnTheirWay) {
  for (const auto& [questions, policy] : {std::pair{10, SCHED_OTHER}, {300, SCHED_BATCH}}) {
    FakePeer peer({{"/root", {.name = "n"}}});
    const auto root = peer.takeRoot();
    auto& conversation = root->session()->conversation;
    std::set<int> seen;
    const auto look = [&seen](const dbus::Answer&) { seen.insert(::sched_getscheduler(0)); };
    for (int i = 0; i < questions; ++i) conversation.ask(root->reference(), kAccessible, "GetRole", look);
    conversation.settle();
    EXPECT_EQ(seen, std::set{policy});
    EXPECT_EQ(::sched_getscheduler(0), SCHED_OTHER);
  }
}

TEST(AccessibilityBus, IsTheRootWindowsOnlyForWantOfAnother) {
  const int listening = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  sockaddr_un place{.sun_family = AF_UNIX, .sun_path = {}};
  socklen_t size = sizeof place;
  // To a name that nobody has.
  ASSERT_EQ(::bind(listening, reinterpret_cast<sockaddr*>(&place), sizeof place.sun_family), 0);
  ::getsockname(listening, reinterpret_cast<sockaddr*>(&place), &size);
  ::listen(listening, 1);
  ::setenv("AT_SPI_BUS_ADDRESS", ("unix:abstract=" + std::string(place.sun_path + 1)).c_str(), 1);
  ::setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent", 1);
  int connected = -1;
  connectToAccessibilityBus([&] { return connected = ::accept(listening, nullptr, nullptr), std::nullopt; });
  EXPECT_GE(connected, 0) << "the environment's has been tried before";
  for (const int descriptor : {listening, connected}) ::close(descriptor);
}

TEST(RegisteredWindows, AreThoseThatApplicationsShowOrHaveMinimized) {
  constexpr std::uint32_t kFrame = 23, kDialog = 16;
  const auto active = kActive | kShowing;
  FakePeer peer({{"/root", {}},
                 {"/org/freedesktop/DBus", {}},
                 {"/org/a11y/atspi/accessible/root", {.children = {"/app", "", "/mute", "!/thief"}}},
                 {"/app", {.children = {"/main", "", "/minimized", "/away", "/panel", "/dialog"}}},
                 {"/mute", {.children = {"/main"}, .failing = {"GetChildren"}}},
                 {"/thief", {.children = {"/main"}}},
                 {"/main", {.role = kFrame, .states = active, .name = "Main"}},
                 {"/minimized", {.role = kFrame, .states = kIconified, .name = "Minimized"}},
                 {"/away", {.role = kFrame, .states = kActive, .name = "Away"}},
                 {"/panel", {.states = active, .name = "Panel"}},
                 {"/dialog", {.role = kDialog, .name = "Dialog", .failing = {"Name"}}}});
  const auto root = peer.takeRoot();
  std::vector<std::string> windows;
  for (const auto& [process, title, isActive, isMinimized] : registeredWindows(root->session()->conversation)) {
    EXPECT_EQ(process, 7) << title;
    windows.push_back(title + (isActive ? " active" : "") + (isMinimized ? " minimized" : ""));
  }
  EXPECT_EQ(windows, (std::vector<std::string>{"Main active", "Minimized minimized", ""}));
}

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
  const DesktopWindow window{.title = "W", .client = kPlace, .contents = kPlace, .visible = {499, 380, 312, 235}};
  return {[root = peer.takeRoot()] { return root; }, [window] { return std::vector{window}; }};
}

TEST(Application, ShowsFramesOnTheScreen) {
  const Table<std::string, std::string, Extents, Point> cases{
      {"GTK 4: half of the border, then the window's corner", "GTK", "4.8.3", {0, 0, 300, 200}, {512, 413}},
      {"GTK 3 knows the screen", "gtk", "3.24.38", {499, 380, 312, 235}, {7, 8}},
      {"so does Qt of any version", "Qt", "5.15.8", {500, 400, 310, 210}, {7, 8}},
      {"at its own scale", "Qt", "6.4.2", {250, 200, 155, 105}, {14, 16}},
      {"and whoever says nothing", "", "", {500, 400, 310, 210}, {7, 8}},
      {"Swing has it of the first child", "J2SE-access-bridge", "1.0", {-1, -1, -1, -1}, {14, 16}},
  };
  for (const auto& [reason, toolkit, version, extents, expected] : cases) {
    const bool knowsScreen = version != "4.8.3";
    auto objects = twoWindows(toolkit, version);
    for (auto& [path, object] : objects) object.knowsScreen = knowsScreen;
    objects["/second"].extents = extents;
    objects["/box"].extents = {250, 200, 155, 105};
    objects["/b"].extents = {7, 8, 10, 10};
    for (const auto* path : {"/box", "/b"}) objects[path].interfaces = {"Component"};
    FakePeer peer(objects);
    auto application = applicationOn(peer);
    const auto windows = std::get<std::vector<UIElementRef>>(*application.copyAttributeValue("AXWindows"));
    ASSERT_EQ(windows.size(), 2U);
    EXPECT_EQ(std::get<UIElementRef>(*application.copyAttributeValue("AXMainWindow")), windows[1]) << reason;
    EXPECT_EQ(std::get<Point>(*windows[1]->copyAttributeValue("AXPosition")), (Point{499, 380})) << reason;
    EXPECT_EQ(std::get<Size>(*windows[1]->copyAttributeValue("AXSize")), (Size{312, 235})) << "that of its picture";
    const auto children = std::get<std::vector<UIElementRef>>(*windows[1]->copyAttributeValue("AXChildren"));
    EXPECT_EQ(std::get<Point>(*children.back()->copyAttributeValue("AXPosition")), expected) << reason;
    EXPECT_EQ(windows[0]->copyAttributeValue("AXPosition").has_value(), knowsScreen)
        << "no frame is better than a wrong one: the X server has no window like the first";
    EXPECT_EQ(application.root()->session()->hasAllProperties, knowsScreen ? toolkit == "gtk" : true) << reason;
    EXPECT_EQ(application.root()->session()->placesOpenMenusOnly, toolkit == "gtk") << reason;
  }
}

TEST(Application, TakesChromiumsPagesForPixels) {
  constexpr std::uint32_t kPage = 95;
  for (const auto& [extents, expected] :
       {std::pair{Extents{502, 440, 306, 168}, Point{520, 480}}, {Extents{251, 220, 153, 84}, Point{1040, 960}}}) {
    for (const auto* attribute : {"AXMainWindow", "AXFocusedUIElement"}) {
      auto objects = twoWindows("Chromium", "1.0");
      objects["/second"].extents = {250, 200, 155, 105};
      objects["/box"] = {.extents = {251, 220, 153, 84}, .children = {"/page"}, .parent = "/second"};
      objects["/page"] = {.role = kPage, .extents = extents, .children = {"/frame"}, .parent = "/box"};
      objects["/frame"] = {.role = kPage, .extents = {510, 450, 90, 90}, .children = {"/a"}, .parent = "/page"};
      objects["/a"] = {.name = "a", .extents = {520, 480, 30, 20}, .parent = "/frame"};
      for (auto& [path, object] : objects) object.interfaces = {"Component", "Collection"};
      objects["/second"].matches = {"/a"};
      FakePeer peer(objects);
      auto application = applicationOn(peer);
      auto element = std::get<UIElementRef>(*application.copyAttributeValue(attribute));
      while (string(*element, "AXTitle") != "a") {
        element->copyAttributeValue("AXSize");
        element = std::get<std::vector<UIElementRef>>(*element->copyAttributeValue("AXChildren")).front();
      }
      EXPECT_EQ(std::get<Point>(*element->copyAttributeValue("AXPosition")), expected) << attribute;
      EXPECT_LE(peer.calls("GetInterfaces"), 1) << "of the window, for a collection; nobody lacks the others";
    }
  }
}

TEST(Application, FindsTheFocusedElement) {
  const Table<Strings, Strings, Strings, std::string> cases{
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
