#pragma once

#include <ApplicationServices/ApplicationServices.h>
#include <memory>
#include <set>

#include "platform/accessibility.h"
#include "platform/macos/cf_ref.h"

namespace tavik::platform::macos {

/// The processes that have let a message wait until the system gave up. They are sent no more: each would wait as long.
using SilentProcesses = std::set<pid_t>;

/// An element of the Accessibility API. Every attribute is read when it is asked for. The element, and all that are
/// found through it, add to `silent` and go by it.
UIElementRef makeElement(CFRef<AXUIElementRef> element, std::shared_ptr<SilentProcesses> silent);

/// From now on the element, and every element that the plan visits below it, reads all of the plan's attributes in one
/// message when the first of them is asked for. The answers are those of single reads: what a batch leaves in doubt is
/// read singly. `element` is one of this backend's.
void readInBatches(const UIElementRef& element, const WalkPlan& plan);

}  // namespace tavik::platform::macos
