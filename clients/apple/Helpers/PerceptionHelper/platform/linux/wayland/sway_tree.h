#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "platform/linux/wayland/native_window.h"

namespace tavik::platform::wayland {

/// The windows in sway's tree (sway-ipc(7), GET_TREE), front to back. Nothing when the text is no such tree.
std::optional<std::vector<NativeWindow>> windowsOfSwayTree(std::string_view tree);

}  // namespace tavik::platform::wayland
