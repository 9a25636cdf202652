#pragma once

#include <chrono>
#include <cstddef>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

/// Whole reads and writes over POSIX descriptors, blocking ones and others; interruptions by signals are no end.
namespace tavik::platform::posix {

/// What came up to the end of file, or up to the first error.
struct ReadResult {
  std::string bytes = {};
  bool isComplete = false;  ///< the end of file was reached
};

/// How much is read, and how long a descriptor that does not block is waited for.
struct ReadLimits {
  std::size_t bytes = std::numeric_limits<std::size_t>::max();
  std::size_t expected = 0;                                ///< how many bytes there will be, if that is known
  std::optional<std::chrono::milliseconds> patience = {};  ///< in all; no limit when absent
};

/// Reads to the end of file, which is not reached when there are more bytes than the limit, or when the patience ends.
ReadResult readToEnd(int descriptor, const ReadLimits& limits = {});

/// Exactly so many bytes, as they come; nothing when the other side ends first, or when the patience does.
std::optional<std::string> readExactly(int descriptor, std::size_t count, std::chrono::milliseconds patience);

/// Writes all of `bytes`, or what the descriptor takes before its first error.
void writeAll(int descriptor, std::string_view bytes);

}  // namespace tavik::platform::posix
