#include "accessibility/walk_ax_element.h"

#include <array>
#include <limits>
#include <string>
#include <tuple>

#include <boost/json/parse.hpp>
#include <gtest/gtest.h>

#include "fake/fake_platform.h"

namespace tavik {
namespace {

using fake::element;
using platform::AttributeValue;
using platform::OtherValue;
using platform::Point;
using platform::Size;
using platform::UIElementRef;
using namespace std::string_literals;

const SensitiveAppsConfig kPolicy{.axRoleTextBlocklist = {"AXCheckBox"}};

AttributeValue children(std::size_t count, const UIElementRef& child) { return std::vector(count, child); }

/// An element with all five texts, or what stands in their place.
fake::FakeElementRef texts(const std::array<AttributeValue, 5>& v) {
  return element({{"AXRole", v[0]}, {"AXTitle", v[1]}, {"AXValue", v[2]}, {"AXHelp", v[3]}, {"AXDescription", v[4]}});
}

using Value = const AttributeValue&;

auto valued(Value role, Value value) { return element({{"AXRole", role}, {"AXValue", value}}); }

auto framed(Value position, Value size) { return element({{"AXPosition", position}, {"AXSize", size}}); }

TEST(WalkAXElement, ReportsCountsAndRedacts) {
  using Case = std::tuple<std::string, fake::FakeElementRef, std::string, std::int64_t, bool>;
  constexpr double infinite = std::numeric_limits<double>::infinity();
  const auto flag = "\U0001F1E9\U0001F1EA"s, accented = "e\u0301"s;
  const auto all =
      R"({"role":"AXButton","title":"e\u0301","value":"\ud83c\udde9\ud83c\uddea","help":"h","description":""})";
  const auto empty = R"({"role":"AXCheckBox","value":"<redacted>"})";
  const auto secret = R"({"role":"AXCheckBox","title":"abc","value":"<redacted>","help":"h","description":"de"})";
  for (const auto& [reason, root, node, textChars, redacted] : {
           Case{"answers nothing", element({}), "{}", 0, false},
           Case{"perceived characters count", texts({"AXButton"s, accented, flag, "h"s, ""s}), all, 2, false},
           Case{"other types: no key", texts({1.0, true, OtherValue{}, element({}), Point{}}), "{}", 0, false},
           Case{"a secret is withheld", texts({"AXCheckBox"s, "abc"s, "hunter2"s, "h"s, "de"s}), secret, 5, true},
           Case{"an empty one too", valued("AXCheckBox"s, ""s), empty, 0, true},
           Case{"a number is none", valued("AXCheckBox"s, 1.0), R"({"role":"AXCheckBox"})", 0, false},
           Case{"another case", valued("axcheckbox"s, "v"s), R"({"role":"axcheckbox","value":"v"})", 1, false},
           Case{"no role", element({{"AXValue", "v"s}}), R"({"value":"v"})", 1, false},
           Case{"truncates to zero", framed(Point{12.9, -3.5}, Size{-0.7, 1e6}), R"({"frame":[12,-3,0,1000000]})", 0,
                false},
           Case{"another type leaves zeros", framed(Size{1, 2}, "3"s), R"({"frame":[0,0,0,0]})", 0, false},
           Case{"no size", element({{"AXPosition", Point{1, 2}}}), "{}", 0, false},
           Case{"no integer form", framed(Point{1, infinite}, Size{1, 1}), "{}", 0, false},
           Case{"beyond 64 bits", framed(Point{1, 2}, Size{0x1p63, 1}), "{}", 0, false},
           Case{"no children in an empty list", element({{"AXChildren", children(0, nullptr)}}), "{}", 0, false},
           Case{"none in a value of another type", element({{"AXChildren", element({})}}), "{}", 0, false},
       }) {
    AXCounters counters;
    EXPECT_EQ(walkAXElement(*root, {.depth = 0, .maxDepth = 8}, counters, kPolicy), boost::json::parse(node)) << reason;
    EXPECT_EQ(counters.nodeCount, 1) << reason;
    EXPECT_EQ(counters.textChars, textChars) << reason;
    EXPECT_EQ(counters.redactionApplied, redacted) << reason;
  }
}

TEST(WalkAXElement, StopsAtFiftyChildren) {
  AXCounters counters{.redactionApplied = true};
  const auto leaf = element({{"AXTitle", "x"s}});
  const auto wide = element({{"AXChildren", children(120, element({{"AXChildren", children(2, leaf)}}))}});
  EXPECT_EQ(walkAXElement(*wide, {.depth = 7, .maxDepth = 9}, counters, kPolicy).at("children").as_array().size(), 50U);
  EXPECT_EQ(counters.nodeCount, 1 + 50 * 3);
  EXPECT_EQ(counters.textChars, 50 * 2);
  EXPECT_TRUE(counters.redactionApplied) << "what was withheld before stays so";
}

TEST(WalkAXElement, ReadsDepthFirstAndNothingTwice) {
  const auto first = element({{"AXTitle", "1"s}}), second = element({{"AXTitle", "2"s}});
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
