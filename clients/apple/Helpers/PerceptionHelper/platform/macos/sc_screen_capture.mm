#include "platform/macos/sc_screen_capture.h"

#import <ScreenCaptureKit/ScreenCaptureKit.h>
#include <cmath>
#include <utility>

#include "platform/macos/cg_image.h"
#include "platform/macos/ns_string.h"

namespace tavik::platform::macos {
namespace {

Rect toRect(CGRect rect) { return {rect.origin.x, rect.origin.y, rect.size.width, rect.size.height}; }

Display toDisplay(SCDisplay* display) {
  return {.displayID = [display displayID], .width = [display width], .height = [display height]};
}

Window toWindow(SCWindow* window) {
  SCRunningApplication* const owner = [window owningApplication];
  return {.windowID = [window windowID],
          .owningApplication = owner != nil ? std::optional(OwningApplication{[owner processID]}) : std::nullopt,
          .isOnScreen = [window isOnScreen] != NO,
          .windowLayer = [window windowLayer],
          .frame = toRect([window frame])};
}

ShareableContent toShareableContent(SCShareableContent* content) {
  ShareableContent result;
  for (NSUInteger i = 0; i < [[content displays] count]; ++i) {
    result.displays.push_back(toDisplay([[content displays] objectAtIndex:i]));
  }
  for (NSUInteger i = 0; i < [[content windows] count]; ++i) {
    result.windows.push_back(toWindow([[content windows] objectAtIndex:i]));
  }
  return result;
}

PlatformError toError(NSError* error) {
  return {utf8Of([error localizedDescription]).value_or("neither a value nor an error")};
}

SCDisplay* findDisplay(SCShareableContent* content, std::uint32_t displayID) {
  for (NSUInteger i = 0; i < [[content displays] count]; ++i) {
    if ([[[content displays] objectAtIndex:i] displayID] == displayID) return [[content displays] objectAtIndex:i];
  }
  return nil;
}

SCWindow* findWindow(SCShareableContent* content, std::uint32_t windowID) {
  for (NSUInteger i = 0; i < [[content windows] count]; ++i) {
    if ([[[content windows] objectAtIndex:i] windowID] == windowID) return [[content windows] objectAtIndex:i];
  }
  return nil;
}

/// The window alone, or, where it is nil, the whole display.
ObjCRef<SCContentFilter*> makeFilter(SCDisplay* display, SCWindow* window) {
  if (window != nil) {
    NSArray<SCWindow*>* const alone = [NSArray arrayWithObject:window];
    return adopted([[SCContentFilter alloc] initWithDisplay:display includingWindows:alone]);
  }
  const auto none = adopted([NSArray<SCWindow*> new]);
  return adopted([[SCContentFilter alloc] initWithDisplay:display excludingWindows:none.get()]);
}

/// Where the window is on the display, in points. Whole ones, as the picture of a window has: a pixel is a point.
Rect placeOf(SCWindow* window, SCDisplay* display) {
  const CGRect frame = [window frame];
  const CGPoint origin = [display frame].origin;
  return {frame.origin.x - origin.x, frame.origin.y - origin.y, std::trunc(frame.size.width),
          std::trunc(frame.size.height)};
}

/// The numbers reach the system unchecked, negative ones too.
ObjCRef<SCStreamConfiguration*> makeConfiguration(const StreamConfiguration& configuration) {
  auto result = adopted([SCStreamConfiguration new]);
  [result.get() setWidth:static_cast<std::size_t>(configuration.width)];
  [result.get() setHeight:static_cast<std::size_t>(configuration.height)];
  if (const auto& rect = configuration.sourceRect) {
    [result.get() setSourceRect:CGRectMake(rect->x, rect->y, rect->width, rect->height)];
  }
  [result.get() setShowsCursor:configuration.showsCursor ? YES : NO];
  [result.get() setQueueDepth:configuration.queueDepth];
  return result;
}

class ScreenCaptureKit final : public ScreenCapture {
 public:
  bool preflightScreenCaptureAccess() override { return CGPreflightScreenCaptureAccess(); }

  void getShareableContent(const ShareableContentOptions& options,
                           CompletionHandler<ShareableContent> completionHandler) override {
    CGMainDisplayID();  // connects a tool without a user interface to the window server
    [SCShareableContent getShareableContentExcludingDesktopWindows:options.excludingDesktopWindows ? YES : NO
                                               onScreenWindowsOnly:options.onScreenWindowsOnly ? YES : NO
                                                 completionHandler:^(SCShareableContent* content, NSError* error) {
                                                   if (error != nil || content == nil) {
                                                     return completionHandler(toError(error));
                                                   }
                                                   content_ = retained(content);
                                                   completionHandler(toShareableContent(content));
                                                 }];
  }

  void captureImage(const ContentFilter& filter, const StreamConfiguration& configuration,
                    CompletionHandler<ImageRef> completionHandler) override {
    SCDisplay* const display = findDisplay(content_.get(), filter.display.displayID);
    SCWindow* const window = filter.includedWindow ? findWindow(content_.get(), filter.includedWindow->windowID) : nil;
    if (display == nil || (filter.includedWindow && window == nil)) {
      return completionHandler(PlatformError{"this content has not been listed"});
    }
    // A filter with windows has the extent of its display: the source rectangle narrows it to the window.
    auto narrowed = configuration;
    if (window != nil && !narrowed.sourceRect) narrowed.sourceRect = placeOf(window, display);
    [SCScreenshotManager captureImageWithFilter:makeFilter(display, window).get()
                                  configuration:makeConfiguration(narrowed).get()
                              completionHandler:^(CGImageRef image, NSError* error) {
                                if (error != nil || image == nullptr) return completionHandler(toError(error));
                                completionHandler(makeImage(retained(image)));
                              }];
  }

 private:
  /// What was listed last: filters are made from its objects. It is not read before the listing handler is called.
  ObjCRef<SCShareableContent*> content_ = {};
};

}  // namespace

std::unique_ptr<ScreenCapture> makeScreenCapture() { return std::make_unique<ScreenCaptureKit>(); }

}  // namespace tavik::platform::macos
