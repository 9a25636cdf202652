// The core alone, over elements in memory: prints, for each case, its name, the median milliseconds of what the program
// does, and those of its yardstick in turn with it (0 where there is none), separated by tabs.

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <malloc.h>
#include <string>
#include <utility>
#include <vector>

#include <boost/json/object.hpp>
#include <boost/json/serialize.hpp>

#include "accessibility/walk_ax_element.h"
#include "fake/fake_platform.h"
#include "policy/parse_sensitive_apps_yaml.h"
#include "policy/sensitive_app_match.h"
#include "protocol/write_response.h"

namespace {

using namespace tavik;
using platform::UIElementRef;

/// A button or a group of them, as toolkits describe them.
UIElementRef tree(int childrenEach, int levels, const std::string& title) {
  fake::Map<platform::AttributeValue> attributes{
      {"AXRole", levels > 0 ? "AXGroup" : "AXButton"},       {"AXTitle", title},
      {"AXDescription", "What " + title + " is for"},        {"AXPosition", platform::Point{.x = 120, .y = 340}},
      {"AXSize", platform::Size{.width = 64, .height = 24}},
  };
  std::vector<UIElementRef> children;
  for (int index = 0; levels > 0 && index < childrenEach; ++index) {
    children.push_back(tree(childrenEach, levels - 1, title + "." + std::to_string(index)));
  }
  if (!children.empty()) attributes.emplace("AXChildren", std::move(children));
  return fake::element(std::move(attributes));
}

/// The same as the document has it, without a walk.
boost::json::object node(int childrenEach, int levels, const std::string& title) {
  boost::json::object made{{"role", levels > 0 ? "AXGroup" : "AXButton"},
                           {"title", title},
                           {"description", "What " + title + " is for"},
                           {"frame", {120, 340, 64, 24}}};
  boost::json::array children;
  for (int index = 0; levels > 0 && index < childrenEach; ++index) {
    children.push_back(node(childrenEach, levels - 1, title + "." + std::to_string(index)));
  }
  if (!children.empty()) made["children"] = std::move(children);
  return made;
}

struct LastOutput final : platform::StandardStreams {
  std::string bytes = {};
  std::string readInputToEnd() override { return {}; }
  void writeOutput(std::string_view more) override {
    if (more != "\n") bytes = more;
  }
  void writeError(std::string_view) override {}
  void setLastResort(std::string_view) override {}
};

template <class Work>
double milliseconds(Work& work) {
  const auto begin = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count();
}

template <class Work, class Yardstick>
void measure(const char* name, Work work, Yardstick yardstick) {
  constexpr std::size_t kRuns = 21;
  std::array<std::array<double, kRuns>, 2> times{};
  for (std::size_t run = 0; run < kRuns; ++run) {
    // Or one would have to put together again what the other has freed in small pieces.
    ::malloc_trim(0);
    times[0][run] = milliseconds(work);
    ::malloc_trim(0);
    times[1][run] = milliseconds(yardstick);
  }
  for (auto& side : times) std::ranges::nth_element(side, side.begin() + kRuns / 2);
  std::printf("%s\t%.3f\t%.3f\n", name, times[0][kRuns / 2], times[1][kRuns / 2]);
}

void measureTree() {
  const auto root = tree(27, 3, "Button");
  const auto policy = SensitiveAppsConfig{};
  LastOutput output;
  const auto walkAndWrite = [&] {
    AXSummary counters;
    auto found = walkAXElement(*root, {.depth = 0, .maxDepth = 8}, counters, policy);
    writeResponse({{"ok", true}, {"data", {{"ax_tree", std::move(found)}}}}, output);
  };
  std::size_t written = 0;
  measure("tree of 20,440 elements, walked and written", walkAndWrite, [&] {
    const boost::json::value document{{"ok", true}, {"data", {{"ax_tree", node(27, 3, "Button")}}}};
    written += boost::json::serialize(document).size();
  });
}

void measurePolicy() {
  std::string file = "bundle_id_blocklist:\n";
  for (int index = 0; index < 10'000; ++index) {
    file += "  - \"com.example" + std::to_string(index) + ".*.application*\"\n";
  }
  const std::string identifier = "com.example1234." + std::string(184, 'a');
  std::size_t matches = 0;
  const auto readAndMatch = [&] {
    matches += sensitiveAppMatch(std::array{identifier}, parseSensitiveAppsYAML(file)) ? 1U : 0U;
  };
  measure("policy of 10,000 patterns, read and matched", readAndMatch, [] {});
}

}  // namespace

int main() {
  measureTree();
  measurePolicy();
}
