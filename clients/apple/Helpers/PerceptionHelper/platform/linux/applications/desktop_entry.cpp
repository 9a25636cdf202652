#include "platform/linux/applications/desktop_entry.h"

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <utility>

#include "platform/linux/applications/key_file.h"

namespace tavik::platform::applications {

namespace {

/// The base name of the program that the value of an Exec key starts; empty when it is malformed. Its first word may be
/// quoted, and in it some characters escaped (Desktop Entry Specification, "The Exec key").
std::string programOf(std::string_view commandLine) {
  commandLine.remove_prefix(std::min(commandLine.find_first_not_of(' '), commandLine.size()));
  const bool isQuoted = commandLine.starts_with('"');
  const char end = isQuoted ? '"' : ' ';
  std::string program;
  std::size_t at = isQuoted ? 1 : 0;
  for (; at < commandLine.size() && commandLine[at] != end; ++at) {
    if (commandLine[at] == '\\' && at + 1 < commandLine.size()) ++at;
    program += commandLine[at];
  }
  if (isQuoted && at >= commandLine.size()) return {};
  return program.substr(program.rfind('/') + 1);
}

}  // namespace

std::optional<DesktopEntry> parseDesktopEntry(std::string id, const std::string& text) {
  constexpr std::string_view kGroup = "Desktop Entry";
  const auto file = KeyFile::parse(text);
  const bool isApplication = file && file->string(kGroup, "Type") == "Application";
  if (!isApplication || file->boolean(kGroup, "Hidden")) return std::nullopt;
  return DesktopEntry{.id = std::move(id),
                      .name = file->localeString(kGroup, "Name", userLanguages()).value_or(""),
                      .startupClass = file->string(kGroup, "StartupWMClass").value_or(""),
                      .program = programOf(file->string(kGroup, "Exec").value_or("")),
                      .noDisplay = file->boolean(kGroup, "NoDisplay")};
}

}  // namespace tavik::platform::applications
