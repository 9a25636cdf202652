#include "platform/linux/wayland/image_copy_capture.h"

#include <chrono>
#include <utility>

#include "platform/linux/wayland/shm_buffer.h"
#include "platform/linux/wayland/toplevel_handle.h"
#include "platform/posix/run_time.h"

namespace tavik::platform::wayland {
namespace {

using imaging::AlphaMode;
using imaging::Bitmap;

constexpr std::uint32_t kVersion = 1;  // of all the interfaces here

/// What a session wants of a buffer.
struct Constraints {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::optional<std::uint32_t> format = {};  ///< the first that is read
};

/// What is known of a session so far.
struct Session {
  Constraints coming = {};  ///< not all of them have been told
  std::optional<Constraints> constraints = {};
  bool isStopped = false;
};

Session& sessionOf(void* data) { return *static_cast<Session*>(data); }

constexpr ext_image_copy_capture_session_v1_listener kSessionListener{
    .buffer_size =
        [](void* data, ext_image_copy_capture_session_v1*, std::uint32_t width, std::uint32_t height) {
          sessionOf(data).coming.width = width;
          sessionOf(data).coming.height = height;
        },
    .shm_format =
        [](void* data, ext_image_copy_capture_session_v1*, std::uint32_t format) {
          auto& chosen = sessionOf(data).coming.format;
          if (!chosen && isReadable(format)) chosen = format;
        },
    .dmabuf_device = [](void*, ext_image_copy_capture_session_v1*, wl_array*) {},
    .dmabuf_format = [](void*, ext_image_copy_capture_session_v1*, std::uint32_t, wl_array*) {},
    .done =
        [](void* data, ext_image_copy_capture_session_v1*) {
          sessionOf(data).constraints = std::exchange(sessionOf(data).coming, {});
        },
    .stopped = [](void* data, ext_image_copy_capture_session_v1*) { sessionOf(data).isStopped = true; }};

/// What is known of a frame so far.
struct Frame {
  Transform transform = WL_OUTPUT_TRANSFORM_NORMAL;
  bool isReady = false;
  bool hasFailed = false;
  bool isWorthAnother = false;  ///< it has failed, and the next one may not
};

Frame& frameOf(void* data) { return *static_cast<Frame*>(data); }

constexpr ext_image_copy_capture_frame_v1_listener kFrameListener{
    .transform = [](void* data, ext_image_copy_capture_frame_v1*,
                    std::uint32_t transform) { frameOf(data).transform = static_cast<Transform>(transform); },
    .damage = [](void*, ext_image_copy_capture_frame_v1*, std::int32_t, std::int32_t, std::int32_t, std::int32_t) {},
    .presentation_time = [](void*, ext_image_copy_capture_frame_v1*, std::uint32_t, std::uint32_t, std::uint32_t) {},
    .ready = [](void* data, ext_image_copy_capture_frame_v1*) { frameOf(data).isReady = true; },
    .failed =
        [](void* data, ext_image_copy_capture_frame_v1*, std::uint32_t reason) {
          frameOf(data).hasFailed = true;
          frameOf(data).isWorthAnother = reason == EXT_IMAGE_COPY_CAPTURE_FRAME_V1_FAILURE_REASON_BUFFER_CONSTRAINTS;
        }};

/// A buffer as the session wants it now; null members when there is none that is read.
ShmBuffer bufferFor(WlConnection& connection, const Constraints& constraints) {
  constexpr std::uint32_t kBytesPerPixel = 4;
  if (!constraints.format) return {};
  return makeShmBuffer(connection, {.format = *constraints.format,
                                    .width = constraints.width,
                                    .height = constraints.height,
                                    .stride = constraints.width * kBytesPerPixel});
}

/// One try. `frame` says how it went.
std::optional<Bitmap> copyFrame(WlConnection& connection, ext_image_copy_capture_session_v1* proxy,
                                const Session& session, Frame& frame, AlphaMode alpha) {
  const auto buffer = bufferFor(connection, *session.constraints);
  if (!buffer.proxy) return std::nullopt;
  const Owned<ext_image_copy_capture_frame_v1> frameProxy(ext_image_copy_capture_session_v1_create_frame(proxy));
  ext_image_copy_capture_frame_v1_add_listener(frameProxy.get(), &kFrameListener, &frame);
  ext_image_copy_capture_frame_v1_attach_buffer(frameProxy.get(), buffer.proxy.get());
  ext_image_copy_capture_frame_v1_damage_buffer(frameProxy.get(), 0, 0, static_cast<std::int32_t>(buffer.layout.width),
                                                static_cast<std::int32_t>(buffer.layout.height));
  ext_image_copy_capture_frame_v1_capture(frameProxy.get());
  connection.waitUntil([&frame] { return frame.isReady || frame.hasFailed; });
  return frame.isReady ? pictureIn(buffer, orientationOf(frame.transform, false), alpha) : std::nullopt;
}

/// Tries again when the source has changed its size meanwhile, a few times, for a while.
std::optional<Bitmap> copySource(WlConnection& connection, ext_image_capture_source_v1* source, AlphaMode alpha) {
  constexpr int kTries = 3;
  constexpr std::chrono::milliseconds kPatience{500};
  constexpr std::uint32_t kWithoutCursor = 0;
  const Owned<ext_image_copy_capture_manager_v1> manager(
      connection.bindFirst<ext_image_copy_capture_manager_v1>(ext_image_copy_capture_manager_v1_interface, kVersion));
  if (!manager) return std::nullopt;
  Session session;
  const Owned<ext_image_copy_capture_session_v1> proxy(
      ext_image_copy_capture_manager_v1_create_session(manager.get(), source, kWithoutCursor));
  ext_image_copy_capture_session_v1_add_listener(proxy.get(), &kSessionListener, &session);
  const bool isAnswered = connection.waitUntil([&session] { return session.constraints || session.isStopped; });
  if (!isAnswered) return std::nullopt;
  const auto end = std::chrono::steady_clock::now() + posix::withinRunTime(kPatience);
  for (int i = 0; i < kTries && !session.isStopped; ++i) {
    Frame frame;
    auto picture = copyFrame(connection, proxy.get(), session, frame, alpha);
    if (picture) return picture;
    if (!frame.isWorthAnother || std::chrono::steady_clock::now() > end) break;
  }
  return std::nullopt;
}

}  // namespace

bool hasImageCopyCapture(const WlConnection& connection) {
  return connection.has(ext_image_copy_capture_manager_v1_interface) &&
         connection.has(ext_output_image_capture_source_manager_v1_interface);
}

std::optional<Bitmap> copyOutputImage(WlConnection& connection, const Output& output) {
  if (!connection.isReachable()) return std::nullopt;
  const Owned<ext_output_image_capture_source_manager_v1> sources(
      connection.bindFirst<ext_output_image_capture_source_manager_v1>(
          ext_output_image_capture_source_manager_v1_interface, kVersion));
  if (!sources) return std::nullopt;
  const Owned<ext_image_capture_source_v1> source(
      ext_output_image_capture_source_manager_v1_create_source(sources.get(), output.proxy.get()));
  return copySource(connection, source.get(), AlphaMode::opaque);
}

std::optional<Bitmap> copyToplevelImage(WlConnection& connection, std::string_view identifier) {
  if (!connection.isReachable()) return std::nullopt;
  const Owned<ext_foreign_toplevel_image_capture_source_manager_v1> sources(
      connection.bindFirst<ext_foreign_toplevel_image_capture_source_manager_v1>(
          ext_foreign_toplevel_image_capture_source_manager_v1_interface, kVersion));
  const auto handle = sources ? toplevelHandle(connection, identifier) : nullptr;
  if (!handle) return std::nullopt;
  const Owned<ext_image_capture_source_v1> source(
      ext_foreign_toplevel_image_capture_source_manager_v1_create_source(sources.get(), handle->proxy.get()));
  return copySource(connection, source.get(), AlphaMode::premultiplied);
}

}  // namespace tavik::platform::wayland
