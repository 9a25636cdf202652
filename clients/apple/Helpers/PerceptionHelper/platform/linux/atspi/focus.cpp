#include "platform/linux/atspi/focus.h"

#include <cstdint>
#include <optional>

#include "platform/linux/atspi/tree.h"

namespace tavik::platform::atspi {
namespace {

using ElementRef = std::shared_ptr<Element>;

constexpr TreeBounds kSearchBounds{.maxDepth = 32, .maxChildren = 200, .maxElements = 10'000, .facts = fact::states};

/// An element below the window about which nothing has been read.
ElementRef freshElement(Element& window, dbus::Reference reference) {
  return std::make_shared<Element>(window.session(), std::move(reference), window.known().placement, window.lineage());
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
    if (isOwn) return freshElement(window, focused->front());
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
