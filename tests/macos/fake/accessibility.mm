#import <ApplicationServices/ApplicationServices.h>
#include <cstring>

#include "runtime.h"
#include "world.h"

namespace tavik::fake {
namespace {

/// The value of an AXValue: its type and its bytes.
struct Geometry {
  AXValueType type;
  std::string bytes;
};

template <class Value>
Maker geometry(AXValueType type, Value value) {
  const std::string bytes(reinterpret_cast<const char*>(&value), sizeof value);
  return [=] { return create<CFTypeRef>("AXValue", Geometry{type, bytes}); };
}

/// What an attribute holds; nothing when the element does not have it.
const Maker* attributeOf(AXUIElementRef element, CFTypeRef name) {
  const auto& attributes = valueOf<Element>(element);
  const auto found = attributes.find(valueOf<std::string>(name));
  return found != attributes.end() ? &found->second : nullptr;
}

/// The answer of a call that fails, which may leave something in its out-parameter all the same.
template <class Ref>
AXError failure(Ref* value) {
  if (fails("an untouched out-parameter")) *value = static_cast<Ref>(text("hunter2")());
  return kAXErrorCannotComplete;
}

/// What a batch has in the place of this attribute.
CFTypeRef batched(AXUIElementRef element, CFTypeRef name) {
  if (fails("a batched " + valueOf<std::string>(name))) return geometry(kAXValueTypeAXError, kAXErrorCannotComplete)();
  const auto* const make = attributeOf(element, name);
  const auto* const value = make != nullptr ? (*make)() : nullptr;
  if (value != nullptr) return value;
  if (fails("a reason in a batch")) return null()();
  return geometry(kAXValueTypeAXError, make != nullptr ? kAXErrorNoValue : kAXErrorAttributeUnsupported)();
}

}  // namespace

Maker point(double x, double y) { return geometry(kAXValueTypeCGPoint, CGPoint{x, y}); }
Maker size(double width, double height) { return geometry(kAXValueTypeCGSize, CGSize{width, height}); }
Maker element(Element attributes) {
  return [=] { return create<CFTypeRef>("AXUIElement", attributes); };
}

}  // namespace tavik::fake

using namespace tavik::fake;

Boolean AXIsProcessTrusted() { return !fails(__func__); }
CFTypeID AXUIElementGetTypeID() { return typeNamed("AXUIElement"); }
CFTypeID AXValueGetTypeID() { return typeNamed("AXValue"); }

Boolean AXValueGetValue(AXValueRef value, AXValueType type, void* result) {
  const auto& [itsType, bytes] = valueOf<Geometry>(value);
  if (itsType == type) std::memcpy(result, bytes.data(), bytes.size());
  return itsType == type;
}

AXUIElementRef AXUIElementCreateApplication(pid_t pid) {
  for (const auto& application : world().applications) {
    if (application.pid == pid) return create<AXUIElementRef>("AXUIElement", application.tree);
  }
  return create<AXUIElementRef>("AXUIElement", Element{});
}

AXError AXUIElementCopyAttributeValue(AXUIElementRef element, CFStringRef attribute, CFTypeRef* value) {
  require(*value == nullptr, "an out-parameter starts from null");
  const auto* const make = attributeOf(element, attribute);
  if (make == nullptr || fails("a single " + valueOf<std::string>(attribute))) return failure(value);
  *value = (*make)();
  return kAXErrorSuccess;
}

AXError AXUIElementCopyMultipleAttributeValues(AXUIElementRef element, CFArrayRef attributes,
                                               AXCopyMultipleAttributeOptions options, CFArrayRef* values) {
  require(options == 0 && *values == nullptr, "a batch has no options, and its out-parameter starts from null");
  if (fails(__func__)) return failure(values);
  List answers;
  for (const auto& attribute : valueOf<List>(attributes)) answers.push_back(hold(batched(element, attribute.get())));
  if (fails("a full batch")) answers.pop_back();
  *values = create<CFArrayRef>("NSArray", answers);
  return kAXErrorSuccess;
}
