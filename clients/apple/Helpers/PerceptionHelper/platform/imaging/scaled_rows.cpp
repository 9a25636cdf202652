#include "platform/imaging/scaled_rows.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <system_error>

#include "platform/imaging/bitmap_row.h"

namespace tavik::platform::imaging {
namespace {

/// Smaller ones take less than a millisecond on one thread.
constexpr std::int64_t kLargeSource = 250'000;

}  // namespace

ScaledRows::ScaledRows(const Bitmap& source, PixelSize size)
    : scaler_(source, size),
      height_(static_cast<std::size_t>(size.height)),
      strips_((height_ + kRowsPerStrip - 1) / kRowsPerStrip),
      rowBytes_(static_cast<std::size_t>(size.width) * kBytesPerPixel),
      rows_(std::make_unique_for_overwrite<std::uint8_t[]>(std::min(height_, kRowsPerStrip * kRoom) * rowBytes_)),
      workspace_(scaler_.makeWorkspace()) {
  if (source.size.width * source.size.height >= kLargeSource && std::thread::hardware_concurrency() > 1) startHelper();
}

ScaledRows::~ScaledRows() {
  claimed_ = strips_;
  ++released_;
  released_.notify_one();
  if (helper_.joinable()) helper_.join();
}

/// Without a thread to be had, the caller makes all rows.
void ScaledRows::startHelper() {
  helpersWorkspace_ = scaler_.makeWorkspace();
  try {
    helper_ = std::thread(&ScaledRows::help, this);
  } catch (const std::system_error&) {
  }
}

void ScaledRows::help() {
  while (true) {
    const auto released = released_.load();
    if (const auto strip = claim()) {
      make(*strip, helpersWorkspace_);
    } else if (claimed_ == strips_) {
      return;
    } else {
      released_.wait(released);
    }
  }
}

std::optional<std::size_t> ScaledRows::claim() {
  auto strip = claimed_.load();
  while (strip < std::min(strips_, released_ + kRoom)) {
    if (claimed_.compare_exchange_weak(strip, strip + 1)) return strip;
  }
  return std::nullopt;
}

void ScaledRows::make(std::size_t strip, RowScaler::Workspace& workspace) {
  const auto end = std::min(height_, (strip + 1) * kRowsPerStrip);
  for (std::size_t y = strip * kRowsPerStrip; y < end; ++y) scaler_.scale(y, workspace, rowAt(y));
  auto& made = made_[strip % kRoom];
  made = strip + 1;
  made.notify_one();
}

const std::uint8_t* ScaledRows::next() {
  const auto strip = nextRow_ / kRowsPerStrip;
  if (nextRow_ % kRowsPerStrip == 0) {
    released_ = strip;
    released_.notify_one();
    auto& made = made_[strip % kRoom];
    for (auto seen = made.load(); seen != strip + 1; seen = made) {
      if (const auto other = claim()) {
        make(*other, workspace_);
      } else {
        made.wait(seen);
      }
    }
  }
  return rowAt(nextRow_++);
}

Bitmap scaled(const Bitmap& source, PixelSize size) {
  const auto rowBytes = static_cast<std::size_t>(size.width) * kBytesPerPixel;
  const auto height = static_cast<std::size_t>(size.height);
  const std::shared_ptr<std::uint8_t[]> pixels = std::make_shared_for_overwrite<std::uint8_t[]>(rowBytes * height);
  ScaledRows rows(source, size);
  for (std::size_t y = 0; y < height; ++y) std::memcpy(pixels.get() + y * rowBytes, rows.next(), rowBytes);
  return {size, rowBytes, source.alpha, {pixels, pixels.get()}};
}

}  // namespace tavik::platform::imaging
