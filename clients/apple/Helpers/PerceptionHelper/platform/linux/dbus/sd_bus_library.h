#pragma once

#include <systemd/sd-bus.h>

#include "platform/posix/shared_library.h"

/// The functions of libsystemd that the program calls.
#define TAVIK_SD_BUS_FUNCTIONS(DO)   \
  DO(sd_bus_call_async)              \
  DO(sd_bus_close_unref)             \
  DO(sd_bus_is_ready)                \
  DO(sd_bus_message_append)          \
  DO(sd_bus_message_enter_container) \
  DO(sd_bus_message_exit_container)  \
  DO(sd_bus_message_get_error)       \
  DO(sd_bus_message_is_method_error) \
  DO(sd_bus_message_new_method_call) \
  DO(sd_bus_message_read)            \
  DO(sd_bus_message_read_basic)      \
  DO(sd_bus_message_set_auto_start)  \
  DO(sd_bus_message_skip)            \
  DO(sd_bus_message_unref)           \
  DO(sd_bus_negotiate_fds)           \
  DO(sd_bus_new)                     \
  DO(sd_bus_open_user)               \
  DO(sd_bus_process)                 \
  DO(sd_bus_set_address)             \
  DO(sd_bus_set_bus_client)          \
  DO(sd_bus_slot_unref)              \
  DO(sd_bus_start)                   \
  DO(sd_bus_wait)

namespace tavik::platform::dbus {

struct SdBus {
  static constexpr const char* kSoname = "libsystemd.so.0";
  TAVIK_LIBRARY_FUNCTIONS(TAVIK_SD_BUS_FUNCTIONS)
};

/// Null where libsystemd is not installed: then there are no buses.
inline const SdBus* sdBus() { return posix::loaded<SdBus>(); }

}  // namespace tavik::platform::dbus
