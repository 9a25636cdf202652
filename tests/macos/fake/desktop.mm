#import <AppKit/AppKit.h>
#include <ApplicationServices/ApplicationServices.h>
#include <algorithm>
#include <atomic>
#include <cstring>
#include <dispatch/dispatch.h>
#include <functional>

#include "runtime.h"

using namespace tavik::fake;

namespace {

/// What the main queue has to do, one piece at a time.
std::atomic<std::function<void()>*> mainWork = nullptr;
std::atomic<bool> mainLoopRuns = false;

/// Counts a message, a single read or a batch. False when the application lets it wait until the system gives up.
bool isAnswered(AXUIElementRef element) {
  require(world().messages-- > 0, "a message that could have been spared");
  const auto answers = world().answers.find(valueOf<Element>(element).pid);
  return answers == world().answers.end() || answers->second-- > 0;
}

/// What an attribute holds; nothing when the element does not have it.
const Held* attributeOf(AXUIElementRef element, CFTypeRef name) {
  const auto& attributes = valueOf<Element>(element).attributes;
  const auto found = attributes.find(valueOf<std::string>(name));
  if (found == attributes.end()) return nullptr;
  require(!found->second || anyOf(found->second.get()).type() != typeid(Untouchable), "an attribute that nobody needs");
  return &found->second;
}

/// The answer of a call that fails, which may leave something in its out-parameter all the same.
template <class Ref>
AXError failure(AXError error, Ref* value) {
  if (fails("an untouched out-parameter")) *value = give<Ref>(text("hunter2"));
  return error;
}

Held shown(AXUIElementRef element, const Held& value) {
  return value && anyOf(value.get()).type() == typeid(Itself) ? list({retain(element)}) : value;
}

/// What a batch holds in place of this attribute.
Held batched(AXUIElementRef element, CFTypeRef name) {
  if (fails("a batched " + valueOf<std::string>(name))) return object(Geometry(kAXErrorCannotComplete));
  const auto* const value = attributeOf(element, name);
  if (value != nullptr && *value) return shown(element, *value);
  if (fails("a reason in a batch")) return object(nullptr);
  return object(Geometry(value != nullptr ? kAXErrorNoValue : kAXErrorAttributeUnsupported));
}

}  // namespace

Boolean AXIsProcessTrusted() { return !fails(__func__); }
CFTypeID AXUIElementGetTypeID() { return typeOf<Element>(); }
CFTypeID AXValueGetTypeID() { return typeOf<Geometry>(); }

Boolean AXValueGetValue(AXValueRef value, AXValueType type, void* result) {
  const auto& geometry = valueOf<Geometry>(value);
  constexpr AXValueType kTypes[] = {kAXValueTypeCGPoint, kAXValueTypeCGSize, kAXValueTypeAXError};
  if (kTypes[geometry.index()] != type) return 0;
  std::visit([result](const auto& content) { std::memcpy(result, &content, sizeof content); }, geometry);
  return 1;
}

AXUIElementRef AXUIElementCreateApplication(pid_t pid) {
  const auto found = std::ranges::find(world().applications, pid, &Application::pid);
  return give<AXUIElementRef>(element(found != world().applications.end() ? found->tree : Dictionary(), pid));
}

AXError AXUIElementGetPid(AXUIElementRef element, pid_t* pid) {
  return *pid = valueOf<Element>(element).pid, kAXErrorSuccess;
}

AXError AXUIElementCopyAttributeValue(AXUIElementRef element, CFStringRef attribute, CFTypeRef* value) {
  require(*value == nullptr, "an out-parameter starts from null");
  if (!isAnswered(element)) return failure(kAXErrorCannotComplete, value);
  const auto* const held = attributeOf(element, attribute);
  if (fails("a single " + valueOf<std::string>(attribute))) return failure(kAXErrorFailure, value);
  if (held == nullptr) return failure(kAXErrorAttributeUnsupported, value);
  *value = give<CFTypeRef>(shown(element, *held));
  return kAXErrorSuccess;
}

AXError AXUIElementCopyMultipleAttributeValues(AXUIElementRef element, CFArrayRef attributes,
                                               AXCopyMultipleAttributeOptions options, CFArrayRef* values) {
  require(options == 0 && *values == nullptr, "a batch has no options, and its out-parameter starts from null");
  if (!isAnswered(element)) return failure(kAXErrorCannotComplete, values);
  if (fails(__func__)) return failure(kAXErrorNotImplemented, values);
  List answers;
  for (const auto& attribute : valueOf<List>(attributes)) answers.push_back(batched(element, attribute.get()));
  if (fails("a full batch")) answers.pop_back();
  *values = give<CFArrayRef>(list(answers));
  return kAXErrorSuccess;
}

void CFRunLoopRun() {
  require(isMainThread(), "the main thread serves the main loop");
  mainLoopRuns = true;
  mainLoopRuns.notify_all();
  while (true) {
    mainWork.wait(nullptr);
    (*mainWork)();
    mainWork = nullptr;
    mainWork.notify_all();
  }
}

struct dispatch_queue_s {
  int nothing;
} _dispatch_main_q;

void dispatch_sync_f(dispatch_queue_t queue, void* context, dispatch_function_t work) {
  require(queue == &_dispatch_main_q && !isMainThread(), "what waits for the main queue is not on it");
  std::function<void()> piece = [=] { work(context); };
  mainWork = &piece;
  mainWork.notify_all();
  mainWork.wait(&piece);
}

@implementation NSWorkspace
+ (NSWorkspace*)sharedWorkspace {
  mainLoopRuns.wait(false);  // nothing that it says is renewed before
  return lend(object({}, self));
}
TAVIK_ANSWER(-(NSRunningApplication*)frontmostApplication, lend(world().frontmost, [NSRunningApplication class]))
TAVIK_ANSWER(-(NSArray*)runningApplications, lend(world().applications, [NSRunningApplication class]))
@end

@implementation NSRunningApplication
+ (NSArray<NSRunningApplication*>*)runningApplicationsWithBundleIdentifier:(NSString*)identifier {
  auto applications = world().applications;
  std::erase_if(applications,
                [&](const auto& each) { return each.bundleIdentifier != valueOf<std::string>(identifier); });
  return lend(applications, self);
}
TAVIK_ANSWER(-(pid_t)processIdentifier, valueOf<Application>(self).pid)
TAVIK_ANSWER(-(NSString*)bundleIdentifier, lend(valueOf<Application>(self).bundleIdentifier, [NSString class]))
TAVIK_ANSWER(-(NSString*)localizedName, lend(valueOf<Application>(self).name, [NSString class]))
TAVIK_ANSWER(-(NSApplicationActivationPolicy)activationPolicy,
             static_cast<NSApplicationActivationPolicy>(valueOf<Application>(self).activationPolicy))
@end

@implementation NSScreen
+ (NSScreen*)mainScreen {
  require(isMainThread(), "screens are the main thread's");
  return lend(world().scale, self);
}
TAVIK_ANSWER(-(NSDictionary*)deviceDescription, lend(object(world().screen)))
TAVIK_ANSWER(-(CGFloat)backingScaleFactor, valueOf<double>(self))
@end
