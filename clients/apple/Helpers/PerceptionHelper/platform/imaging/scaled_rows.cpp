#include "platform/imaging/scaled_rows.h"

#include <algorithm>
#include <memory>
#include <system_error>

#include "platform/imaging/bitmap_row.h"

namespace tavik::platform::imaging {
namespace {

/// Smaller ones take less than a millisecond on one thread.
constexpr std::int64_t kLargeSource = 250'000;

}  // namespace

ScaledRows::ScaledRows(const BandedPicture& source, PixelSize size)
    : nextBand_(source.open()),
      sourceRows_(static_cast<std::size_t>(source.size.height)),
      scaler_(source.size, source.alpha, size),
      height_(static_cast<std::size_t>(size.height)),
      strips_((height_ + kRowsPerStrip - 1) / kRowsPerStrip),
      rowBytes_(static_cast<std::size_t>(size.width) * kBytesPerPixel),
      rows_(std::make_unique_for_overwrite<std::uint8_t[]>(std::min(height_, kRowsPerStrip * kRoom) * rowBytes_)),
      workspace_(scaler_.makeWorkspace()) {
  if (source.size.width * source.size.height >= kLargeSource && std::thread::hardware_concurrency() > 1) startHelper();
}

ScaledRows::~ScaledRows() {
  claimed_ = strips_;
  tellHelper();
  if (helper_.joinable()) helper_.join();
}

void ScaledRows::tellHelper() {
  ++told_;
  told_.notify_one();
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
    const auto told = told_.load();
    if (const auto strip = claim()) {
      make(*strip, helpersWorkspace_);
    } else if (claimed_ == strips_) {
      return;
    } else {
      told_.wait(told);
    }
  }
}

std::optional<std::size_t> ScaledRows::claim() {
  auto strip = claimed_.load();
  while (strip < std::min({strips_, released_ + kRoom, fetched_.load()})) {
    if (claimed_.compare_exchange_weak(strip, strip + 1)) return strip;
  }
  return std::nullopt;
}

void ScaledRows::make(std::size_t strip, RowScaler::Workspace& workspace) {
  for (std::size_t y = strip * kRowsPerStrip; y < endOf(strip); ++y) {
    scaler_.scale(y, sourceRows_.data(), workspace, rowAt(y));
  }
  auto& made = made_[strip % kRoom];
  made = strip + 1;
  made.notify_one();
}

bool ScaledRows::fetchFor(std::size_t strip) {
  constexpr std::size_t kAhead = kRoom / 2;
  while (!bands_.empty() && bands_.front().end <= scaler_.firstRowFor(strip * kRowsPerStrip)) bands_.pop_front();
  for (auto next = fetched_.load(); next < std::min(strips_, strip + kAhead); ++next) {
    while (fetchedRows_ < scaler_.endOfRowsFor(endOf(next) - 1)) {
      if (!fetchBand()) return false;
    }
    fetched_ = next + 1;
    tellHelper();
  }
  return true;
}

bool ScaledRows::fetchBand() {
  auto bitmap = nextBand_();
  if (!bitmap) return false;
  const auto count = std::min(static_cast<std::size_t>(bitmap->size.height), sourceRows_.size() - fetchedRows_);
  for (std::size_t y = 0; y < count; ++y) sourceRows_[fetchedRows_++] = rowOf(*bitmap, y);
  bands_.push_back({*std::move(bitmap), fetchedRows_});
  return true;
}

const std::uint8_t* ScaledRows::next() {
  const auto strip = nextRow_ / kRowsPerStrip;
  if (nextRow_ % kRowsPerStrip == 0) {
    released_ = strip;
    tellHelper();
    if (!fetchFor(strip)) return nullptr;
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

std::optional<Bitmap> scaled(const BandedPicture& source, PixelSize size) {
  ScaledRows rows(source, size);
  return bitmapOfRows(size, source.alpha, [&rows] { return rows.next(); });
}

}  // namespace tavik::platform::imaging
