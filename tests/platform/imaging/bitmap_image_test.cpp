#include <array>
#include <cstdlib>
#include <limits>
#include <new>
#include <tuple>

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

constexpr std::int64_t kHuge = std::numeric_limits<std::int64_t>::max(), kLowest = -kHuge - 1;

TEST(BitmapImage, IsNotMadeOfPixelsThatAreNotThere) {
  const Bitmap sound = painted({8, 4}, AlphaMode::opaque, noise);
  EXPECT_TRUE(makeImage({{8, 4}, 32, AlphaMode::opaque, sound.pixels}));
  EXPECT_FALSE(makeImage({{8, 4}, 32, AlphaMode::opaque, nullptr})) << "no pixels";
  using Case = std::tuple<std::string, PixelSize, std::size_t>;
  for (const auto& [reason, size, rowBytes] : {
           Case{"no width", {0, 4}, 32},
           Case{"negative height", {8, kLowest}, 32},
           Case{"too wide", {65536, 1}, std::size_t{4} * 65536},
           Case{"the width's bytes overflow", {kHuge, 1}, 32},
           Case{"rows cannot hold the width", {8, 4}, 31},
           Case{"rows times height overflow", {8, 4}, kUnlimited / 3},
       })
    EXPECT_FALSE(makeImage({size, rowBytes, AlphaMode::opaque, sound.pixels})) << reason;
}

TEST(BitmapImage, IsRedrawnAtEverySizeThatABitmapCanHave) {
  const ImageRef image = makeImage(painted({8, 4}, AlphaMode::opaque, noise));
  for (const PixelSize size : {PixelSize{5, 3}, {65535, 1}}) EXPECT_EQ(image->resized(size)->size(), size);
  for (const PixelSize size : {PixelSize{5, 0}, {-5, 3}, {kLowest, kLowest}, {1, 65536}, {kHuge, kHuge}})
    EXPECT_FALSE(image->resized(size)) << size.width << " x " << size.height;
  EXPECT_FALSE(image->resized({65535, 65535})) << "valid sides, but 16 GiB";
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
