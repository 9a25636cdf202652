#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/linux/wayland/wl_connection.h"

namespace tavik::platform::wayland {

/// A window as the compositor lists it. Its events are written to it, so it stays where it is.
struct ToplevelHandle {
  std::string identifier = {};
  bool isClosed = false;
  Owned<ext_foreign_toplevel_handle_v1> proxy = {};
};

/// The window that has this identifier in the compositor's list (ext-foreign-toplevel-list). Null when there is none,
/// when the compositor has no such list, or when it does not answer.
std::unique_ptr<ToplevelHandle> toplevelHandle(WlConnection& connection, std::string_view identifier);

}  // namespace tavik::platform::wayland
