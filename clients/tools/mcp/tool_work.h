#pragma once

#include <functional>
#include <optional>
#include <string>
#include <variant>

#include <boost/json/object.hpp>

#include "tools/mcp/capture_call.h"
#include "tools/mcp/child_process.h"
#include "tools/mcp/session_environment.h"

namespace tavik::mcp {

/// The programs that answer calls: paths, or names to be looked up in PATH.
struct Programs {
  std::string helper = {};
  std::string doctor = {};
};

/// How a call is answered: by what a program writes.
struct ToolWork {
  Command command = {};
  std::function<ToolResult(const ProgramOutput&)> resultOf = {};
};

/// What the tool of this name does with these arguments; the result itself where they are wrong. Nothing when there is
/// no such tool.
std::optional<std::variant<ToolWork, ToolResult>> toolWork(const std::string& name,
                                                           const boost::json::object& arguments,
                                                           const Programs& programs, const SessionEnvironment& session);

}  // namespace tavik::mcp
