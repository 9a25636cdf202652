#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// What the proc file system tells about a process. Empty when it tells nothing: the process is gone, or another
/// user's.
namespace tavik::platform::applications {

/// The application's name by its Flatpak sandbox. Valid UTF-8.
std::string flatpakID(std::int32_t processID);

/// True where `mountInfo`, the text of /proc/PID/mountinfo (proc(5)), is that of a Flatpak sandbox: the root, and on it
/// the file that says what runs there, are file systems in memory. Of mounts in one place the last counts.
bool isFlatpaksMountTable(std::string_view mountInfo);

/// Which run of a Flatpak application the process belongs to: its own processes, and the proxy through which they reach
/// D-Bus, have it in common, and nobody else has. Valid UTF-8.
std::string flatpakInstance(std::int32_t processID);

/// The application for which a desktop environment started the unit of systemd in which the process runs. What that
/// application starts is in the same unit. Valid UTF-8.
std::string unitApplicationID(std::int32_t processID);

/// The application's id in the name of such a unit, of the form `app[-LAUNCHER]-ID-RANDOM.scope` or
/// `app[-LAUNCHER]-ID[@RANDOM].service` (systemd.io/DESKTOP_ENVIRONMENTS), where `controlGroups` is the text of
/// /proc/PID/cgroup (cgroups(7)). Empty when no unit there has such a name. Valid UTF-8.
std::string applicationOfUnit(std::string_view controlGroups);

/// The base name of the file that the process runs, also when an update has replaced that file. Valid UTF-8.
std::string executableName(std::int32_t processID);

/// The name of the script, jar or class that the process runs, where its program is an interpreter: by its command
/// line, which it can change. Valid UTF-8.
std::string scriptName(std::int32_t processID, const std::string& executable);

/// The name that the kernel has for the process, at most 15 bytes long. Valid UTF-8.
std::string processName(std::int32_t processID);

}  // namespace tavik::platform::applications
