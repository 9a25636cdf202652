#pragma once

#include <chrono>
#include <cstdint>
#include <vector>

#include <xcb/damage.h>

#include "platform/imaging/pixel_rect.h"
#include "platform/linux/x11/capture/structure_watch.h"
#include "platform/linux/x11/server/x_connection.h"

namespace tavik::platform::x11 {

/// Follows how a window is drawn again where it could not be seen.
class RepaintProgress {
 public:
  /// `hidden` is what could not be seen, and `client` the part of the window that its application draws.
  RepaintProgress(std::vector<imaging::PixelRect> hidden, const imaging::PixelRect& client);

  /// Something has been drawn there, `byServer` when it is only the background that the server fills in.
  void noteDrawing(const imaging::PixelRect& area, bool byServer);
  /// True when everything has been drawn.
  bool isComplete() const { return missing_.empty(); }
  /// False as long as the hidden part of the client shows only its background: the application may have nothing to draw
  /// there, may not have got round to it, or may hang.
  bool applicationHasDrawn() const { return applicationHasDrawn_; }
  /// How long nothing may be drawn before the window counts as finished.
  std::chrono::milliseconds quietPeriod() const;

 private:
  std::vector<imaging::PixelRect> missing_;
  std::vector<imaging::PixelRect> applications_;
  bool applicationHasDrawn_;
};

/// While this lives, a window is drawn whole into memory of its own and copied to the screen from there, which nobody
/// can see (Composite, automatic redirection). Ended by the server when the program ends first.
class OffscreenWindow {
 public:
  OffscreenWindow(XConnection& connection, xcb_window_t frame);
  OffscreenWindow(const OffscreenWindow&) = delete;
  OffscreenWindow& operator=(const OffscreenWindow&) = delete;
  ~OffscreenWindow();

  /// False where another program had the window drawn into memory before this did.
  bool isForUs() const { return isForUs_; }
  /// Waits until the window is complete, in the coordinates that its own drawing has, and until its application has
  /// drawn or has nothing left to do. False when that does not come about within a second,
  /// or before the run is 1.8 s old, though never before 400 ms; or when the window changes.
  bool waitForRepaint(RepaintProgress progress, StructureWatch& watch, std::int32_t processID);

 private:
  bool isOfRedirection(const xcb_generic_event_t& event) const;
  bool noteDrawing(const xcb_generic_event_t& event, RepaintProgress& progress) const;

  XConnection& connection_;
  xcb_window_t frame_;
  xcb_damage_damage_t damage_;
  std::uint16_t redirectSequence_;
  bool isForUs_;
};

}  // namespace tavik::platform::x11
