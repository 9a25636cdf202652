#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>

namespace tavik::platform::applications {

/// The file's bytes, at most the first `limit`, read by a child process: for files whose reading may never end, and
/// hold up the end of the process that reads. Such a child is left behind after `patience`, or when the run may wait no
/// longer, and there is nothing then; nor is there where no process can be had.
std::optional<std::string> readInChild(const std::string& path, std::size_t limit, std::chrono::milliseconds patience);

}  // namespace tavik::platform::applications
