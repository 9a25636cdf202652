#include "capture/encode_image_data_url.h"

#include <string>
#include <tuple>

#include <gtest/gtest.h>

#include "capture/base64.h"
#include "capture/scaled_size.h"
#include "fake/fake_platform.h"

namespace tavik {
namespace {

std::string base64(std::string_view text) {
  std::string result = "x";
  appendBase64(std::as_bytes(std::span(text)), result);
  return result.substr(1);
}

TEST(Base64, FollowsTheStandardsVectors) {  // RFC 4648, section 10
  for (const auto& [text, expected] : {std::pair{"", ""},
                                       {"f", "Zg=="},
                                       {"fo", "Zm8="},
                                       {"foo", "Zm9v"},
                                       {"foobar", "Zm9vYmFy"},
                                       {"\xFB\xFF\xBF", "+/+/"}})
    EXPECT_EQ(base64(text), expected);
  EXPECT_EQ(base64(std::string(3000, '\0')), std::string(4000, 'A')) << "no line breaks";
}

TEST(ScaledSize, TruncatesAndNeverEnlarges) {
  using Case = std::tuple<std::string, platform::PixelSize, std::int64_t, platform::PixelSize>;
  for (const auto& [reason, size, longEdgePx, expected] : {
           Case{"no limit", {5000, 3000}, 0, {5000, 3000}},
           Case{"nor a negative one", {5000, 3000}, -1, {5000, 3000}},
           Case{"as large as the limit", {1600, 1000}, 1600, {1600, 1000}},
           Case{"smaller", {10, 20}, 800, {10, 20}},
           Case{"truncates the short side", {1512, 982}, 800, {800, 519}},
           Case{"truncates the long side too, divided first", {1078, 700}, 800, {799, 519}},
           Case{"upright", {700, 1078}, 800, {519, 799}},
           Case{"thin", {801, 1}, 800, {800, 0}},
       })
    EXPECT_EQ(scaledSize(size, longEdgePx), expected) << reason << ": " << size.width << "x" << size.height;
}

TEST(EncodeImageDataURL, ChoosesContainerQualityAndSize) {
  using Case = std::tuple<std::string, platform::PixelSize, ImageParameters, std::string, std::string>;
  for (const auto& [reason, size, parameters, type, file] : {
           Case{"PNG has no quality", {4, 3}, {0, "png", 0.7}, "png", "png 4x3"},
           Case{"JPEG has", {4, 3}, {0, "jpeg", 0.7}, "jpeg", "jpeg 4x3 0.70"},
           Case{"another case is JPEG without", {4, 3}, {0, "PNG", 0.7}, "jpeg", "jpeg 4x3 -"},
           Case{"so is another name", {4, 3}, {0, "jpg", 0.7}, "jpeg", "jpeg 4x3 -"},
           Case{"and no name", {4, 3}, {0, "", 0.7}, "jpeg", "jpeg 4x3 -"},
           Case{"scaled first", {1078, 700}, {800, "png", 0}, "png", "png 799x519"},
           Case{"what cannot be scaled stays", {801, 1}, {800, "png", 0}, "png", "png 801x1"},
       }) {
    const auto url = "data:image/" + type + ";base64," + base64(file);
    EXPECT_EQ(encodeImageDataURL(fake::image(size), parameters), url) << reason;
  }
}

}  // namespace
}  // namespace tavik
