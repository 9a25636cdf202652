#pragma once

#include <functional>
#include <memory>

#include "platform/screen_capture.h"
#include "platform/workspace.h"

/// A desktop of native windows and of an X server's beside them, as under Wayland with XWayland. Applications are
/// merged by process.
namespace tavik::platform {

/// Two sources of one kind. As long as `hasNative` is false, there is the X server alone.
template <class Source>
struct NativeAndX11 {
  std::function<bool()> hasNative = {};
  std::unique_ptr<Source> native = {};
  std::unique_ptr<Source> x11 = {};
};

/// What is in front, and the screens, are as the native source says: an X server knows no more than its own windows.
std::unique_ptr<Workspace> mergedWorkspace(NativeAndX11<Workspace> sources);

/// Windows come from whom they belong to, told apart by `isNative`; the displays are the native source's. Where
/// `isNativeAlone`, the X server has no pictures, and the native source decides whether one may be taken.
std::unique_ptr<ScreenCapture> mergedScreenCapture(NativeAndX11<ScreenCapture> sources,
                                                   std::function<bool(const Window&)> isNative,
                                                   std::function<bool()> isNativeAlone);

}  // namespace tavik::platform
