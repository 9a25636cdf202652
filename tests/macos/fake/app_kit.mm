#import <AppKit/AppKit.h>
#include <atomic>
#include <unistd.h>

#include "runtime.h"
#include "world.h"

using namespace tavik::fake;

static std::atomic<bool> mainLoopRuns = false;

void CFRunLoopRun() {
  require(::gettid() == ::getpid(), "the main thread serves the main loop");
  mainLoopRuns = true;
  mainLoopRuns.notify_all();
  while (true) ::pause();
}

template <class Filter>
static NSArray<NSRunningApplication*>* applicationsWhere(Filter filter) {
  auto applications = world().applications;
  std::erase_if(applications, [&](const auto& application) { return !filter(application); });
  return temporaryList([NSRunningApplication class], applications);
}

@implementation NSWorkspace
+ (NSWorkspace*)sharedWorkspace {
  mainLoopRuns.wait(false);  // nothing that it says is renewed before
  return shared(self);
}
- (NSRunningApplication*)frontmostApplication {
  const auto found = applicationsWhere([](const auto& each) { return each.pid == world().frontmost; });
  return found.count > 0 ? [found objectAtIndex:0] : nil;
}
TAVIK_ANSWER(-(NSArray*)runningApplications, applicationsWhere([](const auto&) { return true; }))
@end

@implementation NSRunningApplication
+ (NSArray<NSRunningApplication*>*)runningApplicationsWithBundleIdentifier:(NSString*)identifier {
  const auto& wanted = valueOf<std::string>(identifier);
  return applicationsWhere([&](const auto& application) { return application.bundleIdentifier == wanted; });
}
TAVIK_ANSWER(-(pid_t)processIdentifier, valueOf<Application>(self).pid)
TAVIK_ANSWER(-(NSString*)bundleIdentifier, temporaryText(valueOf<Application>(self).bundleIdentifier))
TAVIK_ANSWER(-(NSString*)localizedName, temporaryText(valueOf<Application>(self).name))
TAVIK_ANSWER(-(NSApplicationActivationPolicy)activationPolicy,
             static_cast<NSApplicationActivationPolicy>(valueOf<Application>(self).activationPolicy))
@end

@implementation NSScreen
TAVIK_ANSWER(+(NSScreen*)mainScreen, world().scale ? [make(self, *world().scale) autorelease] : nil)
- (NSDictionary<NSString*, id>*)deviceDescription {
  Dictionary description;
  if (world().screenNumber) description["NSScreenNumber"] = hold(world().screenNumber());
  return [make([NSDictionary class], description) autorelease];
}
TAVIK_ANSWER(-(CGFloat)backingScaleFactor, valueOf<double>(self))
@end
