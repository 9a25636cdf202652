#pragma once

#include <ApplicationServices/ApplicationServices.h>

#include "platform/accessibility.h"
#include "platform/macos/cf_ref.h"

namespace tavik::platform::macos {

/// An element of the Accessibility API. Every attribute is read when it is asked for.
UIElementRef makeElement(CFRef<AXUIElementRef> element);

/// From now on the element, and what is below it down to depth `maxDepth` (its own is 0), reads all the attributes that
/// a walk asks for in one message, when the first of them is asked for. Every answer is the single read's; what a batch
/// does not tell for certain is read singly. `element` is one of this backend's.
void readInBatches(const UIElementRef& element, int maxDepth);

}  // namespace tavik::platform::macos
