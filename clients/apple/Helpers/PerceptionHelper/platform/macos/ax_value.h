#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include "platform/accessibility.h"

namespace tavik::platform::macos {

/// What a value of the Accessibility API is. An array counts as a list of elements when nothing else is in it; an
/// AXValue that is neither a point nor a size counts as another value. `value` is borrowed and not null.
AttributeValue attributeValue(CFTypeRef value);

/// True for what a batch holds in the place of an attribute that an element has not, or that has no value.
bool isAbsence(CFTypeRef value);

/// True for what a batch holds in the place of a value that it could not read, whatever the reason.
bool isPlaceholder(CFTypeRef value);

}  // namespace tavik::platform::macos
