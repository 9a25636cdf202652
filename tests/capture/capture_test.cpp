#include <limits>
#include <span>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "capture/base64.h"
#include "capture/encode_image_data_url.h"
#include "capture/scaled_size.h"
#include "capture/select_surface.h"
#include "fake/fake_platform.h"
#include "table.h"

namespace tavik {
namespace {

TEST(Base64, FollowsTheStandardsVectors) {  // RFC 4648, section 10
  for (const auto& [text, expected] :
       {std::pair{"", ""}, {"f", "Zg=="}, {"fo", "Zm8="}, {"foobar", "Zm9vYmFy"}, {"\xFB\xFF\xBF", "+/+/"}}) {
    std::string result = "before ";
    appendBase64(std::as_bytes(std::span(std::string_view(text))), result);
    EXPECT_EQ(result, std::string("before ") + expected);
  }
}

TEST(EncodeImageDataURL, ScalesAndChoosesContainerAndQuality) {
  const Table<platform::PixelSize, std::int64_t, std::string, std::string> cases{
      {"no limit", {5000, 3000}, 0, "png", "png 5000x3000"},
      {"never enlarges", {10, 20}, 800, "png", "png 10x20"},
      {"truncates the short side", {1512, 982}, 800, "png", "png 800x519"},
      {"truncates the long side too, divided first", {1078, 700}, 800, "png", "png 799x519"},
      {"upright", {700, 1078}, 800, "jpeg", "jpeg 519x799 0.70"},
      {"too thin to be scaled", {801, 1}, 800, "png", "png 801x1"},
      {"no other name is PNG's", {10, 20}, 0, "pngx", "jpeg 10x20 -"},
  };
  for (const auto& [reason, size, longEdgePx, format, file] : cases) {
    auto url = "data:image/" + file.substr(0, file.find(' ')) + ";base64,";
    appendBase64(std::as_bytes(std::span(file)), url);
    EXPECT_EQ(encodeImageDataURL(fake::image(size), {longEdgePx, format, 0.7}), url) << reason;
  }
  EXPECT_EQ(scaledSize({5000, 3000}, -1), (platform::PixelSize{5000, 3000})) << "no limit either";
}

using platform::Rect;
using platform::Window;

constexpr std::int32_t kApp = 7;
constexpr std::int32_t kOther = 8;

const ResolvedTargetApp kTargetApp{fake::application(kApp, "a", "A")};

Window window(std::uint32_t id, std::int32_t pid, Rect frame, bool isOnScreen = true, std::int64_t layer = 0) {
  return {id, platform::OwningApplication{pid}, isOnScreen, layer, frame};
}

/// The chosen surface in a few words: "window 3 1000x600", "300x200 at 10,20 300x200", or the error's number.
std::string chosen(const SurfaceRequest& request, const std::vector<Window>& windows,
                   const platform::RunningApplicationRef& frontmost = {}) {
  fake::FakeDesktop desktop{.frontmost = frontmost};
  const platform::ShareableContent content{.displays = {{1, 1920, 1080}, {2, 5120, 2880}}, .windows = windows};
  const auto result = selectSurface(request, content, *fake::makePlatform(desktop).workspace);
  if (const auto* const error = std::get_if<CaptureImageError>(&result)) {
    return "error " + std::to_string(static_cast<int>(*error));
  }
  const auto& [filter, configuration, decidedBy] = std::get<Surface>(result);
  EXPECT_EQ(decidedBy, request.target == Target::focused_element ? frontmost : nullptr);
  EXPECT_TRUE(!configuration.showsCursor && configuration.queueDepth == 1 && filter.display.displayID == 1);
  std::ostringstream text;
  if (const auto& one = filter.includedWindow) text << "window " << one->windowID << " ";
  text << configuration.width << "x" << configuration.height;
  if (const auto& part = configuration.sourceRect) {
    text << " at " << part->x << "," << part->y << " " << part->width << "x" << part->height;
  }
  return text.str();
}

TEST(SelectSurface, ChoosesTheApplicationsWindow) {
  const Rect tiny{0, 0, 50, 50}, small{0, 0, 100, 100}, large{0, 0, 1000.7, 600.9}, huge{0, 0, 5000, 5000};
  const Rect narrow{0, 0, 99.9, 500}, flat{0, 0, 500, 99.9}, wide{0, 0, 60, 50},
      infinite{0, 0, std::numeric_limits<double>::infinity(), 200};
  const Window other = window(1, kOther, huge), nobodys{.windowID = 2, .isOnScreen = true, .frame = huge};
  const Window above = window(1, kApp, huge, true, 25), below = window(3, kApp, huge, true, -1);
  const Window minimized = window(1, kApp, huge, false), least = window(2, kApp, small);
  const Window middle = window(2, kApp, {0, 0, 200, 200});
  for (const auto& [reason, windows, expected] : Table<std::vector<Window>, std::string>{
           {"none of this process", {other, nobodys}, "error 2"},
           {"the size truncates", {other, window(2, kApp, large)}, "window 2 1000x600"},
           {"the largest", {window(1, kApp, small), window(2, kApp, large)}, "window 2 1000x600"},
           {"a small one beats larger ones on other layers", {above, least, below}, "window 2 100x100"},
           {"and a larger minimized one", {minimized, least}, "window 2 100x100"},
           {"just too small to be preferred", {window(1, kApp, narrow), least}, "window 2 100x100"},
           {"nor high enough", {window(1, kApp, flat), least}, "window 2 100x100"},
           {"the largest is not the widest", {window(1, kApp, {0, 0, 300, 100}), middle}, "window 2 200x200"},
           {"nor the highest", {window(1, kApp, {0, 0, 100, 300}), middle}, "window 2 200x200"},
           {"none preferred: the largest", {window(1, kApp, tiny), window(2, kApp, wide)}, "window 2 60x50"},
           {"the first of equals", {window(1, kApp, small), least}, "window 1 100x100"},
           {"minimized", {window(2, kApp, tiny), minimized}, "error 3"},
           {"no integer form", {window(1, kApp, infinite)}, "error 4"},
       }) {
    EXPECT_EQ(chosen({.target = Target::app, .targetApp = kTargetApp}, windows), expected) << reason;
  }
  EXPECT_EQ(chosen({.target = Target::app}, {window(1, kApp, large)}), "error 2") << "no application";
}

TEST(SelectSurface, ChoosesTheFrontmostWindowOrADisplayAsItIs) {
  const auto& front = kTargetApp.app;
  const Window other = window(1, kOther, {0, 0, 900, 900}), hidden = window(2, kApp, {0, 0, 500, 500}, false);
  const Window tiny = window(3, kApp, {0, 0, 40, 40}, true, 101), large = window(4, kApp, {0, 0, 900, 900});
  EXPECT_EQ(chosen({.target = Target::focused_element}, {other, hidden, tiny, large}, front), "window 3 40x40");
  EXPECT_EQ(chosen({.target = Target::focused_element}, {other, hidden}, front), "1920x1080");
  EXPECT_EQ(chosen({.target = Target::focused_element}, {large}), "1920x1080") << "nobody in front";
  EXPECT_EQ(chosen({.target = Target::screen, .targetApp = kTargetApp}, {large}, front), "1920x1080");
  const SurfaceRequest request{.target = Target::region, .region = Region{.x = -10, .y = 20, .w = 300, .h = 0}};
  EXPECT_EQ(chosen(request, {}), "300x0 at -10,20 300x0");
}

}  // namespace
}  // namespace tavik
