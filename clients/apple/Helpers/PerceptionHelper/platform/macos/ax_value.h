#pragma once

#include <ApplicationServices/ApplicationServices.h>
#include <functional>

#include "platform/accessibility.h"
#include "platform/macos/cf_ref.h"

namespace tavik::platform::macos {

/// A value of the Accessibility API as the program sees it. An array that holds anything but elements is another value,
/// and so is an AXValue that is neither a point nor a size. `value` is borrowed and not null.
AttributeValue attributeValue(CFTypeRef value, const std::function<UIElementRef(CFRef<AXUIElementRef>)>& makeElement);

/// True for what a batch holds in place of an attribute that the element does not have, or that has no value.
bool isAbsence(CFTypeRef value);

/// True for what a batch holds in place of a value that could not be read, for whatever reason.
bool isPlaceholder(CFTypeRef value);

}  // namespace tavik::platform::macos
