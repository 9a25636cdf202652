#include <array>
#include <cstdlib>
#include <limits>
#include <new>

#include <gtest/gtest.h>

#include "platform/imaging/pictures.h"

namespace {

constexpr std::size_t kUnlimited = std::numeric_limits<std::size_t>::max();
/// The largest block that `new` hands out.
std::size_t largestBlock = kUnlimited;

}  // namespace

void* operator new(std::size_t size) {
  void* block = size > largestBlock ? nullptr : std::malloc(size);
  return block ? block : throw std::bad_alloc();
}
void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }

namespace tavik::platform::imaging {
namespace {

constexpr std::int64_t kHuge = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kLowest = std::numeric_limits<std::int64_t>::min();

TEST(BitmapImage, IsNotMadeOfPixelsThatAreNotThere) {
  const Bitmap sound = painted({8, 4}, AlphaMode::opaque, noise);
  struct Case {
    std::string reason;
    PixelSize size;
    std::size_t rowBytes;
    bool made;
  };
  for (const auto& row : {
           Case{"sound", {8, 4}, 32, true},
           Case{"no width", {0, 4}, 32, false},
           Case{"negative height", {8, kLowest}, 32, false},
           Case{"too wide", {65536, 1}, std::size_t{4} * 65536, false},
           Case{"the width's bytes overflow", {kHuge, 1}, 32, false},
           Case{"rows cannot hold the width", {8, 4}, 31, false},
           Case{"rows times height overflow", {8, 4}, kUnlimited / 3, false},
       })
    EXPECT_EQ(makeImage({row.size, row.rowBytes, AlphaMode::opaque, sound.pixels}) != nullptr, row.made) << row.reason;
  EXPECT_FALSE(makeImage({{8, 4}, 32, AlphaMode::opaque, nullptr})) << "no pixels";
}

TEST(BitmapImage, IsRedrawnAtEverySizeThatABitmapCanHave) {
  const ImageRef image = makeImage(painted({8, 4}, AlphaMode::opaque, noise));
  struct Case {
    std::string reason;
    PixelSize size;
    bool redrawn;
  };
  for (const auto& row : {
           Case{"smaller", {5, 3}, true},
           Case{"longest side", {65535, 1}, true},
           Case{"a side that truncated to nothing", {5, 0}, false},
           Case{"negative", {-5, 3}, false},
           Case{"lowest", {kLowest, kLowest}, false},
           Case{"too long", {1, 65536}, false},
           Case{"the product overflows", {kHuge, kHuge}, false},
           Case{"valid sides, but 16 GiB", {65535, 65535}, false},
       }) {
    const ImageRef result = image->resized(row.size);
    EXPECT_EQ(result != nullptr, row.redrawn) << row.reason;
    EXPECT_EQ(result ? result->size() : PixelSize{}, row.redrawn ? row.size : PixelSize{}) << row.reason;
  }
}

TEST(BitmapImage, GivesNothingWhenMemoryRunsOut) {
  const ImageRef image = makeImage(painted({200, 200}, AlphaMode::premultiplied, noise));
  const auto answers = [&](std::size_t limit) {
    largestBlock = limit;
    const std::array done{image->resized({190, 190}) != nullptr, image->encoded(ImageType::png, {}).has_value(),
                          image->encoded(ImageType::jpeg, 1.0).has_value()};
    largestBlock = kUnlimited;
    return done;
  };
  EXPECT_EQ(answers(kUnlimited), (std::array{true, true, true}));
  EXPECT_EQ(answers(16384), (std::array{false, false, false}));
  EXPECT_EQ(answers(512), (std::array{false, false, false})) << "not even a row";
}

}  // namespace
}  // namespace tavik::platform::imaging
