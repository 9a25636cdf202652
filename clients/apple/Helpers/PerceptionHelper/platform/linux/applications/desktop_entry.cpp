#include "platform/linux/applications/desktop_entry.h"

#include <utility>

#include "platform/linux/applications/key_file.h"

namespace tavik::platform::applications {

std::optional<DesktopEntry> parseDesktopEntry(std::string id, const std::string& text) {
  constexpr const char* kGroup = "Desktop Entry";
  const auto file = parseKeyFile(text);
  const bool isApplication = file && plainString(file, kGroup, "Type") == "Application";
  if (!isApplication || boolean(file, kGroup, "Hidden")) return std::nullopt;
  return DesktopEntry{.id = std::move(id),
                      .name = localeString(file, kGroup, "Name").value_or(""),
                      .startupClass = plainString(file, kGroup, "StartupWMClass").value_or(""),
                      .program = programOfCommandLine(plainString(file, kGroup, "Exec").value_or("")),
                      .noDisplay = boolean(file, kGroup, "NoDisplay")};
}

}  // namespace tavik::platform::applications
