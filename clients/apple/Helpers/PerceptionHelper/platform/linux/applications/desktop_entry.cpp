#include "platform/linux/applications/desktop_entry.h"

#include <utility>

#include "platform/linux/applications/key_file.h"

namespace tavik::platform::applications {

std::optional<DesktopEntry> parseDesktopEntry(std::string id, const std::string& text) {
  constexpr const char* group = "Desktop Entry";
  const auto file = parseKeyFile(text);
  if (!file || plainString(file, group, "Type") != "Application" || boolean(file, group, "Hidden")) return std::nullopt;
  return DesktopEntry{.id = std::move(id),
                      .name = localeString(file, group, "Name").value_or(""),
                      .startupClass = plainString(file, group, "StartupWMClass").value_or(""),
                      .program = programOfCommandLine(plainString(file, group, "Exec").value_or("")),
                      .noDisplay = boolean(file, group, "NoDisplay")};
}

}  // namespace tavik::platform::applications
