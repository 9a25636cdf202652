#pragma once

#include <memory>
#include <vector>

#include "platform/linux/atspi/element.h"

namespace tavik::platform::atspi {

/// The element with the keyboard focus in the first window that has one, the first in pre-order when several claim it.
/// Toolkits with the Collection interface are asked for it. In the others' windows it is searched for: down to depth
/// 32, among the first 200 children of each element and 10,000 elements in all. Null when there is none.
std::shared_ptr<Element> focusedElement(const std::vector<std::shared_ptr<Element>>& windows);

}  // namespace tavik::platform::atspi
