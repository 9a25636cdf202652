#pragma once

#include <optional>
#include <string>

#include "platform/linux/applications/desktop_entry_catalog.h"

/// Which installed application a running program is. X11 does not say; several conventions do, some more reliably than
/// others.
namespace tavik::platform::applications {

/// What is known about a running program. Strings are valid UTF-8, and empty when unknown.
struct ApplicationEvidence {
  std::string flatpakID = {};         ///< the name of its sandbox
  std::string gtkApplicationID = {};  ///< what its window says in _GTK_APPLICATION_ID
  std::string instanceName = {};      ///< WM_CLASS of its window, first part
  std::string className = {};         ///< WM_CLASS of its window, second part
  std::string executable = {};        ///< base name of the program file
  std::string processName = {};       ///< what the kernel calls the process
};

/// Who it is.
struct ApplicationIdentity {
  std::optional<std::string> bundleIdentifier = {};  ///< a desktop file id; the window's instance name for want of one
  std::optional<std::string> localizedName = {};
  bool noDisplay = false;  ///< its desktop entry is not offered in menus
};

/// Weighs the evidence: what the sandbox and the window say outright, then the installed entry that fits best. In
/// order, an entry whose StartupWMClass is the window's class, whatever the case; whose id is that class; whose id
/// ends, after its last dot, in the class or the instance; or that starts this program file. The last does not make an
/// interpreter's own entry, which menus do not show, the identity of everything that it runs.
ApplicationIdentity identify(const ApplicationEvidence& evidence, DesktopEntryCatalog& catalog);

}  // namespace tavik::platform::applications
