#include "platform/linux/applications/process_evidence.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstddef>
#include <filesystem>
#include <optional>
#include <string_view>
#include <system_error>
#include <vector>

#include "platform/linux/applications/interpreter.h"
#include "platform/linux/applications/key_file.h"
#include "platform/linux/applications/proc_path.h"
#include "platform/linux/applications/read_in_child.h"
#include "platform/posix/regular_file.h"
#include "text/utf8.h"

namespace tavik::platform::applications {
namespace {

constexpr std::size_t kLargestFile = std::size_t{64} * 1024;

/// Nothing is read where the process may have a file system that never answers: whoever waits for one cannot even be
/// ended. What is in memory, as Flatpak's file and the root that it lies in are, always answers.
std::optional<std::string> sandboxFile(std::int32_t processID) {
  constexpr std::size_t kLargestTable = std::size_t{1} << 20U;
  const auto mounts = posix::readRegularFile(procPath(processID, "mountinfo"), kLargestTable);
  if (!mounts || !isFlatpaksMountTable(*mounts)) return std::nullopt;
  return posix::readRegularFile(procPath(processID, "root/.flatpak-info"), kLargestFile);
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

/// The next word, taken from the text.
std::string_view takeUntil(char end, std::string_view& text) {
  const auto word = text.substr(0, text.find(end));
  text.remove_prefix(std::min(word.size() + 1, text.size()));
  return word;
}

struct Mount {
  std::string_view place = {};
  std::string_view type = {};  ///< of its file system
};

/// A line of the table: ID PARENT DEVICE ROOT PLACE OPTIONS [FIELD...] - TYPE SOURCE OPTIONS.
Mount mountOf(std::string_view line) {
  constexpr int kBeforePlace = 4;
  constexpr std::string_view kSeparator = " - ";
  for (int field = 0; field < kBeforePlace; ++field) takeUntil(' ', line);
  const auto place = takeUntil(' ', line);
  const auto separator = line.find(kSeparator);
  if (separator == std::string_view::npos) return {.place = place};
  line.remove_prefix(separator + kSeparator.size());
  return {.place = place, .type = takeUntil(' ', line)};
}

}  // namespace

bool isFlatpaksMountTable(std::string_view mountInfo) {
  bool rootIsInMemory = false, fileIsInMemory = false;
  while (!mountInfo.empty()) {
    const auto [place, type] = mountOf(takeUntil('\n', mountInfo));
    const bool isInMemory = type == "tmpfs";
    if (place == "/") rootIsInMemory = isInMemory;
    if (place == "/.flatpak-info") fileIsInMemory = isInMemory;
  }
  return rootIsInMemory && fileIsInMemory;
}

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

/// The command line lies in the memory of the process, which may in turn be a file that never answers (proc(5)).
std::string scriptName(std::int32_t processID, const std::string& executable) {
  constexpr std::size_t kLongestCommandLine = std::size_t{128} * 1024;
  constexpr std::chrono::milliseconds kPatience{400};
  if (!isInterpreter(executable)) return "";
  const auto text = readInChild(procPath(processID, "cmdline"), kLongestCommandLine, kPatience).value_or("");
  std::string_view rest = text;
  std::vector<std::string> commandLine;
  while (!rest.empty()) commandLine.emplace_back(takeUntil('\0', rest));
  if (!commandLine.empty()) commandLine.front() = executable;
  return text::toValidUTF8(scriptOf(commandLine));
}

std::string processName(std::int32_t processID) {
  const auto name = posix::readRegularFile(procPath(processID, "comm"), kLargestFile).value_or("");
  return text::toValidUTF8(std::string_view(name).substr(0, name.find('\n')));
}

}  // namespace tavik::platform::applications
