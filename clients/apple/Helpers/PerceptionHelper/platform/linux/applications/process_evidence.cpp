#include "platform/linux/applications/process_evidence.h"

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

}  // namespace

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
