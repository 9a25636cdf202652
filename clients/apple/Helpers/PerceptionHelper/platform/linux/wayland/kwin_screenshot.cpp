#include "platform/linux/wayland/kwin_screenshot.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <string_view>
#include <unistd.h>
#include <utility>

#include "platform/imaging/bitmap_canvas.h"
#include "platform/imaging/pixel_format.h"
#include "platform/linux/wayland/identifiable_process.h"
#include "platform/posix/descriptor_io.h"
#include "platform/posix/file_descriptor.h"

namespace tavik::platform::wayland {
namespace {

using dbus::sdBus;
using imaging::Bitmap;

constexpr auto kInterface = "org.kde.KWin.ScreenShot2";
constexpr std::chrono::milliseconds kPatience{1200};
constexpr int kBytesPerPixel = 4;

dbus::Reference kwin() { return {.busName = "org.kde.KWin", .path = "/org/kde/KWin/ScreenShot2"}; }

/// Both ends of a pipe: the first is read, without blocking.
struct Pipe {
  posix::FileDescriptor reading{-1};
  posix::FileDescriptor writing{-1};
};

Pipe makePipe() {
  constexpr int kRoom = 1 << 20;  // what an ordinary user may have; with less, the two sides wait for each other more
  std::array<int, 2> ends{-1, -1};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) return {};
  ::fcntl(ends[0], F_SETFL, O_NONBLOCK);
  ::fcntl(ends[0], F_SETPIPE_SZ, kRoom);
  return {.reading = posix::FileDescriptor(ends[0]), .writing = posix::FileDescriptor(ends[1])};
}

std::uint32_t* memberOf(KWinPicture& picture, std::string_view key) {
  if (key == "format") return &picture.format;
  if (key == "width") return &picture.width;
  if (key == "height") return &picture.height;
  return key == "stride" ? &picture.stride : nullptr;
}

/// From the dictionary of an answer (a{sv}); members that are missing, or of another type, stay 0.
KWinPicture readPicture(sd_bus_message* reply) {
  KWinPicture picture;
  const auto* const bus = sdBus();
  if (bus->sd_bus_message_enter_container(reply, SD_BUS_TYPE_ARRAY, "{sv}") <= 0) return {};
  while (bus->sd_bus_message_enter_container(reply, SD_BUS_TYPE_DICT_ENTRY, "sv") > 0) {
    const char* key = nullptr;
    if (bus->sd_bus_message_read(reply, "s", &key) <= 0) return {};
    auto* const member = memberOf(picture, key);
    const int read = member ? bus->sd_bus_message_read(reply, "v", "u", member) : bus->sd_bus_message_skip(reply, "v");
    if (read < 0 || bus->sd_bus_message_exit_container(reply) < 0) return {};
  }
  return picture;
}

/// QImage::Format. KWin reads what OpenGL has drawn, which is premultiplied whichever of them it says.
constexpr std::uint32_t kRGB32 = 4, kARGB32 = 5, kARGB32Premultiplied = 6;

std::optional<Bitmap> bitmapOf(const KWinPicture& picture, std::string bytes) {
  const imaging::PixelFormat format{.depth = static_cast<std::uint8_t>(picture.format == kRGB32 ? 24 : 32),
                                    .bitsPerPixel = 32,
                                    .scanlinePad = 32,
                                    .redMask = 0xFF0000,
                                    .greenMask = 0xFF00,
                                    .blueMask = 0xFF};
  const auto owner = std::make_shared<const std::string>(std::move(bytes));
  const std::shared_ptr<const std::uint8_t> pixels(owner, reinterpret_cast<const std::uint8_t*>(owner->data()));
  return imaging::toBitmap(format, {picture.width, picture.height}, pixels, owner->size());
}

/// The first and the last number for which it is true; the other way round when it is for none.
template <class Predicate>
std::pair<std::int32_t, std::int32_t> range(std::int32_t count, const Predicate& isTrue) {
  std::int32_t first = 0, last = count - 1;
  while (first < count && !isTrue(first)) ++first;
  while (last > first && !isTrue(last)) --last;
  return {first, last};
}

}  // namespace

std::optional<std::size_t> byteCountOf(const KWinPicture& picture) {
  const auto& [format, width, height, stride] = picture;
  const bool isKnown = format == kRGB32 || format == kARGB32 || format == kARGB32Premultiplied;
  if (!isKnown || !imaging::isSurfaceSize({width, height}) || stride != width * kBytesPerPixel) return std::nullopt;
  return std::size_t{stride} * height;
}

std::optional<imaging::PixelRect> placeWithoutShadow(const Bitmap& picture, PixelSize size) {
  constexpr std::uint8_t kOpaque = 0xFF;
  constexpr std::int64_t kRounding = 2;  // at scales that are no whole numbers KWin rounds a title bar by itself
  const auto isOpaque = [&picture](std::int32_t x, std::int32_t y) {
    const auto index = static_cast<std::size_t>(y) * picture.rowBytes + static_cast<std::size_t>(x) * kBytesPerPixel;
    return picture.pixels.get()[index + kBytesPerPixel - 1] == kOpaque;
  };
  const auto width = static_cast<std::int32_t>(picture.size.width);
  const auto height = static_cast<std::int32_t>(picture.size.height);
  const auto isRow = [&](std::int32_t y) {
    for (std::int32_t x = 0; x < width; ++x) {
      if (isOpaque(x, y)) return true;
    }
    return false;
  };
  const auto [top, bottom] = range(height, isRow);
  const auto isColumn = [&, first = top, last = bottom](std::int32_t x) {
    for (std::int32_t y = first; y <= last; ++y) {
      if (isOpaque(x, y)) return true;
    }
    return false;
  };
  const auto [left, right] = range(width, isColumn);
  const auto wider = static_cast<std::int64_t>(right) - left + 1 - size.width;
  const auto higher = static_cast<std::int64_t>(bottom) - top + 1 - size.height;
  if (std::max(std::abs(wider), std::abs(higher)) > kRounding) return std::nullopt;
  const imaging::PixelRect place{.x = static_cast<std::int32_t>(left + wider / 2),
                                 .y = static_cast<std::int32_t>(top + higher / 2),
                                 .width = static_cast<std::int32_t>(size.width),
                                 .height = static_cast<std::int32_t>(size.height)};
  const imaging::PixelRect whole{.width = width, .height = height};
  return !isEmpty(place) && intersection(place, whole) == place ? std::optional(place) : std::nullopt;
}

dbus::Conversation* KWinScreenshot::conversation() {
  if (!triedToConnect_) {
    triedToConnect_ = true;
    const auto deadline = std::chrono::steady_clock::now() + kPatience;
    if (auto bus = dbus::openSessionBus(deadline, dbus::Descriptors::sent)) conversation_.emplace(std::move(bus));
  }
  return conversation_ ? &*conversation_ : nullptr;
}

/// An area without a size is refused by reason of that only to those who would get one.
bool KWinScreenshot::isAllowed() {
  auto* const kwinBus = conversation();
  const auto pipe = makePipe();
  if (!kwinBus || !pipe.writing.isOpen()) return false;
  bool isAllowed = false;
  const auto note = [&isAllowed](const dbus::Answer& answer) {
    isAllowed = answer.error == "org.kde.KWin.ScreenShot2.Error.InvalidArea";
  };
  const IdentifiableProcess whileAsking;
  kwinBus->ask(kwin(), kInterface, "CaptureArea", note, "iiuua{sv}h", 0, 0, 0U, 0U, 0, pipe.writing.get());
  kwinBus->settle();
  return isAllowed;
}

/// The bytes follow the answer.
template <class... Arguments>
std::optional<Bitmap> KWinScreenshot::ask(const char* member, const char* types, Arguments... arguments) {
  auto* const kwinBus = conversation();
  auto pipe = makePipe();
  if (!kwinBus || !pipe.writing.isOpen()) return std::nullopt;
  KWinPicture picture;
  const auto read = [&picture](const dbus::Answer& answer) {
    if (answer.reply != nullptr) picture = readPicture(answer.reply);
  };
  const IdentifiableProcess whileAsking;
  kwinBus->ask(kwin(), kInterface, member, read, types, arguments..., pipe.writing.get());
  pipe.writing = posix::FileDescriptor(-1);
  kwinBus->settle();
  const auto count = byteCountOf(picture);
  auto bytes = count ? posix::readExactly(pipe.reading.get(), *count, kPatience) : std::nullopt;
  return bytes ? bitmapOf(picture, *std::move(bytes)) : std::nullopt;
}

std::optional<Bitmap> KWinScreenshot::ofOutput(const std::string& name) {
  auto picture = ask("CaptureScreen", "sa{sv}h", name.c_str(), 1, "native-resolution", "b", 1);
  if (picture) picture->alpha = imaging::AlphaMode::opaque;
  return picture;
}

std::optional<Bitmap> KWinScreenshot::ofWindow(const std::string& uuid) {
  return ask("CaptureWindow", "sa{sv}h", uuid.c_str(), 2, "native-resolution", "b", 1, "include-decoration", "b", 1);
}

}  // namespace tavik::platform::wayland
