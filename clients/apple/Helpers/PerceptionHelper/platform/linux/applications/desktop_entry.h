#pragma once

#include <optional>
#include <string>

/// What the desktop knows about installed applications (Desktop Entry Specification).
namespace tavik::platform::applications {

/// An installed application. All strings are valid UTF-8.
struct DesktopEntry {
  std::string id = {};            ///< the desktop file id, without ".desktop"
  std::string name = {};          ///< in the user's language
  std::string startupClass = {};  ///< StartupWMClass: the class of its windows; empty when it does not say
  std::string program = {};       ///< the base name of what it starts; of an interpreter, the script's
  bool hasOptions = false;        ///< it starts that with arguments besides the files to open
  bool isForSettings = false;     ///< its category says so
  bool noDisplay = false;         ///< not offered in menus
};

/// Reads the group [Desktop Entry] of a desktop file. Nothing when the file is none, describes no application, or is
/// marked Hidden, which means deleted.
std::optional<DesktopEntry> parseDesktopEntry(std::string id, const std::string& text);

}  // namespace tavik::platform::applications
