#pragma once

#include <cstdint>
#include <span>

#include "platform/linux/applications/application_identity.h"
#include "platform/linux/wayland/native_window.h"

namespace tavik::platform::wayland {

/// Who a process is, by what is known of itself and by all of these windows of its, the one first that speaks for it.
applications::ApplicationIdentity identityOf(std::int32_t processID, std::span<const NativeWindow> windows,
                                             applications::DesktopEntryCatalog& catalog);

}  // namespace tavik::platform::wayland
