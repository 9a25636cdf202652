#pragma once

#include <optional>

#include "platform/imaging/banded_picture.h"
#include "platform/linux/x11/capture/structure_watch.h"
#include "platform/linux/x11/server/x_connection.h"
#include "platform/linux/x11/windows/managed_window.h"

namespace tavik::platform::x11 {

/// The pixels of visibleRect(window), whether or not other windows cover it or the screen ends before it does. What
/// lies outside of a window that is not rectangular is transparent. Changes nothing that can be seen. Takes up to
/// 2.5 s for a covered window, which has to repaint. Nothing when that does not happen: a window that is not on
/// screen, that is gone, or whose application has stopped or hangs. Nothing either when the window has changed since
/// `watch` began, which then says so, or when others kept changing what covers it.
std::optional<imaging::BandedPicture> captureWindow(XConnection& connection, const ManagedWindow& window,
                                                    StructureWatch& watch);

}  // namespace tavik::platform::x11
