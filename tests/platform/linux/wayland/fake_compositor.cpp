#include "fake_compositor.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <ext-foreign-toplevel-list-v1-server.h>
#include <ext-image-capture-source-v1-server.h>
#include <ext-image-copy-capture-v1-server.h>
#include <map>
#include <string>
#include <sys/socket.h>
#include <thread>
#include <utility>
#include <wayland-server.h>

namespace tavik::platform::wayland {

/// Everything but the constructor runs on the compositor's thread.
struct FakeCompositor::World {
  struct Session {
    int firstByte = 0;
    std::size_t step = 0;  ///< of the constraints
    bool hasCursor = false;
  };
  struct Frame {
    wl_resource* session = nullptr;
    wl_resource* buffer = nullptr;
  };
  struct Global {
    World* world = nullptr;
    const wl_interface* interface = nullptr;
    const void* requests = nullptr;
    void (*greet)(wl_resource*) = nullptr;  ///< whoever binds it; may be null
  };

  explicit World(CompositorScript itsScript);
  ~World();

  static World& of(wl_resource* resource) { return *static_cast<World*>(wl_resource_get_user_data(resource)); }
  static void destroy(wl_client*, wl_resource* resource) { wl_resource_destroy(resource); }

  wl_resource* make(wl_client* client, const wl_interface& interface, std::uint32_t id, const void* requests) {
    auto* const resource = wl_resource_create(client, &interface, 1, id);
    wl_resource_set_implementation(resource, requests, this, nullptr);
    return resource;
  }

  void announce(wl_resource* session) {
    const auto step = sessions[session].step;
    if (script.stopsSessions) return ext_image_copy_capture_session_v1_send_stopped(session);
    if (step >= script.constraints.size()) return;
    const auto& [width, height, formats] = script.constraints[step];
    ext_image_copy_capture_session_v1_send_buffer_size(session, width, height);
    for (const auto format : formats) ext_image_copy_capture_session_v1_send_shm_format(session, format);
    ext_image_copy_capture_session_v1_send_done(session);
  }

  void copy(wl_resource* resource) {
    const auto& frame = frames[resource];
    auto& session = sessions[frame.session];
    auto* const buffer = frame.buffer != nullptr ? wl_shm_buffer_get(frame.buffer) : nullptr;
    if (buffer != nullptr && !session.hasCursor) ++frameCount;
    if (script.neverCopies) return;
    const auto isTrue = session.step + 1 == script.constraints.size();
    if (script.failure >= 0 || !isTrue || buffer == nullptr) {
      if (!isTrue) ++session.step;
      if (!isTrue) announce(frame.session);
      const auto reason = script.failure >= 0 ? script.failure : 1;
      return ext_image_copy_capture_frame_v1_send_failed(resource, static_cast<std::uint32_t>(reason));
    }
    wl_shm_buffer_begin_access(buffer);
    auto* const bytes = static_cast<std::uint8_t*>(wl_shm_buffer_get_data(buffer));
    const auto count = wl_shm_buffer_get_stride(buffer) * wl_shm_buffer_get_height(buffer);
    for (int i = 0; i < count; ++i) bytes[i] = static_cast<std::uint8_t>(session.firstByte + i);
    wl_shm_buffer_end_access(buffer);
    ext_image_copy_capture_frame_v1_send_transform(resource, static_cast<std::uint32_t>(script.transform));
    ext_image_copy_capture_frame_v1_send_ready(resource);
  }

  CompositorScript script;
  wl_display* display = wl_display_create();
  std::map<wl_resource*, Session> sessions = {};
  std::map<wl_resource*, Frame> frames = {};
  std::array<Global, 5> globals = {};
  std::atomic<int> frameCount = 0;
  std::thread thread = {};
};

FakeCompositor::World::World(CompositorScript itsScript) : script(std::move(itsScript)) {
  static const struct ext_image_copy_capture_frame_v1_interface kFrame {
    .destroy = &destroy,
    .attach_buffer = [](wl_client*, wl_resource* frame,
                        wl_resource* buffer) { of(frame).frames[frame].buffer = buffer; },
    .damage_buffer = [](wl_client*, wl_resource*, std::int32_t, std::int32_t, std::int32_t, std::int32_t) {},
    .capture = [](wl_client*, wl_resource* frame) { of(frame).copy(frame); }
  };
  static const struct ext_image_copy_capture_session_v1_interface kSession {
    .create_frame =
        [](wl_client* client, wl_resource* session, std::uint32_t id) {
          auto& world = of(session);
          world.frames[world.make(client, ext_image_copy_capture_frame_v1_interface, id, &kFrame)] = {session};
        },
    .destroy = &destroy
  };
  // Sources tell by their requests what they are of.
  static const struct ext_image_capture_source_v1_interface kOutputSource { .destroy = &destroy };
  static const struct ext_image_capture_source_v1_interface kWindowSource { .destroy = &destroy };
  static const struct ext_image_copy_capture_manager_v1_interface kManager {
    .create_session =
        [](wl_client* client, wl_resource* manager, std::uint32_t id, wl_resource* source, std::uint32_t options) {
          auto& world = of(manager);
          const bool isOfWindow =
              wl_resource_instance_of(source, &ext_image_capture_source_v1_interface, &kWindowSource) != 0;
          auto* const session = world.make(client, ext_image_copy_capture_session_v1_interface, id, &kSession);
          world.sessions[session] = {.firstByte = isOfWindow ? 100 : 0, .hasCursor = options != 0};
          world.announce(session);
        },
    .create_pointer_cursor_session = nullptr, .destroy = &destroy
  };
  static const struct ext_output_image_capture_source_manager_v1_interface kOutputSources {
    .create_source =
        [](wl_client* client, wl_resource* manager, std::uint32_t id, wl_resource*) {
          of(manager).make(client, ext_image_capture_source_v1_interface, id, &kOutputSource);
        },
    .destroy = &destroy
  };
  static const struct ext_foreign_toplevel_image_capture_source_manager_v1_interface kWindowSources {
    .create_source =
        [](wl_client* client, wl_resource* manager, std::uint32_t id, wl_resource*) {
          of(manager).make(client, ext_image_capture_source_v1_interface, id, &kWindowSource);
        },
    .destroy = &destroy
  };
  static const struct ext_foreign_toplevel_handle_v1_interface kHandle { .destroy = &destroy };
  static const struct ext_foreign_toplevel_list_v1_interface kList {
    .stop = [](wl_client*, wl_resource* list) { ext_foreign_toplevel_list_v1_send_finished(list); }, .destroy = &destroy
  };
  const auto describeOutput = [](wl_resource* output) {
    wl_output_send_geometry(output, 0, 0, 0, 0, 0, "", "", of(output).script.transform);
    wl_output_send_mode(output, WL_OUTPUT_MODE_CURRENT, 3, 2, 0);
  };
  const auto listWindow = [](wl_resource* list) {
    auto* const client = wl_resource_get_client(list);
    auto* const handle = of(list).make(client, ext_foreign_toplevel_handle_v1_interface, 0, &kHandle);
    ext_foreign_toplevel_list_v1_send_toplevel(list, handle);
    ext_foreign_toplevel_handle_v1_send_identifier(handle, "w1");
    ext_foreign_toplevel_handle_v1_send_done(handle);
  };
  globals = {Global{this, &wl_output_interface, nullptr, describeOutput},
             Global{this, &ext_image_copy_capture_manager_v1_interface, &kManager},
             Global{this, &ext_output_image_capture_source_manager_v1_interface, &kOutputSources},
             Global{this, &ext_foreign_toplevel_image_capture_source_manager_v1_interface, &kWindowSources},
             Global{this, &ext_foreign_toplevel_list_v1_interface, &kList, listWindow}};
  for (auto& global : globals) {
    wl_global_create(display, global.interface, 1, &global,
                     [](wl_client* client, void* data, std::uint32_t, std::uint32_t id) {
                       const auto& [world, interface, requests, greet] = *static_cast<Global*>(data);
                       auto* const resource = world->make(client, *interface, id, requests);
                       if (greet != nullptr) greet(resource);
                     });
  }
  wl_display_init_shm(display);
  wl_display_add_shm_format(display, WL_SHM_FORMAT_XBGR8888);
  std::array<int, 2> ends{};
  ::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data());
  wl_client_create(display, ends[0]);
  ::setenv("WAYLAND_SOCKET", std::to_string(ends[1]).c_str(), 1);
  thread = std::thread([this] { wl_display_run(display); });
}

FakeCompositor::World::~World() {
  wl_display_terminate(display);
  thread.join();
  wl_display_destroy_clients(display);
  wl_display_destroy(display);
}

FakeCompositor::FakeCompositor(CompositorScript script) : world_(std::make_unique<World>(std::move(script))) {}
FakeCompositor::~FakeCompositor() = default;

int FakeCompositor::frameCount() const { return world_->frameCount; }

}  // namespace tavik::platform::wayland
