#include "platform/linux/atspi/element.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <tuple>
#include <variant>

#include <gtest/gtest.h>

#include "platform/linux/atspi/fake_peer.h"
#include "platform/linux/atspi/tree.h"

namespace tavik::platform::atspi {
namespace {

using Clock = std::chrono::steady_clock;

constexpr unsigned kAllFacts =
    fact::role | fact::name | fact::text | fact::helpText | fact::description | fact::extents;

std::string string(UIElement& element, std::string_view attribute) {
  const auto value = element.copyAttributeValue(attribute);
  return value ? std::get<std::string>(*value) : "-";
}

/// Everything that a walk of the first `maxChildren` children down to `maxDepth` sees.
std::string dump(UIElement& element, int maxDepth, std::size_t maxChildren) {
  std::string result = "(";
  for (const auto* attribute : {"AXRole", "AXTitle", "AXValue", "AXHelp", "AXDescription"}) {
    result += string(element, attribute) + " ";
  }
  if (const auto position = element.copyAttributeValue("AXPosition")) {
    result += std::to_string(std::get<Point>(*position).x);
  }
  const auto value = maxDepth > 0 ? element.copyAttributeValue("AXChildren") : std::nullopt;
  const auto children = value ? std::get<std::vector<UIElementRef>>(*value) : std::vector<UIElementRef>{};
  for (std::size_t index = 0; index < std::min(children.size(), maxChildren); ++index) {
    result += dump(*children[index], maxDepth - 1, maxChildren);
  }
  return result + ")";
}

TEST(Element, GivesAValueOnlyWithTheRoleThatSaysWhetherItIsSecret) {
  const auto field = [](std::uint32_t role, const char* text, std::set<std::string> failing = {}) {
    return FakeObject{
        .role = role, .roleName = "password text", .interfaces = {"Text"}, .text = text, .failing = failing};
  };
  auto area = field(61, "t");
  area.states = 1U << 17U;
  using Case = std::tuple<std::string_view, FakeObject, std::string_view, std::string_view>;
  for (const auto& [reason, object, role, value] : {
           Case{"a password field", field(40, "s"), "AXSecureTextField", "s"},
           Case{"the name decides for a role of no number", field(70, "s"), "AXSecureTextField", "s"},
           Case{"no role", field(40, "s", {"GetRole"}), "-", "-"},
           Case{"no name of the role", field(70, "s", {"GetRoleName"}), "-", "-"},
           Case{"no state", field(61, "s", {"GetState"}), "-", "-"},
           Case{"no interfaces", field(29, "t", {"GetInterfaces"}), "AXStaticText", "-"},
           Case{"no text at all", {.role = 43, .interfaces = {"Value"}, .text = "t"}, "AXButton", "-"},
           Case{"several lines", area, "AXTextArea", "t"},
           Case{"an empty text is a value", field(61, ""), "AXTextField", ""},
           Case{"so are blanks", field(29, " \n"), "AXStaticText", " \n"},
           Case{"embedded objects alone say nothing", field(29, " \uFFFC\n\uFFFC "), "AXStaticText", "-"},
           Case{"among words they keep them apart", field(29, "\uFFFCa\uFFFCb"), "AXStaticText", "\uFFFCa\uFFFCb"},
       }) {
    FakePeer peer({{"/root", object}});
    const auto root = peer.takeRoot();
    EXPECT_EQ(string(*root, "AXValue"), value) << reason;
    EXPECT_EQ(string(*root, "AXRole"), role) << reason;
    EXPECT_EQ(string(*root, "AXTitle"), "-") << "an empty name is none";
  }
}

/// A tree with everything that reading ahead could get wrong.
FakeObjects trickyTree() {
  FakeObjects objects{
      {"/root", {.interfaces = {"Component"}, .name = "root", .extents = {7, 8, 9, 10}}},
      {"/nulls", {.role = 40, .interfaces = {"Text"}, .text = "s", .children = {"", "/leaf", "", "/leaf", "/leaf"}}},
      {"/many", {.name = "many", .children = std::vector<std::string>(300, "/leaf")}},
      {"/holes", {.name = "holes", .children = std::vector<std::string>(300, "/leaf")}},
      {"/broken", {.name = "broken", .children = {"/leaf"}, .failing = {"GetChildren", "GetInterfaces"}}},
      {"/itself", {.name = "itself", .children = {"/itself", "/leaf"}}},
      {"/leaf", {.role = 29, .interfaces = {"Text"}, .name = "leaf", .text = "leaf"}},
  };
  objects["/root"].children = {"/nulls", "/many", "", "/holes", "/gone", "/itself", "/broken", "/leaf"};
  objects["/many"].children[0] = "/nulls";
  objects["/holes"].children[1] = "";
  return objects;
}

TEST(ReadTree, ShowsTheSameTreeAsReadingOneByOne) {
  FakePeer ahead(trickyTree());
  FakePeer oneByOne(trickyTree());
  const auto root = ahead.takeRoot();
  readTree(*root, {.maxDepth = 3, .maxChildren = 6, .maxElements = 1000, .facts = kAllFacts});
  const auto calls = ahead.calls("GetRole");
  const std::string seen = dump(*root, 3, 6);
  EXPECT_EQ(seen, dump(*oneByOne.takeRoot(), 3, 6));
  EXPECT_EQ(std::ranges::count(seen, '('), calls);
  EXPECT_EQ(ahead.calls("GetRole"), calls) << "the walk asks nothing more";
  EXPECT_EQ(oneByOne.calls("GetInterfaces"), calls) << "nor twice for anything";
  EXPECT_EQ(ahead.calls("Name", "/org/a11y/atspi/null"), 0) << "the null object is no child";
  EXPECT_EQ(ahead.calls("GetChildren", "/many"), 0) << "a big container is not listed whole";
  EXPECT_EQ(ahead.calls("GetText", "/many"), 0) << "no text is asked for where there is none";
  EXPECT_EQ(ahead.calls("GetAll") + ahead.calls("GetLocale"), 0) << "applications crash or hang on them";
}

TEST(ReadTree, EndsInATreeThatHasNoEnd) {
  for (const auto& [elementsLeft, maxElements] : {std::pair<std::size_t, std::size_t>{50, 1000}, {1000, 50}}) {
    FakePeer peer({{"/root", {.name = "n", .children = std::vector<std::string>(20, "/root")}}});
    const auto root = peer.takeRoot();
    root->session()->elementsLeft = elementsLeft;
    readTree(*root, {.maxDepth = 1000, .maxChildren = 50, .maxElements = maxElements, .facts = fact::name});
    EXPECT_EQ(peer.calls("Name"), 51);
  }
}

TEST(Element, KeepsNoMoreTextThanTheSessionAdmits) {
  FakePeer peer({{"/root", {.role = 29, .interfaces = {"Text"}, .name = "12345", .text = "123456"}}});
  const auto root = peer.takeRoot();
  root->session()->textBytesLeft = 10;
  EXPECT_EQ(string(*root, "AXTitle"), "12345");
  EXPECT_EQ(string(*root, "AXValue"), "-");
}

TEST(Element, WaitsForASilentApplicationOnce) {
  constexpr std::chrono::milliseconds kSilence(60);
  FakePeer peer({{"/root", {.name = "n", .children = {"/root"}, .mute = {"GetInterfaces"}}}});
  const auto root = peer.takeRoot({.silence = kSilence});
  EXPECT_EQ(string(*root, "AXTitle"), "n");
  const auto start = Clock::now();
  EXPECT_EQ(root->copyAttributeValue("AXPosition"), std::nullopt);
  EXPECT_GE(Clock::now() - start, kSilence);
  for (const auto* attribute : {"AXRole", "AXValue", "AXChildren"}) {
    EXPECT_FALSE(root->copyAttributeValue(attribute).has_value()) << attribute;
  }
  EXPECT_EQ(peer.calls("GetRole") + peer.calls("ChildCount"), 0) << "it is asked nothing more";
  EXPECT_EQ(string(*root, "AXTitle"), "n") << "what it said before remains";
}

}  // namespace
}  // namespace tavik::platform::atspi
