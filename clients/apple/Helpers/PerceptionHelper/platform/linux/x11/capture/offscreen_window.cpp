#include "platform/linux/x11/capture/offscreen_window.h"

#include <algorithm>
#include <utility>

#include "platform/linux/applications/process_activity.h"
#include "platform/linux/x11/capture/window_pixmap.h"

namespace tavik::platform::x11 {

using imaging::PixelRect;

RepaintProgress::RepaintProgress(std::vector<PixelRect> hidden, const PixelRect& client)
    : missing_(std::move(hidden)),
      applications_(intersection(missing_, {client})),
      applicationHasDrawn_(applications_.empty()) {}

void RepaintProgress::noteDrawing(const PixelRect& area, bool byServer) {
  missing_ = subtract(missing_, area);
  if (!byServer && !intersection(applications_, {area}).empty()) applicationHasDrawn_ = true;
}

std::chrono::milliseconds RepaintProgress::quietPeriod() const {
  using namespace std::chrono_literals;
  return applicationHasDrawn_ ? 25ms : 100ms;
}

/// The damage is watched before the redirection begins, so that no drawing goes unnoticed. The no-operation
/// after it gives later events a higher sequence number, which tells them from what the redirection itself has drawn.
///
/// The server is grabbed, so that nobody else begins between the look for a pixmap and the redirection. All of that is
/// sent in one piece: a program that is stopped in the middle leaves nothing grabbed.
OffscreenWindow::OffscreenWindow(XConnection& connection, xcb_window_t frame)
    : connection_(connection), frame_(frame), damage_(xcb_generate_id(connection.xcb())) {
  auto* const xcb = connection.xcb();
  xcb_discard_reply(xcb, xcb_damage_query_version(xcb, 1, 1).sequence);
  xcb_flush(xcb);
  xcb_grab_server(xcb);
  WindowPixmap ofOthers(connection, frame_);
  xcb_damage_create(xcb, damage_, frame_, XCB_DAMAGE_REPORT_LEVEL_RAW_RECTANGLES);
  const auto redirect = xcb_composite_redirect_window(xcb, frame_, XCB_COMPOSITE_REDIRECT_AUTOMATIC);
  redirectSequence_ = static_cast<std::uint16_t>(redirect.sequence);
  xcb_no_operation(xcb);
  xcb_ungrab_server(xcb);
  isForUs_ = !ofOthers.exists();
}

OffscreenWindow::~OffscreenWindow() {
  auto* const xcb = connection_.xcb();
  xcb_composite_unredirect_window(xcb, frame_, XCB_COMPOSITE_REDIRECT_AUTOMATIC);
  xcb_damage_destroy(xcb, damage_);
  xcb_flush(xcb);
}

/// True for what happened up to the redirection, or came of it.
bool OffscreenWindow::isOfRedirection(const xcb_generic_event_t& event) const {
  return static_cast<std::int16_t>(event.sequence - redirectSequence_) <= 0;
}

bool OffscreenWindow::noteDrawing(const xcb_generic_event_t& event, RepaintProgress& progress) const {
  const auto* const damage = connection_.extension(xcb_damage_id);
  if (damage == nullptr || (event.response_type & 0x7F) != damage->first_event + XCB_DAMAGE_NOTIFY) return false;
  const auto& [x, y, width, height] = reinterpret_cast<const xcb_damage_notify_event_t&>(event).area;
  progress.noteDrawing({.x = x, .y = y, .width = width, .height = height}, isOfRedirection(event));
  return true;
}

bool OffscreenWindow::waitForRepaint(RepaintProgress progress, StructureWatch& watch, std::int32_t processID) {
  // An application that has been silent while its tree was read, for 1.2 s, is not waited for as long again.
  constexpr WaitLimits kLimits{.most = std::chrono::milliseconds(1000),
                               .least = std::chrono::milliseconds(400),
                               .ageOfRun = std::chrono::milliseconds(1800)};
  const auto end = deadlineWithin(kLimits);
  auto quietSince = Clock::now();
  while (!watch.hasChanged() && !watch.otherHasChanged()) {
    const auto finished = quietSince + progress.quietPeriod();
    const auto event = connection_.nextEvent(progress.isComplete() ? std::min(end, finished) : end);
    if (event && !noteDrawing(*event, progress)) {
      watch.note(*event);
      // A window with memory of its own is not touched by what covers it.
      if (!isOfRedirection(*event)) watch.forgetOthers();
      continue;
    }
    quietSince = Clock::now();
    if (event) continue;
    if (!progress.isComplete() || !connection_.isReachable()) return false;
    if (progress.applicationHasDrawn() || applications::isIdle(processID)) return true;
    if (quietSince >= end) return false;
  }
  return false;
}

}  // namespace tavik::platform::x11
