#pragma once

#include <memory>

#include "platform/linux/wayland/wl_library.h"

namespace tavik::platform::wayland {

/// Ends an object of the protocol, on both sides.
struct DestroyObject {
  void operator()(ext_foreign_toplevel_handle_v1* object) const { ext_foreign_toplevel_handle_v1_destroy(object); }
  void operator()(ext_foreign_toplevel_image_capture_source_manager_v1* object) const {
    ext_foreign_toplevel_image_capture_source_manager_v1_destroy(object);
  }
  void operator()(ext_foreign_toplevel_list_v1* object) const { ext_foreign_toplevel_list_v1_destroy(object); }
  void operator()(ext_image_capture_source_v1* object) const { ext_image_capture_source_v1_destroy(object); }
  void operator()(ext_image_copy_capture_frame_v1* object) const { ext_image_copy_capture_frame_v1_destroy(object); }
  void operator()(ext_image_copy_capture_manager_v1* object) const {
    ext_image_copy_capture_manager_v1_destroy(object);
  }
  void operator()(ext_image_copy_capture_session_v1* object) const {
    ext_image_copy_capture_session_v1_destroy(object);
  }
  void operator()(ext_output_image_capture_source_manager_v1* object) const {
    ext_output_image_capture_source_manager_v1_destroy(object);
  }
  void operator()(org_kde_plasma_virtual_desktop* object) const { org_kde_plasma_virtual_desktop_destroy(object); }
  void operator()(org_kde_plasma_virtual_desktop_management* object) const {
    org_kde_plasma_virtual_desktop_management_destroy(object);
  }
  void operator()(org_kde_plasma_window* object) const { org_kde_plasma_window_destroy(object); }
  void operator()(org_kde_plasma_window_management* object) const { org_kde_plasma_window_management_destroy(object); }
  void operator()(wl_buffer* object) const { wl_buffer_destroy(object); }
  void operator()(wl_callback* object) const { wl_callback_destroy(object); }
  void operator()(wl_output* object) const { wl_output_destroy(object); }
  void operator()(wl_registry* object) const { wl_registry_destroy(object); }
  void operator()(wl_shm* object) const { wl_shm_destroy(object); }
  void operator()(wl_shm_pool* object) const { wl_shm_pool_destroy(object); }
  void operator()(zwlr_foreign_toplevel_handle_v1* object) const { zwlr_foreign_toplevel_handle_v1_destroy(object); }
  void operator()(zwlr_foreign_toplevel_manager_v1* object) const { zwlr_foreign_toplevel_manager_v1_destroy(object); }
  void operator()(zwlr_screencopy_frame_v1* object) const { zwlr_screencopy_frame_v1_destroy(object); }
  void operator()(zwlr_screencopy_manager_v1* object) const { zwlr_screencopy_manager_v1_destroy(object); }
  void operator()(zxdg_output_manager_v1* object) const { zxdg_output_manager_v1_destroy(object); }
  void operator()(zxdg_output_v1* object) const { zxdg_output_v1_destroy(object); }
};

/// Owns such an object, which has to end before the connection does.
template <class Object>
using Owned = std::unique_ptr<Object, DestroyObject>;

}  // namespace tavik::platform::wayland
