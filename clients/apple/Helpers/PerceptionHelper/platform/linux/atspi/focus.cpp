#include "platform/linux/atspi/focus.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>

#include "platform/linux/atspi/tree.h"

namespace tavik::platform::atspi {
namespace {

using ElementRef = std::shared_ptr<Element>;

constexpr TreeBounds kSearchBounds{.maxDepth = 32, .maxChildren = 200, .maxElements = 10'000, .facts = fact::states};

/// An element below the window about which nothing has been read.
ElementRef freshElement(Element& window, dbus::Reference reference) {
  return std::make_shared<Element>(window.session(), std::move(reference), window.known().placement, window.lineage());
}

/// The objects from a child of the window down to this one. Nothing when it is not below the window, or too deep.
std::vector<dbus::Reference> pathTo(const dbus::Reference& reference, Element& window) {
  constexpr std::size_t kMaxDepth = 100;
  std::vector<dbus::Reference> path;
  auto next = reference;
  while (next != window.reference()) {
    if (next.busName != reference.busName || path.size() == kMaxDepth) return {};
    path.push_back(std::exchange(next, {}));
    window.session()->conversation.askProperty(path.back(), kAccessible, "Parent", [&next](const dbus::Answer& answer) {
      next = readReferenceProperty(answer.reply).value_or(dbus::Reference{});
    });
    window.session()->conversation.settle();
  }
  std::ranges::reverse(path);
  return path;
}

/// The same of an element that is somewhere below. Where its frame depends on what it is in, that is found out.
ElementRef freshDescendant(Element& window, const dbus::Reference& reference) {
  const auto& placement = window.known().placement;
  std::vector<ElementRef> elements;
  if (placement && placement->scale != 1) {
    for (auto& step : pathTo(reference, window)) {
      const auto lineage = elements.empty() ? window.lineage() : elements.back()->lineage();
      elements.push_back(std::make_shared<Element>(window.session(), std::move(step), placement, lineage));
    }
  }
  if (elements.empty()) return freshElement(window, reference);
  auto descendant = std::move(elements.back());
  elements.pop_back();
  for (const auto& element : elements) element->ask(fact::role | fact::extents);
  window.session()->conversation.settle();
  return descendant;
}

/// Asks for the objects below a window that have the state FOCUSED. Nothing when the window cannot be asked.
std::optional<std::vector<dbus::Reference>> collectFocused(Element& window) {
  std::optional<std::vector<dbus::Reference>> focused;
  const auto handler = [&focused](const dbus::Answer& answer) { focused = readReferences(answer.reply, 1); };
  constexpr std::int32_t kMatchAll = 1;
  constexpr std::uint32_t kCanonicalOrder = 1;
  constexpr auto kStates = static_cast<std::int32_t>(kFocused);
  // The rule: states, attributes, roles and interfaces, each with its kind of match; not inverted. Then the order, how
  // many are wanted, and whether to look below the window's own children.
  window.session()->conversation.ask(window.reference(), kCollection, "GetMatches", handler, "(aiia{ss}iaiiasib)uib", 2,
                                     kStates, 0, kMatchAll, 0, kMatchAll, 0, kMatchAll, 0, kMatchAll, 0,
                                     kCanonicalOrder, 1, 1);
  window.session()->conversation.settle();
  return focused;
}

/// Reduces the bounds by what it has read.
ElementRef searchFocused(const ElementRef& asked, TreeBounds& bounds) {
  Element& window = *asked;
  const ElementRef root = std::make_shared<Element>(window.session(), window.reference(), window.known().placement,
                                                    window.lineage()->parent);
  bounds.maxElements -= readTree(*root, bounds);
  Element* focused = findFocused(*root);
  if (focused == root.get()) return asked;
  return focused ? freshElement(window, focused->reference()) : nullptr;
}

ElementRef focusedElementIn(const ElementRef& asked, TreeBounds& bounds) {
  Element& window = *asked;
  window.withInterfaces([] {});
  window.session()->conversation.settle();
  if (window.known().interfaces && window.known().interfaces->collection) {
    const auto focused = collectFocused(window);
    if (focused && focused->empty()) return nullptr;
    // One of another process may be anybody's; the search looks at those alone that belong here.
    const bool isOwn = focused && focused->front().busName == window.reference().busName;
    if (isOwn && focused->front() == window.reference()) return asked;
    if (isOwn) return freshDescendant(window, focused->front());
  }
  return searchFocused(asked, bounds);
}

}  // namespace

std::shared_ptr<Element> focusedElement(const std::vector<std::shared_ptr<Element>>& windows) {
  TreeBounds bounds = kSearchBounds;
  for (const auto& window : windows) {
    if (auto focused = focusedElementIn(window, bounds)) return focused;
  }
  return nullptr;
}

}  // namespace tavik::platform::atspi
