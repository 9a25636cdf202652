#import <ScreenCaptureKit/ScreenCaptureKit.h>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <thread>

#include "runtime.h"

using namespace tavik::fake;

/// A block as the compiler lays it out (clang.llvm.org/docs/Block-ABI-Apple.html), one that captures C++ objects.
struct Block {
  const void* isa;
  int flags, reserved;
  void (*invoke)();
  const struct {
    unsigned long reserved, size;
    void (*copy)(void* to, const void* from);
    void (*dispose)(const void* block);
  } * descriptor;
};
extern "C" void* _NSConcreteStackBlock[32];
void* _NSConcreteStackBlock[32];

namespace {

std::atomic<bool> windowServerIsReady = false;
std::jthread delivery;  ///< the last one, which the next one waits for

/// The value of a stream configuration; the name of a filter is its value.
struct Configuration {
  std::size_t width = 0, height = 0;
  std::string part = {};
  bool showsCursor = true;
  NSInteger queueDepth = 8;
};

std::shared_ptr<void> copied(const Block* block) {
  require(block->isa == _NSConcreteStackBlock, "a handler is a block on the stack");
  void* const copy = std::memcpy(std::malloc(block->descriptor->size), block, block->descriptor->size);
  block->descriptor->copy(copy, block);
  return {copy, [dispose = block->descriptor->dispose](void* unused) { dispose(unused), std::free(unused); }};
}

/// Calls the handler with the value, which is the handler's only as long as it runs; when the operation fails, with an
/// error, with the value beside it or without either, as the world says. The handler has a thread and a pool of its
/// own.
template <class Value>
void answer(const std::string& operation, Held value, void (^handler)(Value, NSError*)) {
  require(windowServerIsReady, "the window server is set up before anything is captured");
  const bool hasError = fails(operation) && !fails("giving an error");
  if (fails(operation) && !fails("withholding the value")) value = nullptr;
  const auto copy = copied(reinterpret_cast<const Block*>(handler));
  delivery = std::jthread([=]() mutable {
    @autoreleasepool {
      NSError* const error = hasError ? lend(object({}, [NSError class])) : nil;
      reinterpret_cast<void (^)(Value, NSError*)>(copy.get())(as<Value>(value), error);
    }
    value = nullptr;
  });
}

}  // namespace

void tavik::fake::waitForHandlers() { delivery = {}; }

CGDirectDisplayID CGMainDisplayID() {
  windowServerIsReady = true;
  return 1;
}
bool CGPreflightScreenCaptureAccess() { return !fails(__func__); }

@implementation SCRunningApplication
TAVIK_ANSWER(-(pid_t)processID, valueOf<std::int32_t>(self))
@end

@implementation SCDisplay
TAVIK_ANSWER(-(CGDirectDisplayID)displayID, valueOf<ListedDisplay>(self).number)
TAVIK_ANSWER(-(NSInteger)width, valueOf<ListedDisplay>(self).width)
TAVIK_ANSWER(-(NSInteger)height, valueOf<ListedDisplay>(self).height)
@end

@implementation SCWindow
- (SCRunningApplication*)owningApplication {
  const auto& pid = valueOf<ListedWindow>(self).pid;
  return pid ? lend(object(*pid, [SCRunningApplication class])) : nil;
}
- (CGRect)frame {
  const auto& window = valueOf<ListedWindow>(self);
  return CGRectMake(window.x, window.y, window.width, window.height);
}
TAVIK_ANSWER(-(CGWindowID)windowID, valueOf<ListedWindow>(self).number)
TAVIK_ANSWER(-(BOOL)isOnScreen, valueOf<ListedWindow>(self).isOnScreen)
TAVIK_ANSWER(-(NSInteger)windowLayer, valueOf<ListedWindow>(self).layer)
@end

@implementation SCShareableContent
+ (void)getShareableContentExcludingDesktopWindows:(BOOL)excludeDesktopWindows
                               onScreenWindowsOnly:(BOOL)onScreenWindowsOnly
                                 completionHandler:(void (^)(SCShareableContent*, NSError*))handler {
  require(!excludeDesktopWindows && onScreenWindowsOnly, "desktop windows too, but only those on screen");
  answer("listing", object(world(), self), handler);
}
TAVIK_ANSWER(-(NSArray*)displays, lend(valueOf<World>(self).displays, [SCDisplay class]))
TAVIK_ANSWER(-(NSArray*)windows, lend(valueOf<World>(self).windows, [SCWindow class]))
@end

@implementation SCContentFilter
- (instancetype)initWithDisplay:(SCDisplay*)display excludingWindows:(NSArray<SCWindow*>*)excluded {
  require(excluded.count == 0, "no window is left out");
  anyOf(self) = "display " + std::to_string(display.displayID);
  return self;
}
- (instancetype)initWithDisplay:(SCDisplay*)display includingWindows:(NSArray<SCWindow*>*)included {
  require(included.count == 1, "one window alone");
  const auto number = std::to_string([included objectAtIndex:0].windowID);
  anyOf(self) = "window " + number + " of display " + std::to_string(display.displayID);
  return self;
}
@end

@implementation SCStreamConfiguration
@dynamic width, height, sourceRect, showsCursor, queueDepth;
TAVIK_ANSWER(-(instancetype)init, (anyOf(self) = Configuration{}, self))
TAVIK_ANSWER(-(void)setWidth : (std::size_t)width, void(valueOf<Configuration>(self).width = width))
TAVIK_ANSWER(-(void)setHeight : (std::size_t)height, void(valueOf<Configuration>(self).height = height))
TAVIK_ANSWER(-(void)setShowsCursor : (BOOL)shows, void(valueOf<Configuration>(self).showsCursor = shows))
TAVIK_ANSWER(-(void)setQueueDepth : (NSInteger)depth, void(valueOf<Configuration>(self).queueDepth = depth))
- (void)setSourceRect:(CGRect)rect {
  for (const double number : {rect.origin.x, rect.origin.y, rect.size.width, rect.size.height}) {
    valueOf<Configuration>(self).part += " " + std::to_string(static_cast<long>(number));
  }
}
@end

@implementation SCScreenshotManager
+ (void)captureImageWithFilter:(SCContentFilter*)filter
                 configuration:(SCStreamConfiguration*)configuration
             completionHandler:(void (^)(CGImageRef, NSError*))handler {
  const auto& [width, height, part, showsCursor, queueDepth] = valueOf<Configuration>(configuration);
  require(!showsCursor && queueDepth == 1, "one picture, without the cursor");
  answer("capturing", makePicture(width, height, valueOf<std::string>(filter) + part), handler);
}
@end
