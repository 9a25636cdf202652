#include "tools/doctor/count_elements.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <deque>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "accessibility/capture_ax_tree.h"
#include "accessibility/walk_ax_element.h"

namespace tavik::doctor {
namespace {

using platform::UIElementRef;

struct Visit {
  UIElementRef element = {};
  int depth = 0;
};

/// The first children, as a walk has them; no more than are wanted are asked for.
std::vector<UIElementRef> childrenOf(platform::Accessibility& accessibility, const UIElementRef& element) {
  accessibility.prefetch(element, {.maxDepth = 1, .maxChildren = kMaxAXChildren});
  const auto value = element->copyAttributeValue("AXChildren");
  const auto* const found = value ? std::get_if<std::vector<UIElementRef>>(&*value) : nullptr;
  if (found == nullptr) return {};
  const auto count = std::min(found->size(), static_cast<std::size_t>(kMaxAXChildren));
  return {found->begin(), found->begin() + static_cast<std::ptrdiff_t>(count)};
}

bool isPage(platform::UIElement& element) {
  const auto role = element.copyAttributeValue("AXRole");
  const auto* const name = role ? std::get_if<std::string>(&*role) : nullptr;
  return name != nullptr && *name == "AXWebArea";
}

}  // namespace

ElementCount countElements(platform::Accessibility& accessibility, std::int32_t processID) {
  ElementCount count;
  const auto application = accessibility.createApplication(processID);
  const auto root = walkedRoot(Target::app, application);
  if (root == application) return count;
  std::deque<Visit> visits{{.element = root}};
  for (; !visits.empty() && count.elements < kMostElements; visits.pop_front()) {
    const auto& [element, depth] = visits.front();
    ++count.elements;
    count.hasPage = count.hasPage || isPage(*element);
    if (depth == kMaxAXDepth) continue;
    for (auto& child : childrenOf(accessibility, element)) visits.push_back({std::move(child), depth + 1});
  }
  return count;
}

}  // namespace tavik::doctor
