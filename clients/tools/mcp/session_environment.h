#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tavik::mcp {

/// The environment that programs are started with, and what is told of it.
struct SessionEnvironment {
  std::vector<std::string> variables = {};  ///< NAME=VALUE each
  std::string note = {};                    ///< what was borrowed, and from where; empty when nothing was
};

/// This process's environment. Assistants often start servers without the variables of the desktop: where it names no
/// display, those are taken from the nearest ancestor of the same user that does (proc(5), /proc/PID/environ).
SessionEnvironment sessionEnvironment();

/// The variables of the desktop among these; empty when they name no display.
std::vector<std::string> desktopVariables(const std::vector<std::string>& variables);

/// The entries of such a file, each ended by a NUL.
std::vector<std::string> variablesOf(std::string_view environ);

}  // namespace tavik::mcp
