#include "tools/mcp/session_environment.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <optional>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/posix/regular_file.h"

namespace tavik::mcp {
namespace {

using platform::posix::readRegularFile;

constexpr std::array<std::string_view, 6> kOfDesktop{
    "DISPLAY", "XAUTHORITY", "WAYLAND_DISPLAY", "SWAYSOCK", "DBUS_SESSION_BUS_ADDRESS", "XDG_RUNTIME_DIR"};

std::string_view nameOf(std::string_view variable) { return variable.substr(0, variable.find('=')); }

bool hasValue(std::string_view variable) { return variable.size() > nameOf(variable).size() + 1; }

std::string folderOf(std::int64_t process) { return std::string("/proc/").append(std::to_string(process)); }

/// Field 4 of "PID (NAME) STATE PARENT ...", where the name may hold anything (proc(5)).
std::int64_t parentOf(std::int64_t process) {
  constexpr std::size_t kLargest = 4096;
  const auto status = readRegularFile(folderOf(process) + "/stat", kLargest).value_or("");
  std::istringstream fields(status.substr(std::min(status.size(), status.rfind(')') + 1)));
  std::string state;
  std::int64_t parent = 0;
  fields >> state >> parent;
  return parent;
}

bool isOurs(std::int64_t process) {
  struct stat folder = {};
  return ::stat(folderOf(process).c_str(), &folder) == 0 && folder.st_uid == ::getuid();
}

std::vector<std::string> desktopVariablesOf(std::int64_t process) {
  constexpr std::size_t kLargest = std::size_t{1} << 20;
  const auto environ = readRegularFile(folderOf(process) + "/environ", kLargest);
  return environ ? desktopVariables(variablesOf(*environ)) : std::vector<std::string>();
}

std::string joinedNames(const std::vector<std::string>& variables) {
  std::string names;
  for (const auto& variable : variables) (names += names.empty() ? "" : ", ") += nameOf(variable);
  return names;
}

}  // namespace

std::vector<std::string> variablesOf(std::string_view environ) {
  std::vector<std::string> variables;
  while (!environ.empty()) {
    const auto end = std::min(environ.find('\0'), environ.size());
    if (end > 0) variables.emplace_back(environ.substr(0, end));
    environ.remove_prefix(std::min(end + 1, environ.size()));
  }
  return variables;
}

std::vector<std::string> desktopVariables(const std::vector<std::string>& variables) {
  std::vector<std::string> found;
  std::ranges::copy_if(variables, std::back_inserter(found), [](const std::string& variable) {
    return hasValue(variable) && std::ranges::find(kOfDesktop, nameOf(variable)) != kOfDesktop.end();
  });
  const auto namesDisplay = [](std::string_view variable) {
    return nameOf(variable) == "DISPLAY" || nameOf(variable) == "WAYLAND_DISPLAY";
  };
  return std::ranges::any_of(found, namesDisplay) ? found : std::vector<std::string>();
}

SessionEnvironment sessionEnvironment() {
  SessionEnvironment session;
  for (char** variable = ::environ; *variable != nullptr; ++variable) session.variables.emplace_back(*variable);
  if (!desktopVariables(session.variables).empty()) return session;
  for (auto process = static_cast<std::int64_t>(::getppid()); process > 1; process = parentOf(process)) {
    const auto borrowed = isOurs(process) ? desktopVariablesOf(process) : std::vector<std::string>();
    if (borrowed.empty()) continue;
    std::erase_if(session.variables, [&borrowed](const std::string& variable) {
      return std::ranges::find(borrowed, nameOf(variable), nameOf) != borrowed.end();
    });
    session.variables.insert(session.variables.end(), borrowed.begin(), borrowed.end());
    session.note = "This server was started without a display; ";
    session.note.append(joinedNames(borrowed)).append(" are those of process ").append(std::to_string(process));
    session.note.append(", which it was started by.");
    return session;
  }
  return session;
}

}  // namespace tavik::mcp
