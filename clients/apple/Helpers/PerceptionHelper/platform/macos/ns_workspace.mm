#include "platform/macos/ns_workspace.h"

#import <AppKit/AppKit.h>
#include <dispatch/dispatch.h>

#include "platform/geometry.h"
#include "platform/macos/ns_string.h"

namespace tavik::platform::macos {
namespace {

static_assert(NSApplicationActivationPolicyRegular == static_cast<NSInteger>(ActivationPolicy::regular));
static_assert(NSApplicationActivationPolicyAccessory == static_cast<NSInteger>(ActivationPolicy::accessory));
static_assert(NSApplicationActivationPolicyProhibited == static_cast<NSInteger>(ActivationPolicy::prohibited));

class AppKitApplication final : public RunningApplication {
 public:
  explicit AppKitApplication(NSRunningApplication* application) : application_(retained(application)) {}

  std::int32_t processIdentifier() override { return [application_.get() processIdentifier]; }
  std::optional<std::string> bundleIdentifier() override { return utf8Of([application_.get() bundleIdentifier]); }
  std::vector<std::string> bundleIdentifiers() override {
    const auto identifier = bundleIdentifier();
    return identifier ? std::vector{*identifier} : std::vector<std::string>();
  }
  std::optional<std::string> localizedName() override { return utf8Of([application_.get() localizedName]); }
  ActivationPolicy activationPolicy() override {
    return static_cast<ActivationPolicy>([application_.get() activationPolicy]);
  }

 private:
  ObjCRef<NSRunningApplication*> application_;
};

std::vector<RunningApplicationRef> toApplications(NSArray<NSRunningApplication*>* applications) {
  std::vector<RunningApplicationRef> result;
  for (NSUInteger i = 0; i < [applications count]; ++i) {
    result.push_back(std::make_shared<AppKitApplication>([applications objectAtIndex:i]));
  }
  return result;
}

/// The object as an integer; nothing when it is not a number, or not a whole one.
std::optional<std::int64_t> integerOf(id object) {
  if (![object isKindOfClass:[NSNumber class]]) return std::nullopt;
  const auto integer = truncated([object doubleValue]);
  return integer && static_cast<double>(*integer) == [object doubleValue] ? integer : std::nullopt;
}

/// Puts it into `result`, an optional screen.
void readMainScreen(void* result) {
  @autoreleasepool {
    NSScreen* const screen = [NSScreen mainScreen];
    if (screen == nil) return;
    *static_cast<std::optional<Screen>*>(result) =
        Screen{.screenNumber = integerOf([[screen deviceDescription] objectForKey:@"NSScreenNumber"]),
               .backingScaleFactor = [screen backingScaleFactor]};
  }
}

struct AppKitWorkspace final : Workspace {
  std::vector<RunningApplicationRef> runningApplications() override {
    return toApplications([[NSWorkspace sharedWorkspace] runningApplications]);
  }

  std::vector<RunningApplicationRef> runningApplicationsWithBundleIdentifier(std::string_view identifier) override {
    const auto string = makeNSString(identifier);
    if (string.get() == nil) return {};
    return toApplications([NSRunningApplication runningApplicationsWithBundleIdentifier:string.get()]);
  }

  RunningApplicationRef frontmostApplication() override {
    NSRunningApplication* const frontmost = [[NSWorkspace sharedWorkspace] frontmostApplication];
    return frontmost != nil ? std::make_shared<AppKitApplication>(frontmost) : nullptr;
  }

  std::optional<Screen> mainScreen() override {
    std::optional<Screen> screen;
    // AppKit's screens are the main thread's, which is in its run loop.
    dispatch_sync_f(dispatch_get_main_queue(), &screen, readMainScreen);
    return screen;
  }
};

}  // namespace

std::unique_ptr<Workspace> makeWorkspace() { return std::make_unique<AppKitWorkspace>(); }

}  // namespace tavik::platform::macos
