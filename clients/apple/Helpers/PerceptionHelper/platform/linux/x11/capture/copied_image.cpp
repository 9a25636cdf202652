#include "platform/linux/x11/capture/copied_image.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <utility>

#include "platform/linux/x11/capture/server_image.h"
#include "platform/linux/x11/capture/shared_bands.h"

namespace tavik::platform::x11 {

using imaging::PixelRect;

namespace {

constexpr std::int64_t kMostPixelBytes = 4;

/// From so many bytes on, sharing memory takes less time than it saves. Measured.
constexpr std::int64_t kWorthSharing = 2 << 20;

/// What fits the caches of a processor, and how many of these are on their way: so the server never waits for us, and
/// has little to keep. Measured.
constexpr std::int64_t kBandBytes = 1 << 18;
constexpr std::size_t kBandsAhead = 2;

/// Owns a pixmap that holds a copy of a part of a drawable.
class CopyPixmap {
 public:
  CopyPixmap(XConnection& connection, xcb_drawable_t drawable, const PixelRect& part, std::uint8_t depth)
      : connection_(connection.shared_from_this()), pixmap_(xcb_generate_id(connection.xcb())) {
    auto* const xcb = connection.xcb();
    const auto width = static_cast<std::uint16_t>(part.width), height = static_cast<std::uint16_t>(part.height);
    created_ = xcb_create_pixmap_checked(xcb, depth, pixmap_, connection.root(), width, height);
    const xcb_gcontext_t context = xcb_generate_id(xcb);
    const std::uint32_t withWindowsInside[]{XCB_SUBWINDOW_MODE_INCLUDE_INFERIORS, 0};
    xcb_create_gc(xcb, context, pixmap_, XCB_GC_SUBWINDOW_MODE | XCB_GC_GRAPHICS_EXPOSURES, withWindowsInside);
    copied_ = xcb_copy_area_checked(xcb, drawable, pixmap_, context, static_cast<std::int16_t>(part.x),
                                    static_cast<std::int16_t>(part.y), 0, 0, width, height);
    xcb_free_gc(xcb, context);
  }
  CopyPixmap(const CopyPixmap&) = delete;
  CopyPixmap& operator=(const CopyPixmap&) = delete;
  ~CopyPixmap() { xcb_free_pixmap(connection_->xcb(), pixmap_); }

  XConnection& connection() const { return *connection_; }
  xcb_pixmap_t get() const { return pixmap_; }
  /// Once a later request has been answered.
  bool isMade() { return !connection_->hasFailed(created_) && !connection_->hasFailed(copied_); }

 private:
  std::shared_ptr<XConnection> connection_;
  xcb_pixmap_t pixmap_;
  xcb_void_cookie_t created_ = {};
  xcb_void_cookie_t copied_ = {};
};

/// Whether the server would give pixels of this part. Asked for no plane of it, it says so and sends none.
class ReadabilityRequest {
 public:
  ReadabilityRequest(XConnection& connection, xcb_drawable_t drawable, const PixelRect& part)
      : connection_(connection),
        cookie_(xcb_get_image(connection.xcb(), XCB_IMAGE_FORMAT_XY_PIXMAP, drawable, static_cast<std::int16_t>(part.x),
                              static_cast<std::int16_t>(part.y), static_cast<std::uint16_t>(part.width),
                              static_cast<std::uint16_t>(part.height), 0)) {}
  /// Waits for the answer; once. True for a drawable of this depth.
  bool isReadable(std::uint8_t depth) {
    const auto reply = connection_.reply(xcb_get_image_reply, cookie_);
    return reply && reply->depth == depth;
  }

 private:
  XConnection& connection_;
  xcb_get_image_cookie_t cookie_;
};

/// How a picture is cut into bands.
struct Bands {
  PixelSize size;
  std::int32_t rows;  ///< of each but the last

  std::size_t count() const { return static_cast<std::size_t>((size.height + rows - 1) / rows); }
  std::size_t bytes() const { return static_cast<std::size_t>(size.width * rows) * kMostPixelBytes; }
};

Bands bandsOf(PixelSize size) {
  const auto rows = std::max<std::int64_t>(1, kBandBytes / (size.width * kMostPixelBytes));
  return {.size = size, .rows = static_cast<std::int32_t>(std::min(rows, size.height))};
}

/// A picture in the server, and the way on which its bands come.
struct CopiedImage {
  std::shared_ptr<CopyPixmap> copy;
  imaging::PixelFormat format;
  Bands bands;
  std::shared_ptr<SharedBands> shared = {};  ///< null when they come through the connection
};

/// One pass over it, from the top down.
class BandReader {
 public:
  explicit BandReader(CopiedImage image) : image_(std::move(image)) {}

  std::optional<imaging::Bitmap> next() {
    const XWatchdog::Watch watch(image_.copy->connection().watchdog());
    while (asked_ < image_.bands.size.height && onTheirWay_.size() <= kBandsAhead) ask();
    if (onTheirWay_.empty()) return std::nullopt;
    auto band = onTheirWay_.front().bitmap(image_.format);
    onTheirWay_.pop_front();
    if (!band) end();  // what comes behind a gap would be taken for what is missing
    return band;
  }

 private:
  void ask() {
    const auto& [size, rows] = image_.bands;
    const PixelRect part{.x = 0,
                         .y = asked_,
                         .width = static_cast<std::int32_t>(size.width),
                         .height = std::min(rows, static_cast<std::int32_t>(size.height) - asked_)};
    onTheirWay_.emplace_back(image_.copy->connection(), image_.copy->get(), part,
                             image_.shared ? image_.shared->take() : SharedPlace{});
    asked_ += part.height;
  }

  void end() {
    asked_ = static_cast<std::int32_t>(image_.bands.size.height);
    onTheirWay_.clear();
  }

  CopiedImage image_;
  std::int32_t asked_ = 0;
  std::deque<ImageRequest> onTheirWay_ = {};
};

std::shared_ptr<SharedBands> sharedBandsFor(XConnection& connection, const Bands& bands) {
  const bool isWorthIt = bands.size.width * bands.size.height * kMostPixelBytes >= kWorthSharing;
  return isWorthIt ? SharedBands::make(connection, bands.bytes(), bands.count()) : nullptr;
}

}  // namespace

/// What can be read before and after the copy could be at its moment: a part that can not would be left as it is in the
/// copy, whatever that memory held before. Where the server has no room for a copy, the pixels come at once.
std::optional<imaging::BandedPicture> copyImage(XConnection& connection, xcb_drawable_t drawable, const PixelRect& part,
                                                xcb_visualid_t visual) {
  const auto format = pixelFormat(connection, visual);
  if (!format || isEmpty(part)) return std::nullopt;
  ReadabilityRequest before(connection, drawable, part);
  CopiedImage image{.copy = std::make_shared<CopyPixmap>(connection, drawable, part, format->depth),
                    .format = *format,
                    .bands = bandsOf({part.width, part.height})};
  image.shared = sharedBandsFor(connection, image.bands);
  ReadabilityRequest after(connection, drawable, part);
  const bool wasReadable = before.isReadable(format->depth), isReadable = after.isReadable(format->depth);
  if (!wasReadable || !isReadable) return std::nullopt;
  if (!image.copy->isMade()) {
    auto bitmap = readImage(connection, drawable, part, visual);
    return bitmap ? std::optional(imaging::banded(*std::move(bitmap))) : std::nullopt;
  }
  if (image.shared && !image.shared->isAttached()) image.shared = nullptr;
  return imaging::BandedPicture{
      .size = image.bands.size, .alpha = imaging::alphaModeOf(*format), .open = [image]() -> imaging::NextBand {
        return [reader = std::make_shared<BandReader>(image)] { return reader->next(); };
      }};
}

}  // namespace tavik::platform::x11
