#include "platform/linux/atspi/tree.h"

#include <algorithm>
#include <deque>

namespace tavik::platform::atspi {
namespace {

class TreeReader {
 public:
  TreeReader(Element& root, const TreeBounds& bounds) : bounds_(bounds), queue_{{&root, 0}} {}

  /// Asks about the next element; false when none is known that has not been asked about.
  bool askNext() {
    if (queue_.empty()) return false;
    const Visit visit = queue_.front();
    queue_.pop_front();
    visit.element->ask(bounds_.facts);
    if (visit.depth < bounds_.maxDepth) {
      const auto descent = visit.depth + 1 < bounds_.maxDepth ? Element::Descent::goesOn : Element::Descent::ends;
      visit.element->withChildren(
          bounds_.maxChildren, [this, visit] { enqueueChildrenOf(visit); }, descent);
    }
    return true;
  }

  std::size_t enqueued() const { return enqueued_; }

 private:
  struct Visit {
    Element* element = nullptr;
    int depth = 0;
  };

  void enqueueChildrenOf(const Visit& parent) {
    const auto& children = parent.element->known().children;
    const std::size_t count = std::min({children.size(), bounds_.maxChildren, bounds_.maxElements - enqueued_});
    for (std::size_t index = 0; index < count; ++index) queue_.push_back({children[index].get(), parent.depth + 1});
    enqueued_ += count;
  }

  TreeBounds bounds_;
  std::deque<Visit> queue_;
  std::size_t enqueued_ = 0;
};

}  // namespace

std::size_t readTree(Element& root, const TreeBounds& bounds) {
  TreeReader reader(root, bounds);
  root.session()->conversation.settle([&reader] { return reader.askNext(); });
  return reader.enqueued();
}

Element* findFocused(Element& root) {
  if ((root.known().states.value_or(0) & kFocused) != 0) return &root;
  for (const auto& child : root.known().children) {
    if (Element* focused = findFocused(*child)) return focused;
  }
  return nullptr;
}

}  // namespace tavik::platform::atspi
