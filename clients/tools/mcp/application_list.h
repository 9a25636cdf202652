#pragma once

#include "tools/mcp/capture_call.h"
#include "tools/mcp/child_process.h"

namespace tavik::mcp {

/// The applications in what `tavik-perception-doctor --json` says, a line each.
ToolResult applicationList(const ProgramOutput& said);

}  // namespace tavik::mcp
