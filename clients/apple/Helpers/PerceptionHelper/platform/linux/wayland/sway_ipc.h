#pragma once

#include <cstdint>
#include <optional>
#include <string>

/// The socket on which sway, and i3 before it, answer questions (sway-ipc(7)).
namespace tavik::platform::wayland {

/// The questions that are asked.
enum class SwayQuestion : std::uint32_t { outputs = 3, tree = 4 };

/// The answer, a text in JSON. Nothing when there is no such socket ($SWAYSOCK), or when the answer does not come in
/// time.
std::optional<std::string> askSway(SwayQuestion question);

}  // namespace tavik::platform::wayland
