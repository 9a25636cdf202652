#pragma once

#include <cstdint>
#include <string>

namespace tavik::platform::applications {

/// The path of a file of a process in the proc file system (proc(5)).
inline std::string procPath(std::int32_t processID, const char* name) {
  return "/proc/" + std::to_string(processID) + "/" + name;
}

}  // namespace tavik::platform::applications
