#include "platform/macos/ax_value.h"

#include <optional>

#include "platform/macos/cf_string.h"

namespace tavik::platform::macos {
namespace {

static_assert(kAXValueTypeCGPoint == 1 && kAXValueTypeCGSize == 2 && kAXValueTypeAXError == 5);
static_assert(kAXErrorAttributeUnsupported == -25205 && kAXErrorNoValue == -25212);

/// The value as its own type, which the caller has checked.
template <class Ref>
Ref as(CFTypeRef value) {
  return static_cast<Ref>(value);
}

/// What an AXValue of this type holds; nothing when the value is of another type.
template <class Value>
std::optional<Value> contentOf(CFTypeRef value, AXValueType type) {
  Value content{};
  if (CFGetTypeID(value) != AXValueGetTypeID() || !AXValueGetValue(as<AXValueRef>(value), type, &content)) {
    return std::nullopt;
  }
  return content;
}

double numberOf(CFNumberRef number) {
  double value = 0;
  CFNumberGetValue(number, kCFNumberDoubleType, &value);  // its result says whether the conversion was exact
  return value;
}

using MakeElement = std::function<UIElementRef(CFRef<AXUIElementRef>)>;

AttributeValue elementsOf(CFArrayRef array, const MakeElement& makeElement) {
  std::vector<UIElementRef> elements;
  for (CFIndex i = 0; i < CFArrayGetCount(array); ++i) {
    const CFTypeRef member = CFArrayGetValueAtIndex(array, i);
    if (member == nullptr || CFGetTypeID(member) != AXUIElementGetTypeID()) return OtherValue{};
    elements.push_back(makeElement(retained(as<AXUIElementRef>(member))));
  }
  return elements;
}

AttributeValue geometryOf(CFTypeRef value) {
  if (const auto point = contentOf<CGPoint>(value, kAXValueTypeCGPoint)) return Point{point->x, point->y};
  if (const auto size = contentOf<CGSize>(value, kAXValueTypeCGSize)) return Size{size->width, size->height};
  return OtherValue{};
}

std::optional<AXError> errorOf(CFTypeRef value) { return contentOf<AXError>(value, kAXValueTypeAXError); }

}  // namespace

AttributeValue attributeValue(CFTypeRef value, const MakeElement& makeElement) {
  const CFTypeID type = CFGetTypeID(value);
  if (type == CFStringGetTypeID()) return utf8Of(as<CFStringRef>(value));
  if (type == CFBooleanGetTypeID()) return CFBooleanGetValue(as<CFBooleanRef>(value)) != 0;
  if (type == CFNumberGetTypeID()) return numberOf(as<CFNumberRef>(value));
  if (type == CFArrayGetTypeID()) return elementsOf(as<CFArrayRef>(value), makeElement);
  if (type == AXUIElementGetTypeID()) return makeElement(retained(as<AXUIElementRef>(value)));
  return geometryOf(value);
}

bool isAbsence(CFTypeRef value) {
  const auto error = errorOf(value);
  return error == kAXErrorNoValue || error == kAXErrorAttributeUnsupported;
}

bool isPlaceholder(CFTypeRef value) { return errorOf(value) || CFGetTypeID(value) == CFNullGetTypeID(); }

}  // namespace tavik::platform::macos
