#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/imaging/bitmap.h"
#include "platform/imaging/pixel_rect.h"
#include "platform/linux/dbus/conversation.h"

namespace tavik::platform::wayland {

/// The pictures that KWin takes for whom it allows to have them (org.kde.KWin.ScreenShot2 on the session bus): a
/// program whose desktop file asks for it (X-KDE-DBUS-Restricted-Interfaces). Every question has a limit of time, and
/// never opens a dialog. Connects at the first one.
class KWinScreenshot {
 public:
  /// True when KWin takes pictures for this process. Takes none.
  bool isAllowed();
  /// What the output with this name shows, without the cursor, in its own pixels. Nothing when KWin does not deliver.
  std::optional<imaging::Bitmap> ofOutput(const std::string& name);
  /// A window with its title bar and its shadow, whatever covers it, in its output's pixels. Ask for none that is
  /// minimized or on another desktop: KWin would not answer.
  std::optional<imaging::Bitmap> ofWindow(const std::string& uuid);

 private:
  dbus::Conversation* conversation();
  template <class... Arguments>
  std::optional<imaging::Bitmap> ask(const char* member, const char* types, Arguments... arguments);

  bool triedToConnect_ = false;
  std::optional<dbus::Conversation> conversation_;
};

/// How the pixels lie that come through the pipe.
struct KWinPicture {
  std::uint32_t format = 0;  ///< QImage::Format
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint32_t stride = 0;  ///< bytes from row to row
};

/// How many bytes such a picture has; nothing when it is none, or in a format that is not known.
std::optional<std::size_t> byteCountOf(const KWinPicture& picture);

/// The place of a window of this size in a picture of it with its shadow: where the pixels are that hide what is behind
/// them, as no shadow does. Nothing when they do not have that size, give or take what scales between whole numbers
/// round.
std::optional<imaging::PixelRect> placeWithoutShadow(const imaging::Bitmap& picture, PixelSize size);

}  // namespace tavik::platform::wayland
