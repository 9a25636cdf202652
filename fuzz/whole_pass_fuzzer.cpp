#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <fuzzer/FuzzedDataProvider.h>
#include <string>
#include <string_view>
#include <vector>

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>

#include "driver/host_task.h"
#include "fake/fake_platform.h"

namespace {

using namespace tavik;
namespace json = boost::json;

constexpr std::string_view kSecret = "correct horse battery staple";

std::string shortText(FuzzedDataProvider& dice) { return dice.ConsumeRandomLengthString(12); }

/// An element of any kind. The value of one with a withheld role is the secret.
fake::FakeElementRef anyElement(FuzzedDataProvider& dice, int depth) {
  const auto role = dice.PickValueInArray({"AXSecureTextField", "AXStaticText", "AXGroup", "", "\xFF"});
  const bool isSecret = role == std::string_view("AXSecureTextField");
  auto element = fake::element({{"AXRole", std::string(role)}});
  const auto maybe = [&](const char* name, platform::AttributeValue value) {
    if (dice.ConsumeBool()) element->attributes.insert_or_assign(name, std::move(value));
  };
  maybe("AXTitle", shortText(dice));
  maybe("AXDescription", shortText(dice));
  maybe("AXHelp", shortText(dice));
  maybe("AXValue", isSecret ? std::string(kSecret) : shortText(dice));
  maybe("AXPosition", platform::Point{dice.ConsumeFloatingPoint<double>(), dice.ConsumeFloatingPoint<double>()});
  maybe("AXSize", platform::Size{dice.ConsumeFloatingPoint<double>(), 40});
  std::vector<platform::UIElementRef> children;
  for (int left = depth > 0 ? dice.ConsumeIntegralInRange(0, 3) : 0; left > 0; --left) {
    children.push_back(anyElement(dice, depth - 1));
  }
  maybe("AXChildren", children);
  return element;
}

fake::FakeDesktop anyDesktop(FuzzedDataProvider& dice) {
  fake::FakeDesktop desktop{.environment = {{"TAVIK_PERCEPTION_CONFIG", "/policy"}},
                            .files = {{"/policy", "ax_role_text_blocklist:\n- AXSecureTextField\n"}}};
  for (std::int32_t pid = 1; pid <= dice.ConsumeIntegralInRange(0, 3); ++pid) {
    desktop.applications.push_back(fake::application(pid, shortText(dice), shortText(dice)));
    desktop.applicationElements[pid] =
        fake::element({{"AXMainWindow", platform::UIElementRef(anyElement(dice, 3))},
                       {"AXFocusedUIElement", platform::UIElementRef(anyElement(dice, 1))}});
    desktop.content->windows.push_back({static_cast<std::uint32_t>(pid),
                                        platform::OwningApplication{pid},
                                        dice.ConsumeBool(),
                                        dice.ConsumeIntegralInRange(0, 1),
                                        {0, 0, dice.ConsumeFloatingPoint<double>(), 200}});
  }
  if (!desktop.applications.empty() && dice.ConsumeBool()) desktop.frontmost = desktop.applications.back();
  if (dice.ConsumeBool()) desktop.content->displays.push_back({1, dice.ConsumeIntegralInRange(0, 9000), 900});
  desktop.isTrusted = dice.ConsumeBool();
  desktop.mayRecordScreen = dice.ConsumeBool();
  return desktop;
}

std::string anyRequest(FuzzedDataProvider& dice, const fake::FakeDesktop& desktop) {
  const auto target = dice.PickValueInArray({"app", "screen", "focused_element", "region", "?"});
  const auto level = dice.PickValueInArray({"auto", "ax_only", "glance", "read", "pixel_perfect"});
  json::object request{{"target", target}, {"level", level}};
  if (!desktop.applications.empty()) request["app_name"] = desktop.applications.front()->localizedName().value_or("");
  if (dice.ConsumeBool()) request["max_long_edge_px"] = dice.ConsumeIntegral<std::int64_t>();
  if (dice.ConsumeBool())
    request["region"] = {{"x", dice.ConsumeIntegral<std::int64_t>()}, {"y", 0}, {"w", 9}, {"h", 9}};
  return dice.ConsumeBool() ? json::serialize(request) : dice.ConsumeRemainingBytesAsString();
}

std::int64_t nodesOf(const json::value& tree) {
  const auto* const children = tree.as_object().if_contains("children");
  std::int64_t count = 1;
  if (children != nullptr) {
    for (const auto& child : children->as_array()) count += nodesOf(child);
  }
  return count;
}

void expect(bool holds) {
  if (!holds) std::abort();
}

}  // namespace

/// Whatever the desktop and the request: one object and a line feed, no withheld value in it, and as many nodes as it
/// says.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider dice(data, size);
  auto desktop = anyDesktop(dice);
  desktop.input = anyRequest(dice, desktop);
  expect(hostTask(fake::makePlatform(desktop)) == 0);
  expect(std::ranges::count(desktop.output, '\n') == 1 && desktop.output.ends_with("}\n"));
  expect(desktop.output.find(kSecret) == std::string::npos);
  const auto response = json::parse(desktop.output, {}, {.max_depth = 64});
  if (!response.at("ok").as_bool()) return 0;
  const auto& read = response.at("data");
  const auto& tree = read.at("ax_tree");
  if (tree.is_object() && !tree.as_object().empty()) expect(nodesOf(tree) == read.at("ax_node_count").as_int64());
  return 0;
}
