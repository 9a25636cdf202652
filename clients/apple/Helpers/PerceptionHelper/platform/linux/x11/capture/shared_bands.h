#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include <xcb/shm.h>

#include "platform/linux/x11/server/x_connection.h"

namespace tavik::platform::x11 {

/// A place in shared memory for one band of pixels. It is free again when nobody holds the pixels any more.
struct SharedPlace {
  xcb_shm_seg_t segment = XCB_NONE;
  std::uint32_t offset = 0;
  std::size_t byteCount = 0;
  std::shared_ptr<const std::uint8_t> pixels = {};
};

/// Memory that the server writes pixels to (MIT-SHM 1.2), which spares them the way through the connection. It has a
/// place for every band of a picture, so there is always a free one, but those that are not used take no memory. It is
/// single-threaded, as the connection is.
class SharedBands : public std::enable_shared_from_this<SharedBands> {
 public:
  /// Null where there is no memory, or where the server cannot share any with this process: on another machine, say.
  static std::shared_ptr<SharedBands> make(XConnection& connection, std::size_t bandBytes, std::size_t count);
  SharedBands(const SharedBands&) = delete;
  SharedBands& operator=(const SharedBands&) = delete;
  ~SharedBands();

  /// True when the server has it. Asked once a later request has been answered.
  bool isAttached() { return !connection_->hasFailed(attached_); }
  /// The first place that is free.
  SharedPlace take();

 private:
  SharedBands(XConnection& connection, int file, void* memory, std::size_t bandBytes, std::size_t count);

  std::shared_ptr<XConnection> connection_;
  const std::uint8_t* memory_;
  std::size_t bandBytes_;
  std::vector<bool> isTaken_;
  xcb_shm_seg_t segment_;
  xcb_void_cookie_t attached_;
};

}  // namespace tavik::platform::x11
