#pragma once

#include <cstddef>
#include <memory>

#include "platform/linux/atspi/element.h"

namespace tavik::platform::atspi {

/// How much of a tree is read ahead.
struct TreeBounds {
  int maxDepth = 0;  ///< of the root's descendants; the root has depth 0
  std::size_t maxChildren = 0;
  std::size_t maxElements = 0;  ///< besides the root
  unsigned facts = 0;           ///< of each element
};

/// Reads what the bounds say of the tree under `root`, from the top down, with as many calls in flight as there are to
/// make. What it has read of an application that stops answering remains. Returns how many elements there are besides
/// the root.
std::size_t readTree(Element& root, const TreeBounds& bounds);

/// The first element in pre-order, of those that have been read, with the state FOCUSED; null when there is none.
Element* findFocused(Element& root);

}  // namespace tavik::platform::atspi
