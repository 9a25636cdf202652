#pragma once

#include <array>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <span>
#include <vector>

#include "platform/imaging/banded_picture.h"
#include "platform/imaging/png_rows.h"

namespace tavik::platform::imaging {

/// Some rows of a picture as they stand in a PNG file before compression.
struct PNGStrip {
  std::vector<std::uint8_t> bytes = {};
  std::size_t length = 0;  ///< of what counts of them
  bool isLast = false;

  std::span<const std::uint8_t> rows() const { return std::span(bytes).first(length); }
};

/// Makes the strips of a picture one by one, from the top down.
class PNGStripMaker {
 public:
  /// Throws std::bad_alloc.
  PNGStripMaker(const BandedPicture& picture, bool translucent);
  /// The next strip. False when a row of it cannot be had. Throws std::bad_alloc.
  bool make(PNGStrip& strip);

 private:
  RowReader source_;
  PNGRows rows_;
  std::size_t rowsLeft_;
  std::size_t rowsPerStrip_;
};

/// A few strips on their way from the thread that makes them to the one that compresses them.
class PNGStripQueue {
 public:
  /// The strip to be made next; waits for room for it. Null when nobody wants it any more.
  PNGStrip* blank();
  /// That strip is made.
  void push();
  /// The next strip, valid until the one after it is asked for; waits for it. Null when no more come.
  const PNGStrip* next();
  /// Nobody waits from now on.
  void end();

 private:
  static constexpr std::size_t kRoom = 4;

  std::mutex mutex_;
  std::condition_variable isChanged_;
  std::array<PNGStrip, kRoom> strips_ = {};
  std::size_t made_ = 0, taken_ = 0, released_ = 0;  ///< strips, since the beginning
  bool isOver_ = false;
};

}  // namespace tavik::platform::imaging
