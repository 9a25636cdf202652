#pragma once

#include <string>
#include <string_view>

/// Whole reads and writes over POSIX descriptors, blocking ones and others; interruptions by signals are no end.
namespace tavik::platform::posix {

/// What came up to the end of file, or up to the first error.
struct ReadResult {
  std::string bytes = {};
  bool isComplete = false;  ///< the end of file was reached
};

/// Reads to the end of file.
ReadResult readToEnd(int descriptor);

/// Writes all of `bytes`, or what the descriptor takes before its first error.
void writeAll(int descriptor, std::string_view bytes);

}  // namespace tavik::platform::posix
