#include "platform/linux/applications/process_evidence.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstddef>
#include <filesystem>
#include <optional>
#include <string_view>
#include <system_error>

#include "platform/linux/applications/key_file.h"
#include "platform/linux/applications/proc_path.h"
#include "platform/posix/regular_file.h"
#include "platform/posix/within.h"
#include "text/utf8.h"

namespace tavik::platform::applications {
namespace {

constexpr std::size_t kLargestFile = std::size_t{64} * 1024;

/// A sandbox may have a file system of its own that never answers; after the first such one, none is asked any more.
std::optional<std::string> sandboxFile(std::int32_t processID) {
  constexpr std::chrono::milliseconds kPatience{500};
  static bool isSilent = false;
  if (isSilent) return std::nullopt;
  const auto read = [path = procPath(processID, "root/.flatpak-info")] {
    return posix::readRegularFile(path, kLargestFile);
  };
  const auto text = posix::within(kPatience, read);
  isSilent = !text;
  return text.value_or(std::nullopt);
}

/// What Flatpak has written into the sandbox of a process (flatpak-metadata(5)).
std::string flatpakInfo(std::int32_t processID, std::string_view group, std::string_view key) {
  const auto text = sandboxFile(processID);
  const auto file = text ? KeyFile::parse(*text) : std::nullopt;
  return file ? file->string(group, key).value_or("") : "";
}

/// The text without what follows this character for the last time; empty without one.
std::string_view beforeLast(char separator, std::string_view text) {
  const auto end = text.rfind(separator);
  return text.substr(0, end == std::string_view::npos ? 0 : end);
}

/// What a unit's name means where it has `\xNN` for a character (systemd.unit(5)).
std::string unescaped(std::string_view name) {
  constexpr std::size_t kLength = 4;
  constexpr int kHexadecimal = 16;
  std::string result;
  while (!name.empty()) {
    std::uint8_t byte = 0;
    const auto digits = name.starts_with("\\x") ? name.substr(2, 2) : std::string_view();
    const auto* const end = digits.data() + digits.size();
    const bool isEscape = digits.size() == 2 && std::from_chars(digits.data(), end, byte, kHexadecimal).ptr == end;
    result += isEscape ? static_cast<char>(byte) : name.front();
    name.remove_prefix(isEscape ? kLength : 1);
  }
  return result;
}

/// Empty when the unit, a folder of a control group's path, is none that a desktop environment started for one.
std::string applicationOfOneUnit(std::string_view unit) {
  constexpr std::string_view kPrefix = "app-", kScope = ".scope", kService = ".service";
  if (!unit.starts_with(kPrefix)) return "";
  unit.remove_prefix(kPrefix.size());
  if (unit.ends_with(kScope)) {
    unit = beforeLast('-', unit);
  } else if (unit.ends_with(kService)) {
    unit.remove_suffix(kService.size());
    unit = unit.substr(0, unit.find('@'));
  } else {
    return "";
  }
  return unescaped(unit.substr(unit.rfind('-') + 1));
}

}  // namespace

std::string applicationOfUnit(std::string_view controlGroups) {
  std::string application;
  while (!controlGroups.empty() && application.empty()) {
    const auto end = std::min(controlGroups.find_first_of("/\n"), controlGroups.size());
    application = applicationOfOneUnit(controlGroups.substr(0, end));
    controlGroups.remove_prefix(std::min(end + 1, controlGroups.size()));
  }
  return text::toValidUTF8(application);
}

std::string unitApplicationID(std::int32_t processID) {
  return applicationOfUnit(posix::readRegularFile(procPath(processID, "cgroup"), kLargestFile).value_or(""));
}

std::string flatpakID(std::int32_t processID) { return flatpakInfo(processID, "Application", "name"); }

std::string flatpakInstance(std::int32_t processID) { return flatpakInfo(processID, "Instance", "instance-id"); }

std::string executableName(std::int32_t processID) {
  constexpr std::string_view kReplaced = " (deleted)";
  std::error_code error;
  auto name = std::filesystem::read_symlink(procPath(processID, "exe"), error).filename().string();
  if (name.ends_with(kReplaced)) name.resize(name.size() - kReplaced.size());
  return text::toValidUTF8(name);
}

std::string processName(std::int32_t processID) {
  const auto name = posix::readRegularFile(procPath(processID, "comm"), kLargestFile).value_or("");
  return text::toValidUTF8(std::string_view(name).substr(0, name.find('\n')));
}

}  // namespace tavik::platform::applications
