#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <thread>

#include "platform/imaging/row_scaler.h"

namespace tavik::platform::imaging {

/// The rows of a bitmap at another size, from the top down, made while they are asked for: few of them are in memory
/// at a time, and for a large bitmap a second processor makes the next ones while the caller works on the last.
class ScaledRows {
 public:
  /// Of a bitmap that outlives it; both sizes are valid ones of pictures. Throws std::bad_alloc.
  ScaledRows(const Bitmap& source, PixelSize size);
  ~ScaledRows();
  ScaledRows(const ScaledRows&) = delete;
  ScaledRows& operator=(const ScaledRows&) = delete;

  /// The next row, valid until the one after it is asked for. There are as many as the size says.
  const std::uint8_t* next();

 private:
  /// Rows are made in strips; the ring holds kRoom of them.
  static constexpr std::size_t kRowsPerStrip = 8, kRoom = 16;

  void startHelper();
  void help();
  /// A strip that nobody has begun and that there is room for.
  std::optional<std::size_t> claim();
  void make(std::size_t strip, RowScaler::Workspace& workspace);
  std::uint8_t* rowAt(std::size_t y) { return rows_.get() + y % (kRowsPerStrip * kRoom) * rowBytes_; }

  RowScaler scaler_;
  std::size_t height_;
  std::size_t strips_;
  std::size_t rowBytes_;
  std::unique_ptr<std::uint8_t[]> rows_;
  std::size_t nextRow_ = 0;
  std::atomic<std::size_t> claimed_ = 0;   ///< strips that somebody has begun
  std::atomic<std::size_t> released_ = 0;  ///< strips that the caller is done with
  /// For each place of the ring, the number of the last strip made there, counted from 1.
  std::array<std::atomic<std::size_t>, kRoom> made_ = {};
  RowScaler::Workspace workspace_;
  RowScaler::Workspace helpersWorkspace_;
  std::thread helper_;
};

/// The whole bitmap resampled to exactly `size` with a Lanczos filter of three lobes, in the same alpha mode; colour
/// never exceeds its alpha. Both sizes are valid ones of pictures. Throws std::bad_alloc.
Bitmap scaled(const Bitmap& source, PixelSize size);

}  // namespace tavik::platform::imaging
