#pragma once

#include <chrono>
#include <string_view>

/// What the process says when it cannot go on, so that whoever waits for an answer gets one. Until its own output
/// begins, memory that fails, a library that gives up (SIGABRT, SIGTRAP), an invalid access and the end of its time
/// have `output` written to standard output, with a line feed, and the process end with status 0.
namespace tavik::platform::posix {

/// Sets or replaces `output`, which outlives the process; as long as it is empty, failures take their course. Signals
/// that are not at their default, as under a debugging tool, are left alone. Called by the main thread.
void setLastResort(std::string_view output);

/// The process has this long from now.
void limitTime(std::chrono::seconds limit);

/// Called before standard output is written to: from then on nothing else is written there. Does not return when
/// `output` is being written.
void beginOutput();

/// Forbids images of the process's memory: they would hold a screen.
void forbidCoreDumps();

}  // namespace tavik::platform::posix
