#pragma once

#include <cstdint>
#include <memory>
#include <vector>

namespace tavik::platform::wayland {

/// How a fake compositor answers.
struct CompositorScript {
  /// What a session wants of buffers.
  struct Constraints {
    std::uint32_t width = 3;
    std::uint32_t height = 2;
    std::vector<std::uint32_t> formats = {1};  ///< wl_shm.format; 1 is XRGB8888
  };
  /// Each is told after a frame that has failed for the one before it; the last is true. With none nothing is told.
  std::vector<Constraints> constraints = {{}};
  std::int32_t transform = 0;  ///< of the output and its frames (wl_output.transform)
  bool stopsSessions = false;  ///< at once
  int failure = -1;            ///< the reason for which every frame fails
  bool neverCopies = false;
};

/// A compositor with one output of 3x2 pixels, before it is turned, and one window, "w1" in its list, of which it gives
/// pictures by ext-image-copy-capture: the bytes of a buffer count up, the output's from 0 and the window's from 100.
/// Who connects next in this process connects to it. It runs on a thread of its own.
class FakeCompositor {
 public:
  explicit FakeCompositor(CompositorScript script);
  FakeCompositor(const FakeCompositor&) = delete;
  FakeCompositor& operator=(const FakeCompositor&) = delete;
  ~FakeCompositor();

  /// Frames that it was asked to copy, without the cursor, into a buffer.
  int frameCount() const;

 private:
  struct World;
  std::unique_ptr<World> world_;
};

}  // namespace tavik::platform::wayland
