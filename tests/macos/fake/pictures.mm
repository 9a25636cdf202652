#import <CoreGraphics/CoreGraphics.h>
#import <ImageIO/ImageIO.h>
#import <ScreenCaptureKit/ScreenCaptureKit.h>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <thread>

#include "runtime.h"

using namespace tavik;
using namespace tavik::fake;
using platform::OwningApplication, platform::Rect, platform::StreamConfiguration, platform::Window;

/// A block that captures C++ objects, as the compiler lays it out (clang.llvm.org/docs/Block-ABI-Apple.html).
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

/// An image, and a bitmap context: its size, its colour space (or none), and how its content came about.
struct Picture {
  long width, height;
  Held space;
  std::string story;
};

/// What of a display is captured: one window alone, or all of it.
struct Filter {
  Display display;
  std::optional<Window> window;
};

struct Destination {
  Held data;
  std::string type, content = {};
};

std::string described(const Picture& picture) {
  return std::to_string(picture.width) + "x" + std::to_string(picture.height) + " " + picture.story;
}

CGRect toCG(const Rect& rect) { return CGRectMake(rect.x, rect.y, rect.width, rect.height); }

std::string described(const Rect& rect) {
  std::string text;
  for (const double number : {rect.x, rect.y, rect.width, rect.height}) {
    text += " " + std::to_string(static_cast<long>(number));
  }
  return text;
}

/// What a picture of this size shows: a part of the display, or all of it, scaled into the picture. A window alone is
/// where it is on the display, and nothing around it.
std::string shown(const Filter& filter, const std::optional<Rect>& part, double width, double height) {
  const auto& [id, display] = filter.display;
  const auto name = "display " + std::to_string(id);
  if (!filter.window) return name + (part ? described(*part) : "");
  const auto [x, y, sourceWidth, sourceHeight] = part.value_or(Rect{0, 0, display.width, display.height});
  const auto& frame = filter.window->frame;
  const double right = width / sourceWidth, down = height / sourceHeight;
  const Rect place{(frame.x - display.x - x) * right, (frame.y - display.y - y) * down, frame.width * right,
                   frame.height * down};
  return "window " + std::to_string(filter.window->windowID) + " of " + name + " at" + described(place);
}

std::atomic<bool> windowServerIsReady = false;
std::jthread delivery;  ///< the last one, which the next one waits for

std::shared_ptr<void> copied(const Block* block) {
  require(block->isa == _NSConcreteStackBlock, "a handler is a block on the stack");
  void* const copy = std::memcpy(std::malloc(block->descriptor->size), block, block->descriptor->size);
  block->descriptor->copy(copy, block);
  return {copy, [dispose = block->descriptor->dispose](void* unused) { dispose(unused), std::free(unused); }};
}

/// Calls the handler, on a thread of its own and with a pool, with a value that is lent for as long as the handler
/// runs. When the operation fails, the world says whether there is an error and whether the value is withheld.
template <class Value>
void answer(const std::string& operation, Held value, void (^handler)(Value, NSError*)) {
  require(windowServerIsReady, "the window server is set up before anything is captured");
  const bool hasError = fails(operation) && !fails("giving an error");
  if (fails(operation) && !fails("withholding the value")) value = nullptr;
  const auto copy = copied(reinterpret_cast<const Block*>(handler));
  delivery = std::jthread([=] {
    @autoreleasepool {
      NSError* const error = hasError ? lend(object({}, [NSError class])) : nil;
      reinterpret_cast<void (^)(Value, NSError*)>(copy.get())(as<Value>(value), error);
    }
  });
}

}  // namespace

const CFStringRef kCGImageDestinationLossyCompressionQuality = CFSTR("quality");

std::size_t CGImageGetWidth(CGImageRef image) { return std::size_t(valueOf<Picture>(image).width); }
std::size_t CGImageGetHeight(CGImageRef image) { return std::size_t(valueOf<Picture>(image).height); }
CGColorSpaceRef CGImageGetColorSpace(CGImageRef image) { return as<CGColorSpaceRef>(valueOf<Picture>(image).space); }
CGColorSpaceRef CGColorSpaceCreateDeviceRGB() { return give<CGColorSpaceRef>(text("device RGB")); }

CGContextRef CGBitmapContextCreate(void* data, std::size_t width, std::size_t height, std::size_t bitsPerComponent,
                                   std::size_t bytesPerRow, CGColorSpaceRef space, std::uint32_t bitmapInfo) {
  require(data == nullptr && bitsPerComponent == 8 && bytesPerRow == 0 && bitmapInfo == 1,
          "a bitmap of its own, 8 bits, premultiplied alpha last");
  if (width == 0 || height == 0 || fails(__func__)) return nullptr;
  return give<CGContextRef>(
      object(Picture{long(width), long(height), retain(space), "in " + valueOf<std::string>(space)}));
}

void CGContextSetInterpolationQuality(CGContextRef context, CGInterpolationQuality quality) {
  valueOf<Picture>(context).story += " at quality " + std::to_string(quality);
}

void CGContextDrawImage(CGContextRef context, CGRect rect, CGImageRef image) {
  auto& canvas = valueOf<Picture>(context);
  const auto [width, height] = rect.size;
  require(rect.origin.x == 0 && rect.origin.y == 0 && width == static_cast<double>(canvas.width) &&
              height == static_cast<double>(canvas.height),
          "the picture fills the context");
  canvas.story += " from " + described(valueOf<Picture>(image));
}

CGImageRef CGBitmapContextCreateImage(CGContextRef context) {
  return fails(__func__) ? nullptr : give<CGImageRef>(object(valueOf<Picture>(context)));
}

CGImageDestinationRef CGImageDestinationCreateWithData(CFMutableDataRef data, CFStringRef type, std::size_t count,
                                                       CFDictionaryRef options) {
  require(count == 1 && options == nullptr, "one image, no options");
  if (fails(__func__)) return nullptr;
  return give<CGImageDestinationRef>(object(Destination{retain(data), valueOf<std::string>(type)}));
}

void CGImageDestinationAddImage(CGImageDestinationRef destination, CGImageRef image, CFDictionaryRef properties) {
  auto& content = valueOf<Destination>(destination).content;
  for (const auto& [key, value] : valueOf<Dictionary>(properties)) {
    content += key + " " + std::to_string(valueOf<double>(value.get())) + ", ";
  }
  content += described(valueOf<Picture>(image));
}

bool CGImageDestinationFinalize(CGImageDestinationRef destination) {
  const auto& [data, type, content] = valueOf<Destination>(destination);
  require(!content.empty(), "there is an image to write");
  valueOf<std::string>(data.get()) = type + ", " + content;
  return !fails(__func__);
}

void tavik::fake::waitForHandlers() { delivery = {}; }

CGDirectDisplayID CGMainDisplayID() {
  require(!isMainThread(), "nothing is connected before the pass needs it");
  windowServerIsReady = true;
  return 1;
}
bool CGPreflightScreenCaptureAccess() { return !fails(__func__); }

@implementation SCRunningApplication
TAVIK_ANSWER(-(pid_t)processID, valueOf<OwningApplication>(self).processID)
@end

@implementation SCDisplay
TAVIK_ANSWER(-(CGDirectDisplayID)displayID, valueOf<Display>(self).displayID)
TAVIK_ANSWER(-(NSInteger)width, static_cast<NSInteger>(valueOf<Display>(self).frame.width))
TAVIK_ANSWER(-(NSInteger)height, static_cast<NSInteger>(valueOf<Display>(self).frame.height))
TAVIK_ANSWER(-(CGRect)frame, toCG(valueOf<Display>(self).frame))
@end

@implementation SCWindow
TAVIK_ANSWER(-(SCRunningApplication*)owningApplication,
             lend(valueOf<Window>(self).owningApplication, [SCRunningApplication class]))
TAVIK_ANSWER(-(CGRect)frame, toCG(valueOf<Window>(self).frame))
TAVIK_ANSWER(-(CGWindowID)windowID, valueOf<Window>(self).windowID)
TAVIK_ANSWER(-(BOOL)isOnScreen, valueOf<Window>(self).isOnScreen)
TAVIK_ANSWER(-(NSInteger)windowLayer, valueOf<Window>(self).windowLayer)
@end

@implementation SCShareableContent
+ (void)getShareableContentExcludingDesktopWindows:(BOOL)excludeDesktopWindows
                               onScreenWindowsOnly:(BOOL)onScreenWindowsOnly
                                 completionHandler:(void (^)(SCShareableContent*, NSError*))handler {
  require(!excludeDesktopWindows && onScreenWindowsOnly, "desktop windows too, but only those on screen");
  auto content = world();
  std::erase_if(content.windows, [](const Window& window) { return !window.isOnScreen; });
  answer("listing", object(content, self), handler);
}
TAVIK_ANSWER(-(NSArray*)displays, lend(valueOf<World>(self).displays, [SCDisplay class]))
TAVIK_ANSWER(-(NSArray*)windows, lend(valueOf<World>(self).windows, [SCWindow class]))
@end

@implementation SCContentFilter
- (instancetype)initWithDisplay:(SCDisplay*)display excludingWindows:(NSArray<SCWindow*>*)excluded {
  require(excluded.count == 0, "no window is left out");
  anyOf(self) = Filter{valueOf<Display>(display), std::nullopt};
  return self;
}
- (instancetype)initWithDisplay:(SCDisplay*)display includingWindows:(NSArray<SCWindow*>*)included {
  require(included.count == 1, "one window alone");
  anyOf(self) = Filter{valueOf<Display>(display), valueOf<Window>([included objectAtIndex:0])};
  return self;
}
@end

@implementation SCStreamConfiguration
@dynamic width, height, sourceRect, showsCursor, queueDepth;
TAVIK_ANSWER(-(instancetype)init, (anyOf(self) = StreamConfiguration{}, self))
TAVIK_ANSWER(-(void)setWidth : (std::size_t)w, void(valueOf<StreamConfiguration>(self).width = std::int64_t(w)))
TAVIK_ANSWER(-(void)setHeight : (std::size_t)h, void(valueOf<StreamConfiguration>(self).height = std::int64_t(h)))
TAVIK_ANSWER(-(void)setShowsCursor : (BOOL)shows, void(valueOf<StreamConfiguration>(self).showsCursor = shows))
TAVIK_ANSWER(-(void)setQueueDepth : (NSInteger)depth, void(valueOf<StreamConfiguration>(self).queueDepth = depth))
- (void)setSourceRect:(CGRect)rect {
  valueOf<StreamConfiguration>(self).sourceRect = Rect{rect.origin.x, rect.origin.y, rect.size.width, rect.size.height};
}
@end

@implementation SCScreenshotManager
+ (void)captureImageWithFilter:(SCContentFilter*)filter
                 configuration:(SCStreamConfiguration*)configuration
             completionHandler:(void (^)(CGImageRef, NSError*))handler {
  const auto& [width, height, part, showsCursor, queueDepth] = valueOf<StreamConfiguration>(configuration);
  require(!showsCursor && queueDepth == 1, "one picture, without the cursor");
  const auto story = shown(valueOf<Filter>(filter), part, static_cast<double>(width), static_cast<double>(height));
  const auto space = fails("CGImageGetColorSpace") ? nullptr : text("P3");
  answer("capturing", object(Picture{width, height, space, story}), handler);
}
@end
