#pragma once

#include <string_view>

namespace tavik::mcp {

/// The project's.
inline constexpr std::string_view kVersion = TAVIK_VERSION;

}  // namespace tavik::mcp
