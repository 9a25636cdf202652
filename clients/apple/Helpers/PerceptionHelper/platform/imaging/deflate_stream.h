#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <span>

#include <isa-l/igzip_lib.h>

namespace tavik::platform::imaging {

/// Compresses bytes as they come to a zlib stream (RFC 1950). ISA-L, which does it, is loaded for the first one.
class DeflateStream {
 public:
  /// Throws std::bad_alloc.
  DeflateStream();
  /// False where ISA-L is not installed; then it compresses nothing.
  bool isUsable() const;

  /// Compresses more bytes, the last ones or not, and calls `consume` with whatever part of the stream is complete.
  template <class Consume>
  void add(std::span<const std::uint8_t> bytes, bool areLast, const Consume& consume) {
    begin(bytes, areLast);
    while (deflateSome()) consume(takeOutput());
    if (areLast) consume(takeOutput());
  }

 private:
  void begin(std::span<const std::uint8_t> bytes, bool areLast);
  /// True when the output is full; false when the bytes are used up.
  bool deflateSome();
  std::span<const std::uint8_t> takeOutput();

  struct State {
    isal_zstream stream = {};
    std::array<std::uint8_t, ISAL_DEF_LVL2_DEFAULT> level = {};
    std::array<std::uint8_t, std::size_t{1} << 16U> output = {};
  };
  std::unique_ptr<State> state_;
};

}  // namespace tavik::platform::imaging
