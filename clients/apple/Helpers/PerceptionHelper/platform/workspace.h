#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The running applications and the main screen. Reads only: nothing here launches, activates, unhides or raises
/// anything.
namespace tavik::platform {

/// How an application takes part in the desktop (NSApplicationActivationPolicy; the values are the platform's).
enum class ActivationPolicy : std::uint8_t {
  regular = 0,     ///< has windows of its own and is offered for switching
  accessory = 1,   ///< has only panels, docks, notifications and the like
  prohibited = 2,  ///< shows nothing
};

/// One running application (NSRunningApplication). Its properties may be read at any time, also after it has quit.
struct RunningApplication {
  virtual ~RunningApplication() = default;
  virtual std::int32_t processIdentifier() = 0;
  /// The identifier that the desktop knows the application by ("com.apple.Safari", "org.gnome.Calculator"), if it has
  /// one.
  virtual std::optional<std::string> bundleIdentifier() = 0;
  /// Every identifier that what is known of it gives, that one first: a desktop may know an application by several, of
  /// which some can be forged. A policy on any of them is a policy on the application.
  virtual std::vector<std::string> bundleIdentifiers() = 0;
  /// The name that the desktop shows for it, in the user's language, if it has one.
  virtual std::optional<std::string> localizedName() = 0;
  virtual ActivationPolicy activationPolicy() = 0;
};
using RunningApplicationRef = std::shared_ptr<RunningApplication>;

/// A screen (NSScreen).
struct Screen {
  /// The entry "NSScreenNumber" of its deviceDescription, when it is an integer.
  std::optional<std::int64_t> screenNumber = {};
  double backingScaleFactor = 1;  ///< pixels per point, unrounded
};

/// The desktop's applications (NSWorkspace) and its main screen (NSScreen.mainScreen). Every call asks the desktop
/// afresh and fails by finding nothing. All strings are valid UTF-8.
struct Workspace {
  virtual ~Workspace() = default;
  /// Every running application, in the platform's order.
  virtual std::vector<RunningApplicationRef> runningApplications() = 0;
  /// Those that carry this bundle identifier as their first, then those that carry it besides, both in the same order;
  /// the platform does the matching (runningApplicationsWithBundleIdentifier:).
  virtual std::vector<RunningApplicationRef> runningApplicationsWithBundleIdentifier(std::string_view identifier) = 0;
  /// The application that receives key events; null when there is none.
  virtual RunningApplicationRef frontmostApplication() = 0;
  virtual std::optional<Screen> mainScreen() = 0;
};

}  // namespace tavik::platform
