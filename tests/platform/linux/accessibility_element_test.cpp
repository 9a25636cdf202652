#include "platform/linux/accessibility_element.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include <gtest/gtest.h>

#include "platform/linux/accessibility_fake_peer.h"
#include "platform/linux/accessibility_tree.h"

namespace tavik::platform::atspi {
namespace {

using Objects = std::map<std::string, FakeObject>;

constexpr unsigned kAllFacts =
    fact::role | fact::name | fact::text | fact::helpText | fact::description | fact::extents;

std::shared_ptr<const Element> rootOf(FakePeer& peer, PatienceLimits limits = {}) {
  auto session = std::make_shared<Session>(peer.takeConnection(), Patience(limits));
  return std::make_shared<const Element>(session, Reference{.busName = ":1.1", .path = "/root"}, Point{});
}

std::optional<std::string> string(const UIElement& element, std::string_view attribute) {
  const auto value = element.copyAttributeValue(attribute);
  const auto* text = value ? std::get_if<std::string>(&*value) : nullptr;
  return text ? std::optional(*text) : std::nullopt;
}

/// Everything that a walk of the first `maxChildren` children down to `maxDepth` sees.
std::string dump(const UIElement& element, int maxDepth, std::size_t maxChildren) {
  std::string result = "(";
  for (const auto* attribute : {"AXRole", "AXTitle", "AXValue", "AXHelp", "AXDescription"})
    result += string(element, attribute).value_or("-") + " ";
  if (const auto position = element.copyAttributeValue("AXPosition"))
    result += std::to_string(std::get<Point>(*position).x);
  const auto value = maxDepth > 0 ? element.copyAttributeValue("AXChildren") : std::nullopt;
  const auto children = value ? std::get<std::vector<UIElementRef>>(*value) : std::vector<UIElementRef>{};
  for (std::size_t index = 0; index < std::min(children.size(), maxChildren); ++index)
    result += dump(*children[index], maxDepth - 1, maxChildren);
  return result + ")";
}

TEST(Element, GivesAValueOnlyWithTheRoleThatSaysWhetherItIsSecret) {
  struct Case {
    std::string_view reason;
    FakeObject object;
    std::optional<std::string> role;
    std::optional<std::string> value;
  };
  const std::vector<std::string> text{"Text"};
  for (const auto& row : {
           Case{"a text", {.role = 29, .interfaces = text, .text = "t"}, "AXStaticText", "t"},
           Case{"Qt 5 names it \"text\"",
                {.role = 40, .roleName = "text", .interfaces = text, .text = "s"},
                "AXSecureTextField",
                "s"},
           Case{"a role of no number",
                {.role = 70, .roleName = "password text", .interfaces = text, .text = "s"},
                "AXSecureTextField",
                "s"},
           Case{"no role", {.role = 40, .interfaces = text, .text = "s", .failing = {"GetRole"}}, {}, {}},
           Case{"no name of the role",
                {.role = 70, .interfaces = text, .text = "s", .failing = {"GetRoleName"}},
                {},
                {}},
           Case{"no state", {.role = 61, .interfaces = text, .text = "s", .failing = {"GetState"}}, {}, {}},
           Case{"several lines", {.role = 61, .states = 1U << 17U, .interfaces = text, .text = "t"}, "AXTextArea", "t"},
           Case{"an empty text is a value", {.role = 61, .interfaces = text}, "AXTextField", ""},
           Case{"no text at all", {.role = 43, .interfaces = {"Value"}, .text = "t"}, "AXButton", {}},
       }) {
    FakePeer peer({{"/root", row.object}});
    const auto root = rootOf(peer);
    EXPECT_EQ(string(*root, "AXValue"), row.value) << row.reason;
    EXPECT_EQ(string(*root, "AXRole"), row.role) << row.reason;
    EXPECT_EQ(string(*root, "AXTitle"), std::nullopt) << "an empty name is none";
  }
}

/// A tree with everything that reading ahead could get wrong.
Objects trickyTree() {
  Objects objects{
      {"/root", {.interfaces = {"Component"}, .name = "root", .extents = {7, 8, 9, 10}, .children = {}}},
      {"/nulls", {.role = 40, .interfaces = {"Text"}, .text = "s", .children = {"", "/leaf", "", "/leaf", "/leaf"}}},
      {"/many", {.name = "many"}},
      {"/holes", {.name = "holes"}},
      {"/broken", {.name = "broken", .children = {"/leaf"}, .failing = {"GetChildren", "GetInterfaces"}}},
      {"/itself", {.name = "itself", .children = {"/itself", "/leaf"}}},
      {"/leaf", {.role = 29, .interfaces = {"Text"}, .name = "leaf", .text = "leaf"}},
  };
  objects["/root"].children = {"/nulls", "/many", "", "/holes", "/gone", "/itself", "/broken", "/leaf"};
  objects["/many"].children.assign(300, "/leaf");
  objects["/holes"].children.assign(300, "/leaf");
  objects["/holes"].children[1] = "";
  return objects;
}

TEST(ReadTree, ShowsTheSameTreeAsReadingOneByOne) {
  FakePeer ahead(trickyTree());
  FakePeer oneByOne(trickyTree());
  const auto root = rootOf(ahead);
  readTree(*root, {.maxDepth = 3, .maxChildren = 6, .maxElements = 1000, .facts = kAllFacts});
  const int calls = ahead.calls("GetRole");
  const std::string seen = dump(*root, 3, 6);
  EXPECT_EQ(seen, dump(*rootOf(oneByOne), 3, 6));
  EXPECT_EQ(std::ranges::count(seen, '('), calls);
  EXPECT_EQ(ahead.calls("GetRole"), calls) << "the walk asks nothing more";
  EXPECT_EQ(ahead.calls("Name", "/org/a11y/atspi/null"), 0) << "the null object is no child";
  EXPECT_EQ(ahead.calls("GetChildren", "/many"), 0) << "a big container is not listed whole";
  EXPECT_EQ(ahead.calls("GetText", "/many"), 0) << "no text is asked for where there is none";
  EXPECT_EQ(ahead.calls("GetAll") + ahead.calls("GetLocale"), 0) << "applications crash or hang on them";
}

TEST(ReadTree, EndsInATreeThatHasNoEnd) {
  FakePeer peer({{"/root", {.name = "n", .children = std::vector<std::string>(20, "/root")}}});
  const auto root = rootOf(peer);
  root->session()->elementsLeft = 50;
  readTree(*root, {.maxDepth = 1000, .maxChildren = 50, .maxElements = 1000, .facts = fact::name});
  EXPECT_EQ(peer.calls("Name"), 51);
}

TEST(Element, KeepsNoMoreTextThanTheSessionAdmits) {
  FakePeer peer({{"/root", {.role = 29, .interfaces = {"Text"}, .name = "12345", .text = "123456"}}});
  const auto root = rootOf(peer);
  root->session()->textBytesLeft = 10;
  EXPECT_EQ(string(*root, "AXTitle"), "12345");
  EXPECT_EQ(string(*root, "AXValue"), std::nullopt);
}

TEST(Element, WaitsForASilentApplicationOnce) {
  const std::chrono::milliseconds silence(60);
  FakePeer peer({{"/root", {.role = 29, .name = "n", .children = {"/root"}, .mute = {"GetInterfaces"}}}});
  const auto root = rootOf(peer, {.silence = silence});
  EXPECT_EQ(string(*root, "AXTitle"), "n");
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(root->copyAttributeValue("AXPosition"), std::nullopt);
  const auto waited = std::chrono::steady_clock::now() - start;
  EXPECT_GE(waited, silence);
  for (const auto* attribute : {"AXRole", "AXValue", "AXChildren"})
    EXPECT_FALSE(root->copyAttributeValue(attribute).has_value()) << attribute;
  EXPECT_EQ(peer.calls("GetRole") + peer.calls("ChildCount"), 0) << "it is asked nothing more";
  EXPECT_EQ(string(*root, "AXTitle"), "n") << "what it said before remains";
}

}  // namespace
}  // namespace tavik::platform::atspi
