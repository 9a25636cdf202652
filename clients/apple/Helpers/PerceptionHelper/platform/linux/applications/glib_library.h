#pragma once

#include <glib.h>

#include "platform/posix/shared_library.h"

/// The functions of GLib that the program calls.
#define TAVIK_GLIB_FUNCTIONS(DO)   \
  DO(g_free)                       \
  DO(g_get_system_data_dirs)       \
  DO(g_get_user_data_dir)          \
  DO(g_key_file_get_boolean)       \
  DO(g_key_file_get_locale_string) \
  DO(g_key_file_get_string)        \
  DO(g_key_file_load_from_data)    \
  DO(g_key_file_new)               \
  DO(g_key_file_unref)             \
  DO(g_shell_parse_argv)           \
  DO(g_strfreev)

namespace tavik::platform::applications {

struct GLib {
  static constexpr const char* kSoname = "libglib-2.0.so.0";
  TAVIK_LIBRARY_FUNCTIONS(TAVIK_GLIB_FUNCTIONS)
};

/// Null where GLib is not installed: then there are no desktop entries.
inline const GLib* glib() { return posix::loaded<GLib>(); }

}  // namespace tavik::platform::applications
