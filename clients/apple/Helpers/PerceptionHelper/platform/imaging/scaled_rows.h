#pragma once

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <thread>
#include <vector>

#include "platform/imaging/banded_picture.h"
#include "platform/imaging/row_scaler.h"

namespace tavik::platform::imaging {

/// The rows of a picture at another size, from the top down, made while they are asked for: few of them are in memory
/// at a time, nor more bands of the picture than it takes, and for a large one a second processor makes the next rows
/// while the caller works on the last, or waits for a band.
class ScaledRows {
 public:
  /// Both sizes are valid ones of pictures. Throws std::bad_alloc.
  ScaledRows(const BandedPicture& source, PixelSize size);
  ~ScaledRows();
  ScaledRows(const ScaledRows&) = delete;
  ScaledRows& operator=(const ScaledRows&) = delete;

  /// The next row, valid until the one after it is asked for. There are as many as the size says. Null when the picture
  /// cannot be had, then for good. Throws std::bad_alloc.
  const std::uint8_t* next();

 private:
  /// Rows are made in strips; the ring holds kRoom of them.
  static constexpr std::size_t kRowsPerStrip = 8, kRoom = 16;

  /// A band of the old picture, and the row of it that comes behind.
  struct Band {
    Bitmap bitmap;
    std::size_t end;
  };

  void startHelper();
  void help();
  void tellHelper();
  std::size_t endOf(std::size_t strip) const { return std::min(height_, (strip + 1) * kRowsPerStrip); }
  /// Lets go of what lies above what this strip is made of, and fetches what it and the next ones are. False when that
  /// cannot be had.
  bool fetchFor(std::size_t strip);
  bool fetchBand();
  /// A strip that nobody has begun, that can be made, and that there is room for.
  std::optional<std::size_t> claim();
  void make(std::size_t strip, RowScaler::Workspace& workspace);
  std::uint8_t* rowAt(std::size_t y) { return rows_.get() + y % (kRowsPerStrip * kRoom) * rowBytes_; }

  NextBand nextBand_;
  std::deque<Band> bands_;
  std::vector<const std::uint8_t*> sourceRows_;  ///< all of them, of which those in bands are valid
  std::size_t fetchedRows_ = 0;
  RowScaler scaler_;
  std::size_t height_;
  std::size_t strips_;
  std::size_t rowBytes_;
  std::unique_ptr<std::uint8_t[]> rows_;
  std::size_t nextRow_ = 0;
  std::atomic<std::size_t> claimed_ = 0;   ///< strips that somebody has begun
  std::atomic<std::size_t> fetched_ = 0;   ///< strips whose rows of the old picture are there
  std::atomic<std::size_t> released_ = 0;  ///< strips that the caller is done with
  std::atomic<std::size_t> told_ = 0;      ///< changes whenever there may be more for the helper to do
  /// For each place of the ring, the number of the last strip made there, counted from 1.
  std::array<std::atomic<std::size_t>, kRoom> made_ = {};
  RowScaler::Workspace workspace_;
  RowScaler::Workspace helpersWorkspace_;
  std::thread helper_;
};

/// The whole picture resampled to exactly `size` with a Lanczos filter of three lobes, in the same alpha mode; colour
/// never exceeds its alpha. Both sizes are valid ones of pictures. Nothing when its rows cannot be had. Throws
/// std::bad_alloc.
std::optional<Bitmap> scaled(const BandedPicture& source, PixelSize size);

}  // namespace tavik::platform::imaging
