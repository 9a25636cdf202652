#include <algorithm>
#include <chrono>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "fake_compositor.h"
#include "platform/imaging/bitmap_canvas.h"
#include "platform/linux/wayland/kwin_screenshot.h"
#include "platform/linux/wayland/native_desktop.h"
#include "platform/linux/wayland/outputs.h"
#include "platform/linux/wayland/sway_tree.h"
#include "platform/linux/wayland/wl_screen_capture.h"
#include "table.h"

namespace tavik::platform::wayland {
namespace {

std::string box(const char* key, int x, int y, int width, int height) {
  const auto side = [](const char* name, int value) {
    return std::string("\"") + name + "\":" + std::to_string(value);
  };
  return std::string("\"") + key + "\":{" + side("x", x) + "," + side("y", y) + "," + side("width", width) + "," +
         side("height", height) + "}";
}

/// A window of sway's tree with a title bar of 25 pixels and borders of 2; `more` begins with a comma.
std::string view(int id, int x, int y, int width, int height, const std::string& more = R"(,"visible":true)") {
  return "{\"id\":" + std::to_string(id) + ",\"pid\":" + std::to_string(100 + id) + R"(,"name":"w",)" +
         box("rect", x, y + 25, width, height - 25) + "," + box("window_rect", 2, 0, width - 4, height - 27) + "," +
         box("deco_rect", x, y, width, 25) + more + "}";
}

/// An output that shows workspace 4, with these tiled and floating windows on it and another one on workspace 6.
std::string treeWith(const std::string& tiled, const std::string& floating) {
  return R"({"type":"root","nodes":[
    {"name":"__i3","focus":[9],"nodes":[{"id":9,"name":"__i3_scratch","floating_nodes":[)" +
         view(50, 0, 0, 90, 90, "") + R"(]}]},
    {"name":"DP-1","focus":[4,6],"nodes":[
      {"id":4,"name":"1","nodes":[{"layout":"tabbed","nodes":[)" +
         tiled + R"(]}],"floating_nodes":[)" + floating + R"(]},
      {"id":6,"name":"2","nodes":[)" +
         view(60, 0, 0, 90, 90, R"(,"visible":false)") + "]}]}]}";
}

TEST(SwayTree, TellsWhatIsInViewAndWhatIsOverIt) {
  const std::string hidden = R"(,"visible":false)", shown = R"(,"visible":true)";
  const Table<std::string, std::string, bool> cases{
      // tiled and floating windows, and whether window 7, at (0, 0, 640, 480), is covered
      {"alone", view(7, 0, 0, 640, 480), "", false},
      {"beside another", view(7, 0, 0, 640, 480) + "," + view(8, 640, 0, 640, 480), "", false},
      {"under a floating one", view(7, 0, 0, 640, 480), view(8, 600, 400, 90, 90), true},
      {"under its title bar alone", view(7, 0, 0, 640, 480), view(8, 0, 470, 90, 90), true},
      {"beside a floating one", view(7, 0, 0, 640, 480), view(8, 638, 0, 90, 90), false},
      {"under one that is not in view", view(7, 0, 0, 640, 480), view(8, 0, 0, 90, 90, hidden), false},
      {"over a tiled one", view(8, 0, 0, 640, 480), view(7, 0, 0, 640, 480), false},
      {"under a later floating one", "", view(7, 0, 0, 640, 480) + "," + view(8, 9, 9, 90, 90), true},
      {"over an earlier one", "", view(8, 9, 9, 90, 90) + "," + view(7, 0, 0, 640, 480), false},
      {"under one that fills the screen",
       view(8, 0, 0, 1280, 800, shown + R"(,"fullscreen_mode":1)") + "," + view(7, 0, 0, 640, 480), "", true},
      {"a tab behind", view(7, 0, 0, 640, 480, hidden), "", true},
  };
  for (const auto& [reason, tiled, floating, isCovered] : cases) {
    const auto windows = windowsOfSwayTree(treeWith(tiled, floating));
    ASSERT_TRUE(windows) << reason;
    std::map<std::uint32_t, NativeWindow> byID;
    for (const auto& window : *windows) byID[window.id] = window;
    EXPECT_EQ(byID[7].isCovered, isCovered) << reason;
    EXPECT_EQ(byID[7].processID, 107);
    EXPECT_EQ(byID[7].contents, (Rect{2, 25, 636, 453})) << "without what sway draws around it";
    EXPECT_FALSE(byID[7].isMinimized || byID[7].isOnOtherWorkspace) << reason;
    EXPECT_TRUE(byID[50].isMinimized && !byID[50].isOnOtherWorkspace) << "put out of sight";
    EXPECT_TRUE(byID[60].isOnOtherWorkspace && !byID[60].isMinimized);
  }
}

TEST(SwayTree, TellsWhoseWindowItIs) {
  const std::string native =
      R"(,"visible":true,"focused":true,"app_id":"org.a","shell":"xdg_shell","foreign_toplevel_identifier":"t")";
  const std::string x11 = R"(,"app_id":null,"shell":"xwayland","window_properties":{"class":"C","instance":"i"})";
  const auto windows = windowsOfSwayTree(treeWith(view(7, 0, 0, 9, 90, native), view(8, 0, 0, 9, 90, x11))).value();
  const auto first = std::ranges::find(windows, 7U, &NativeWindow::id),
             second = std::ranges::find(windows, 8U, &NativeWindow::id);
  EXPECT_TRUE(first->appID == "org.a" && first->toplevelID == "t" && !first->isX11 && first->isFocused);
  EXPECT_TRUE(second->instanceName == "i" && second->className == "C" && second->isX11 && !second->isFocused);
}

TEST(SwayTree, IsNothingOfAnythingElse) {
  const std::string deep(100'000, '[');
  for (const auto& text : {std::string(), std::string("[]"), std::string("{\"nodes\":["), deep}) {
    EXPECT_FALSE(windowsOfSwayTree(text)) << text.substr(0, 20);
  }
  for (const auto* text :
       {"{}", R"({"nodes":7})", R"({"nodes":[7,{"focus":["a"],"nodes":[[],{"nodes":[{"pid":"x"}]}]}]})"}) {
    EXPECT_TRUE(windowsOfSwayTree(text).value().empty()) << text;
  }
}

TEST(Outputs, ScaleTheCompositorsCoordinatesToTheirPixels) {
  const Table<Rect, PixelSize, double, Rect, Rect> cases{
      {"a pixel a unit", {0, 0, 1280, 800}, {1280, 800}, 1, {10, 20, 30, 40}, {10, 20, 30, 40}},
      {"two, at another place", {1280, 0, 640, 400}, {1280, 800}, 2, {1290, 20, 30, 40}, {20, 40, 60, 80}},
      {"half ones, on its side: 853.3 is told as 853", {0, 0, 533, 853}, {800, 1280}, 1.5, {1, 3, 3, 5}, {2, 5, 4, 7}},
      {"a quarter more", {0, 0, 1536, 864}, {1920, 1080}, 1.25, {1, 1, 2, 2}, {1, 1, 3, 3}},
  };
  for (const auto& [reason, logical, size, scale, place, expected] : cases) {
    Output output;
    output.logical = logical;
    output.size = size;
    EXPECT_EQ(scaleOf(output), scale) << reason;
    EXPECT_EQ(onOutput(place, output), expected) << reason;
  }
}

/// A picture of these rows: '#' opaque, '.' half so, ' ' nothing.
imaging::Bitmap pictureOf(const std::vector<std::string>& rows) {
  constexpr std::size_t kBytesPerPixel = 4;
  const PixelSize size{static_cast<std::int64_t>(rows[0].size()), static_cast<std::int64_t>(rows.size())};
  const auto pixels = imaging::blankPixels(size);
  auto* alpha = pixels.get() + 3;
  for (const auto& row : rows) {
    for (const char pixel : row) {
      *alpha = pixel == '#' ? 0xFF : pixel == '.' ? 0x80 : 0;
      alpha += kBytesPerPixel;
    }
  }
  return {.size = size,
          .rowBytes = rows[0].size() * kBytesPerPixel,
          .alpha = imaging::AlphaMode::premultiplied,
          .pixels = pixels};
}

TEST(KWinScreenshot, FindsTheWindowInItsShadow) {
  using imaging::PixelRect;
  const Table<std::vector<std::string>, PixelSize, std::optional<PixelRect>> cases{
      {"round corners, a shadow", {"......", "..##..", ".####.", ".####.", "......"}, {4, 3}, PixelRect{1, 1, 4, 3}},
      {"none", {"####", "####"}, {4, 2}, PixelRect{0, 0, 4, 2}},
      {"a hole in the middle", {"      ", " #### ", " #..# ", " #### "}, {4, 3}, PixelRect{1, 1, 4, 3}},
      {"a row more on both sides, by rounding",
       {"....", "####", "####", "####", "...."},
       {4, 1},
       PixelRect{0, 2, 4, 1}},
      {"a column less", {" ###.", " ###."}, {4, 2}, PixelRect{1, 0, 4, 2}},
      {"a row less, and no room for it", {"####"}, {4, 2}, std::nullopt},
      {"another size by now", {"########", "########"}, {4, 2}, std::nullopt},
      {"nothing opaque", {"....", "...."}, {4, 2}, std::nullopt},
      {"no size", {"#"}, {0, 1}, std::nullopt},
  };
  for (const auto& [reason, rows, size, expected] : cases) {
    EXPECT_EQ(placeWithoutShadow(pictureOf(rows), size), expected) << reason;
  }
}

TEST(KWinScreenshot, TakesPicturesWhoseFormatItKnowsAlone) {
  const Table<KWinPicture, std::optional<std::size_t>> cases{
      // format, width, height, bytes from row to row
      {"a window's", {5, 481, 511, 1924}, 983'164},
      {"a workspace's", {6, 1280, 800, 5120}, 4'096'000},
      {"without alpha", {4, 1, 1, 4}, 4},
      {"red first", {16, 481, 511, 1924}, std::nullopt},
      {"gaps between rows", {5, 481, 511, 2048}, std::nullopt},
      {"larger than any", {5, 1U << 30U, 1, 0}, std::nullopt},
      {"nothing told", {}, std::nullopt},
  };
  for (const auto& [reason, picture, expected] : cases) EXPECT_EQ(byteCountOf(picture), expected) << reason;
}

constexpr std::uint32_t kARGB = 0, kXRGB = 1, kXBGR = 0x34324258, kRGB565 = 0x36314752;

/// A picture of as many pixels as there are numbers, each of which has the three bytes from four times that number on.
imaging::Bitmap countingPicture(PixelSize size, const std::vector<int>& pixels, int firstByte,
                                bool isRedFirst = false) {
  const auto bytes = imaging::blankPixels(size);
  auto* next = bytes.get();
  for (const int pixel : pixels) {
    for (const int i : {isRedFirst ? 2 : 0, 1, isRedFirst ? 0 : 2, 3}) {
      *next++ = static_cast<std::uint8_t>(firstByte + pixel * 4 + i);
    }
  }
  return {.size = size, .rowBytes = static_cast<std::size_t>(size.width) * 4, .pixels = bytes};
}

/// The file of a picture; empty when there is none.
std::vector<std::byte> fileOf(const ImageRef& image) {
  return image ? image->encoded(ImageType::png, std::nullopt).value() : std::vector<std::byte>{};
}

ImageRef captured(ScreenCapture& capture, const ContentFilter& filter, const StreamConfiguration& configuration) {
  ImageRef image;
  capture.captureImage(filter, configuration, [&image](const auto& result) {
    if (const auto* const found = std::get_if<ImageRef>(&result)) image = *found;
  });
  return image;
}

ShareableContent content(ScreenCapture& capture) {
  ShareableContent listed;
  capture.getShareableContent({}, [&listed](const auto& result) { listed = std::get<ShareableContent>(result); });
  return listed;
}

TEST(ImageCopyCapture, CopiesTheOutput) {
  using Constraints = CompositorScript::Constraints;
  const std::vector<int> upright{0, 1, 2, 3, 4, 5};
  const auto wide = countingPicture({3, 2}, upright, 0);
  const Constraints wrong{.width = 2}, huge{.width = 0x4000'0001, .height = 0x4000'0001};
  const Table<CompositorScript, std::optional<imaging::Bitmap>, int> cases{
      // what is seen, and how many frames were asked for
      {"as it is shown", {}, wide, 1},
      {"red first, after a format that is not read",
       {.constraints = {{.formats = {kRGB565, kXBGR, kXRGB}}}},
       countingPicture({3, 2}, upright, 0, true),
       1},
      {"on its side", {.transform = 1}, countingPicture({2, 3}, {3, 0, 4, 1, 5, 2}, 0), 1},
      {"mirrored, on its side", {.transform = 5}, countingPicture({2, 3}, {0, 3, 1, 4, 2, 5}, 0), 1},
      {"another size than was told at first", {.constraints = {wrong, wrong, {}}}, wide, 3},
      {"another one each time", {.constraints = {wrong, wrong, wrong, wrong, {}}}, std::nullopt, 3},
      {"smaller than the output", {.constraints = {wrong}}, std::nullopt, 1},
      {"larger than any", {.constraints = {huge}}, std::nullopt, 0},
      {"none at all", {.constraints = {{.width = 0}}}, std::nullopt, 0},
      {"no format that is read", {.constraints = {{.formats = {kRGB565}}}}, std::nullopt, 0},
      {"a session that ends", {.stopsSessions = true}, std::nullopt, 0},
      {"a frame that fails", {.failure = 0}, std::nullopt, 1},
      {"a frame of a session that has ended", {.failure = 2}, std::nullopt, 1},
      {"nothing told", {.constraints = {}}, std::nullopt, 0},
      {"nothing copied", {.neverCopies = true}, std::nullopt, 1},
  };
  for (const auto& [reason, script, expected, frameCount] : cases) {
    const FakeCompositor compositor(script);
    const auto connection = std::make_shared<WlConnection>();
    const auto capture = makeScreenCapture(
        connection, [] { return NativeDesktop{.isFocusCertain = true}; }, nullptr);
    EXPECT_TRUE(capture->preflightScreenCaptureAccess()) << reason;
    const auto begin = std::chrono::steady_clock::now();
    const auto size = expected.value_or(wide).size;
    const auto image =
        captured(*capture, {.display = content(*capture).displays.at(0)}, {.width = size.width, .height = size.height});
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(2)) << reason;
    EXPECT_EQ(fileOf(image), fileOf(expected ? imaging::makeImage(*expected) : nullptr)) << reason;
    EXPECT_EQ(compositor.frameCount(), frameCount) << reason;
    const bool isSilent = script.constraints.empty() || script.neverCopies;
    EXPECT_EQ(connection->isReachable(), !isSilent) << reason << ": who does not answer is asked nothing more";
  }
}

TEST(ImageCopyCapture, CopiesWindowsThatAreNotWhollyInView) {
  const auto opaque = countingPicture({3, 2}, {0, 1, 2, 3, 4, 5}, 0);
  auto whole = countingPicture({3, 2}, {0, 1, 2, 3, 4, 5}, 100);
  whole.alpha = imaging::AlphaMode::premultiplied;
  const NativeWindow covered{.id = 7, .toplevelID = "w1", .contents = {0, 0, 3, 2}, .isCovered = true};
  const auto with = [&covered](auto member, auto value) {
    auto window = covered;
    window.*member = value;
    return window;
  };
  using W = NativeWindow;
  const Table<NativeWindow, std::optional<imaging::Bitmap>> cases{
      {"covered", covered, whole},
      {"partly off the screen", with(&W::contents, Rect{-1, 1, 3, 2}), whole},
      {"in view", with(&W::isCovered, false), opaque},
      {"one that is not listed", with(&W::toplevelID, "w2"), std::nullopt},
      {"unknown to the list", with(&W::toplevelID, ""), std::nullopt},
      {"drawn larger", with(&W::contents, Rect{0, 0, 2, 2}), std::nullopt},
      {"minimized", with(&W::isMinimized, true), std::nullopt},
  };
  for (const auto& [reason, window, expected] : cases) {
    const FakeCompositor compositor({.constraints = {{.formats = {kARGB}}}});
    const auto desktop = [&window = window] { return NativeDesktop{.windows = {window}}; };
    const auto capture = makeScreenCapture(std::make_shared<WlConnection>(), desktop, nullptr);
    const auto listed = content(*capture);
    const auto image = captured(*capture, {.display = listed.displays.at(0), .includedWindow = listed.windows.at(0)},
                                {.width = 3, .height = 2});
    EXPECT_EQ(fileOf(image), fileOf(expected ? imaging::makeImage(*expected) : nullptr)) << reason;
  }
}

}  // namespace
}  // namespace tavik::platform::wayland
