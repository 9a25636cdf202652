#pragma once

#include <string>
#include <string_view>

namespace tavik::platform {

/// The standard streams of the process (NSFileHandle). A stream that is closed, full or broken is no failure of the
/// caller's: reading ends, and what cannot be written is dropped.
struct StandardStreams {
  virtual ~StandardStreams() = default;
  /// Everything up to the end of standard input. Blocks until the writer closes it.
  virtual std::string readInputToEnd() = 0;
  /// Writes all of `bytes` to standard output. Blocks until the reader has taken them.
  virtual void writeOutput(std::string_view bytes) = 0;
  /// The same, to standard error.
  virtual void writeError(std::string_view bytes) = 0;
  /// Has `output` written to standard output with a line feed, and the process end with status 0, where it cannot go on
  /// before its own output has begun: when memory fails, a library gives up, or 10 s have passed since the end of the
  /// input. `output` outlives the process, and replaces what was set before.
  virtual void setLastResort(std::string_view output) = 0;
};

}  // namespace tavik::platform
