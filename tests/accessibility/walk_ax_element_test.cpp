#include "accessibility/walk_ax_element.h"

#include <limits>
#include <string>

#include <boost/json/parse.hpp>
#include <gtest/gtest.h>

#include "fake/fake_platform.h"

namespace tavik {
namespace {

using fake::element;
using platform::AttributeValue;
using platform::Point;
using platform::Size;
using platform::UIElementRef;

const SensitiveAppsConfig kPolicy{.axRoleTextBlocklist = {"AXSecureTextField", "AXCheckBox"}};

AttributeValue children(std::size_t count, const UIElementRef& child) {
  return std::vector<UIElementRef>(count, child);
}

std::string text(std::string_view literal) { return std::string(literal); }

TEST(WalkAXElement, ReportsCountsAndRedacts) {
  struct Case {
    std::string reason;
    fake::FakeElementRef root;
    std::string node;
    std::int64_t textChars = 0;
    bool redacted = false;
  };
  constexpr double infinite = std::numeric_limits<double>::infinity();
  for (const auto& [reason, root, node, textChars, redacted] : {
           Case{"answers nothing", element({}), "{}"},
           Case{"title, value and description count by perceived characters; role and help do not",
                element({{"AXRole", text("AXButton")},
                         {"AXTitle", text("e\u0301")},
                         {"AXValue", text("\U0001F1E9\U0001F1EA")},
                         {"AXHelp", text("help")},
                         {"AXDescription", text("")}}),
                "{\"role\":\"AXButton\",\"title\":\"e\u0301\",\"value\":\"\U0001F1E9\U0001F1EA\",\"help\":\"help\","
                "\"description\":\"\"}",
                2},
           Case{"other types leave the key out",
                element({{"AXRole", 1.0},
                         {"AXTitle", true},
                         {"AXValue", platform::OtherValue{}},
                         {"AXHelp", element({})},
                         {"AXDescription", Point{}}}),
                "{}"},
           Case{"a secret is withheld, its title and description are not",
                element({{"AXRole", text("AXSecureTextField")},
                         {"AXTitle", text("abc")},
                         {"AXValue", text("hunter2")},
                         {"AXHelp", text("h")},
                         {"AXDescription", text("de")}}),
                R"({"role":"AXSecureTextField","title":"abc","value":"<redacted>","help":"h","description":"de"})", 5,
                true},
           Case{"an empty secret too", element({{"AXRole", text("AXSecureTextField")}, {"AXValue", text("")}}),
                R"({"role":"AXSecureTextField","value":"<redacted>"})", 0, true},
           Case{"a number is none", element({{"AXRole", text("AXCheckBox")}, {"AXValue", 1.0}}),
                R"({"role":"AXCheckBox"})"},
           Case{"a role in another case", element({{"AXRole", text("axcheckbox")}, {"AXValue", text("v")}}),
                R"({"role":"axcheckbox","value":"v"})", 1},
           Case{"no role", element({{"AXValue", text("v")}}), R"({"value":"v"})", 1},
           Case{"a frame truncates toward zero",
                element({{"AXPosition", Point{12.9, -3.5}}, {"AXSize", Size{-0.7, 1e15}}}),
                R"({"frame":[12,-3,0,1000000000000000]})"},
           Case{"another geometry type leaves zeros", element({{"AXPosition", Size{1, 2}}, {"AXSize", text("3")}}),
                R"({"frame":[0,0,0,0]})"},
           Case{"no size", element({{"AXPosition", Point{1, 2}}}), "{}"},
           Case{"no integer form", element({{"AXPosition", Point{1, infinite}}, {"AXSize", Size{1, 1}}}), "{}"},
           Case{"beyond 64 bits", element({{"AXPosition", Point{1, 2}}, {"AXSize", Size{0x1p63, 1}}}), "{}"},
           Case{"no children in an empty list", element({{"AXChildren", children(0, nullptr)}}), "{}"},
           Case{"none in a value of another type", element({{"AXChildren", element({})}}), "{}"},
       }) {
    AXCounters counters;
    EXPECT_EQ(walkAXElement(*root, {.depth = 0, .maxDepth = 8}, counters, kPolicy), boost::json::parse(node)) << reason;
    EXPECT_EQ(counters.nodeCount, 1) << reason;
    EXPECT_EQ(counters.textChars, textChars) << reason;
    EXPECT_EQ(counters.redactionApplied, redacted) << reason;
    if (!root->attributes.contains("AXPosition")) {
      EXPECT_EQ(std::count(root->asked.begin(), root->asked.end(), "AXSize"), 0) << reason;
    }
  }
}

TEST(WalkAXElement, StopsAtFiftyChildrenAndAtTheLastLevel) {
  UIElementRef chain = element({{"AXTitle", text("deepest")}});
  for (int i = 0; i < 12; ++i) chain = element({{"AXChildren", children(1, chain)}});
  AXCounters counters{.redactionApplied = true};
  ResponseValue node = walkAXElement(*chain, {.depth = 0, .maxDepth = 8}, counters, kPolicy);
  EXPECT_EQ(counters.nodeCount, 9);
  for (int depth = 0; depth < 8; ++depth) node = ResponseValue(node.at("children").at(0));
  EXPECT_FALSE(node.as_object().contains("children"));
  EXPECT_TRUE(counters.redactionApplied) << "what was withheld before stays so";

  counters = {};
  const auto leaf = element({{"AXTitle", text("x")}});
  const auto wide = element({{"AXChildren", children(120, element({{"AXChildren", children(2, leaf)}}))}});
  EXPECT_EQ(walkAXElement(*wide, {.depth = 7, .maxDepth = 9}, counters, kPolicy).at("children").as_array().size(), 50U);
  EXPECT_EQ(counters.nodeCount, 1 + 50 * 3);
  EXPECT_EQ(counters.textChars, 50 * 2);
}

TEST(WalkAXElement, ReadsDepthFirstAndNothingTwice) {
  const auto first = element({{"AXTitle", text("1")}}), second = element({{"AXTitle", text("2")}});
  const auto root = element({{"AXChildren", std::vector<UIElementRef>{first, second}}});
  AXCounters counters;
  const auto node = walkAXElement(*root, {.depth = 0, .maxDepth = 1}, counters, SensitiveAppsConfig::empty);
  EXPECT_EQ(node, boost::json::parse(R"({"children":[{"title":"1"},{"title":"2"}]})"));
  EXPECT_EQ(root->asked, (std::vector<std::string>{"AXRole", "AXTitle", "AXValue", "AXHelp", "AXDescription",
                                                   "AXPosition", "AXChildren"}));
  EXPECT_EQ(second->asked.size(), 6U) << "no children are asked for at the last level";
}

}  // namespace
}  // namespace tavik
