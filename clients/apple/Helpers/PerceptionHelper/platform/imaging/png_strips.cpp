#include "platform/imaging/png_strips.h"

#include <algorithm>

namespace tavik::platform::imaging {
namespace {

/// What fits the caches of a processor.
constexpr std::size_t kStripBytes = std::size_t{1} << 18U;

}  // namespace

PNGStripMaker::PNGStripMaker(const BandedPicture& picture, bool translucent)
    : source_(picture),
      rows_(picture.size.width, translucent),
      rowsLeft_(static_cast<std::size_t>(picture.size.height)),
      rowsPerStrip_(std::max<std::size_t>(1, kStripBytes / rows_.bytesPerRow())) {}

bool PNGStripMaker::make(PNGStrip& strip) {
  const auto count = std::min(rowsLeft_, rowsPerStrip_);
  strip.bytes.resize(count * rows_.bytesPerRow() + PNGRows::kOvershoot);
  strip.length = 0;
  for (std::size_t y = 0; y < count; ++y) {
    const auto* const row = source_.next();
    if (row == nullptr) return false;
    rows_.filter(row, strip.bytes.data() + strip.length);
    strip.length += rows_.bytesPerRow();
  }
  rowsLeft_ -= count;
  strip.isLast = rowsLeft_ == 0;
  return true;
}

PNGStrip* PNGStripQueue::blank() {
  std::unique_lock lock(mutex_);
  isChanged_.wait(lock, [this] { return isOver_ || made_ - released_ < kRoom; });
  return isOver_ ? nullptr : &strips_[made_ % kRoom];
}

void PNGStripQueue::push() {
  const std::lock_guard lock(mutex_);
  ++made_;
  isChanged_.notify_one();
}

const PNGStrip* PNGStripQueue::next() {
  std::unique_lock lock(mutex_);
  released_ = taken_;
  isChanged_.notify_one();
  isChanged_.wait(lock, [this] { return isOver_ || made_ > taken_; });
  return made_ > taken_ ? &strips_[taken_++ % kRoom] : nullptr;
}

void PNGStripQueue::end() {
  const std::lock_guard lock(mutex_);
  isOver_ = true;
  isChanged_.notify_one();
}

}  // namespace tavik::platform::imaging
