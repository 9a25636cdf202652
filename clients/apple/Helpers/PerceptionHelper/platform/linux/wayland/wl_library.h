#pragma once

#include <wayland-client-core.h>

#include "platform/posix/shared_library.h"

/// The functions of libwayland-client that the program calls.
#define TAVIK_WAYLAND_FUNCTIONS(DO) \
  DO(wl_display_cancel_read)        \
  DO(wl_display_connect)            \
  DO(wl_display_disconnect)         \
  DO(wl_display_dispatch_pending)   \
  DO(wl_display_flush)              \
  DO(wl_display_get_error)          \
  DO(wl_display_get_fd)             \
  DO(wl_display_prepare_read)       \
  DO(wl_display_read_events)        \
  DO(wl_log_set_handler_client)     \
  DO(wl_proxy_add_listener)         \
  DO(wl_proxy_destroy)              \
  DO(wl_proxy_get_version)          \
  DO(wl_proxy_marshal_flags)

namespace tavik::platform::wayland {

struct WlClient {
  static constexpr const char* kSoname = "libwayland-client.so.0";
  TAVIK_LIBRARY_FUNCTIONS(TAVIK_WAYLAND_FUNCTIONS)
};

/// Null where libwayland-client is not installed: then there are no compositors.
inline const WlClient* wlClient() { return posix::loaded<WlClient>(); }

}  // namespace tavik::platform::wayland

// What wayland-scanner makes calls these by name.
#define wl_proxy_add_listener tavik::platform::wayland::wlClient()->wl_proxy_add_listener
#define wl_proxy_destroy tavik::platform::wayland::wlClient()->wl_proxy_destroy
#define wl_proxy_get_version tavik::platform::wayland::wlClient()->wl_proxy_get_version
#define wl_proxy_marshal_flags tavik::platform::wayland::wlClient()->wl_proxy_marshal_flags

#include <ext-foreign-toplevel-list-v1.h>
#include <ext-image-capture-source-v1.h>
#include <ext-image-copy-capture-v1.h>
#include <plasma-virtual-desktop.h>
#include <plasma-window-management.h>
#include <wayland.h>
#include <wlr-foreign-toplevel-management-unstable-v1.h>
#include <wlr-screencopy-unstable-v1.h>
#include <xdg-output-unstable-v1.h>

#undef wl_proxy_add_listener
#undef wl_proxy_destroy
#undef wl_proxy_get_version
#undef wl_proxy_marshal_flags
