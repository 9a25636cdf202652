#pragma once

#include <optional>
#include <string>
#include <vector>

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
  std::string unitID = {};            ///< the application that its systemd unit was started for
  std::string script = {};            ///< the name of what it runs, where it is an interpreter
};

/// Who it is.
struct ApplicationIdentity {
  /// Every identifier that some evidence gives, the best first.
  std::vector<std::string> bundleIdentifiers = {};
  std::optional<std::string> localizedName = {};
  bool noDisplay = false;  ///< the best desktop entry is not offered in menus
};

/// Weighs the evidence, what cannot be forged first:
/// 1. the sandbox;
/// 2. of the installed entries that start this program, the one that the process's unit was started for, else the one
///    that fits the window best, else one that starts it without options. A unit alone proves nothing: what an
///    application starts stays in it. Of an interpreter, the script is the program, which its process can forge;
/// 3. the entry that the window names;
/// 4. of all installed entries, one that menus show, and of those the one that fits the window best;
/// 5. what the window calls itself, where nothing installed bears it out; the script's name; the program's, where no
///    installed entry starts it: a window can call itself otherwise;
/// 6. what the window names in vain, names that many share, and entries for the settings of the program.
/// In order, an entry fits a window whose StartupWMClass is the window's class, whatever the case; whose id is that
/// class; whose id ends, after its last dot, in the class or the instance.
ApplicationIdentity identify(const ApplicationEvidence& evidence, DesktopEntryCatalog& catalog);

}  // namespace tavik::platform::applications
