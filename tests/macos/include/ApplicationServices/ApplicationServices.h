// The part of ApplicationServices that the backend uses, declared anew so that it compiles where there is no Apple SDK.
#pragma once

#include <CoreGraphics/CoreGraphics.h>
#include <sys/types.h>

using AXUIElementRef = const struct __AXUIElement*;
using AXValueRef = const struct __AXValue*;

enum AXError : std::int32_t {
  kAXErrorSuccess = 0,
  kAXErrorFailure = -25200,
  kAXErrorCannotComplete = -25204,
  kAXErrorAttributeUnsupported = -25205,
  kAXErrorNotImplemented = -25208,
  kAXErrorNoValue = -25212,
};
enum AXValueType : std::uint32_t { kAXValueTypeCGPoint = 1, kAXValueTypeCGSize = 2, kAXValueTypeAXError = 5 };
enum AXCopyMultipleAttributeOptions : std::uint32_t { kAXCopyMultipleAttributeOptionStopOnError = 1 };

extern "C" {
Boolean AXIsProcessTrusted();

CFTypeID AXUIElementGetTypeID();
AXUIElementRef AXUIElementCreateApplication(pid_t pid);
AXError AXUIElementGetPid(AXUIElementRef element, pid_t* pid);
AXError AXUIElementCopyAttributeValue(AXUIElementRef element, CFStringRef attribute, CFTypeRef* value);
AXError AXUIElementCopyMultipleAttributeValues(AXUIElementRef element, CFArrayRef attributes,
                                               AXCopyMultipleAttributeOptions options, CFArrayRef* values);

CFTypeID AXValueGetTypeID();
Boolean AXValueGetValue(AXValueRef value, AXValueType type, void* result);
}
