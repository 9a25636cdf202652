#import <AppKit/AppKit.h>
#include <atomic>
#include <functional>
#include <unistd.h>

#include "runtime.h"

using namespace tavik::fake;

static std::atomic<bool> mainLoopRuns = false;

void CFRunLoopRun() {
  require(::gettid() == ::getpid(), "the main thread serves the main loop");
  mainLoopRuns = true;
  mainLoopRuns.notify_all();
  while (true) ::pause();
}

template <class Filter>
static NSArray<NSRunningApplication*>* applicationsWhere(Filter isWanted) {
  auto applications = world().applications;
  std::erase_if(applications, std::not_fn(isWanted));
  return lend(applications, [NSRunningApplication class]);
}

@implementation NSWorkspace
+ (NSWorkspace*)sharedWorkspace {
  mainLoopRuns.wait(false);  // nothing that it says is renewed before
  return lend(object({}, self));
}
- (NSRunningApplication*)frontmostApplication {
  const auto found = applicationsWhere([](const auto& each) { return each.pid == world().frontmost; });
  return found.count > 0 ? [found objectAtIndex:0] : nil;
}
TAVIK_ANSWER(-(NSArray*)runningApplications, lend(world().applications, [NSRunningApplication class]))
@end

@implementation NSRunningApplication
+ (NSArray<NSRunningApplication*>*)runningApplicationsWithBundleIdentifier:(NSString*)identifier {
  const auto& wanted = valueOf<std::string>(identifier);
  return applicationsWhere([&](const auto& application) { return application.bundleIdentifier == wanted; });
}
TAVIK_ANSWER(-(pid_t)processIdentifier, valueOf<Application>(self).pid)
TAVIK_ANSWER(-(NSString*)bundleIdentifier, lend(valueOf<Application>(self).bundleIdentifier))
TAVIK_ANSWER(-(NSString*)localizedName, lend(valueOf<Application>(self).name))
TAVIK_ANSWER(-(NSApplicationActivationPolicy)activationPolicy,
             static_cast<NSApplicationActivationPolicy>(valueOf<Application>(self).activationPolicy))
@end

@implementation NSScreen
TAVIK_ANSWER(+(NSScreen*)mainScreen, world().scale ? lend(object(*world().scale, self)) : nil)
TAVIK_ANSWER(-(NSDictionary*)deviceDescription, lend(object(world().screen)))
TAVIK_ANSWER(-(CGFloat)backingScaleFactor, valueOf<double>(self))
@end
