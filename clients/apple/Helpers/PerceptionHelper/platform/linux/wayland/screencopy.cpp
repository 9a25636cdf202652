#include "platform/linux/wayland/screencopy.h"

#include "platform/linux/wayland/shm_buffer.h"

namespace tavik::platform::wayland {
namespace {

/// What is known of a frame so far.
struct Frame {
  BufferLayout layout = {};
  bool isDescribed = false;  ///< every kind of buffer has been offered
  bool isUpsideDown = false;
  bool isReady = false;
  bool hasFailed = false;
};

Frame& frameOf(void* data) { return *static_cast<Frame*>(data); }

constexpr std::uint32_t kVersionWithBufferDone = 3;

constexpr zwlr_screencopy_frame_v1_listener kFrameListener{
    .buffer =
        [](void* data, zwlr_screencopy_frame_v1* frame, std::uint32_t format, std::uint32_t width, std::uint32_t height,
           std::uint32_t stride) {
          frameOf(data).layout = {.format = format, .width = width, .height = height, .stride = stride};
          frameOf(data).isDescribed = zwlr_screencopy_frame_v1_get_version(frame) < kVersionWithBufferDone;
        },
    .flags =
        [](void* data, zwlr_screencopy_frame_v1*, std::uint32_t flags) {
          frameOf(data).isUpsideDown = (flags & ZWLR_SCREENCOPY_FRAME_V1_FLAGS_Y_INVERT) != 0;
        },
    .ready = [](void* data, zwlr_screencopy_frame_v1*, std::uint32_t, std::uint32_t,
                std::uint32_t) { frameOf(data).isReady = true; },
    .failed = [](void* data, zwlr_screencopy_frame_v1*) { frameOf(data).hasFailed = true; },
    .damage = [](void*, zwlr_screencopy_frame_v1*, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t) {},
    .linux_dmabuf = [](void*, zwlr_screencopy_frame_v1*, std::uint32_t, std::uint32_t, std::uint32_t) {},
    .buffer_done = [](void* data, zwlr_screencopy_frame_v1*) { frameOf(data).isDescribed = true; }};

}  // namespace

bool hasScreencopy(const WlConnection& connection) { return connection.has(zwlr_screencopy_manager_v1_interface); }

std::optional<imaging::Bitmap> copyOutput(WlConnection& connection, const Output& output) {
  if (!connection.isReachable()) return std::nullopt;
  const Owned<zwlr_screencopy_manager_v1> manager(
      connection.bindFirst<zwlr_screencopy_manager_v1>(zwlr_screencopy_manager_v1_interface, kVersionWithBufferDone));
  if (!manager) return std::nullopt;
  constexpr std::int32_t kWithoutCursor = 0;
  Frame frame;
  const Owned<zwlr_screencopy_frame_v1> proxy(
      zwlr_screencopy_manager_v1_capture_output(manager.get(), kWithoutCursor, output.proxy.get()));
  zwlr_screencopy_frame_v1_add_listener(proxy.get(), &kFrameListener, &frame);
  if (!connection.waitUntil([&frame] { return frame.isDescribed || frame.hasFailed; })) return std::nullopt;
  const auto buffer = frame.hasFailed ? ShmBuffer() : makeShmBuffer(connection, frame.layout);
  if (!buffer.proxy) return std::nullopt;
  zwlr_screencopy_frame_v1_copy(proxy.get(), buffer.proxy.get());
  const bool hasEnded = connection.waitUntil([&frame] { return frame.isReady || frame.hasFailed; });
  if (!hasEnded || frame.hasFailed) return std::nullopt;
  return pictureIn(buffer, orientationOf(output.transform, frame.isUpsideDown), imaging::AlphaMode::opaque);
}

}  // namespace tavik::platform::wayland
