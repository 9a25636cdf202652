#include "platform/linux/x11/capture/structure_watch.h"

namespace tavik::platform::x11 {
namespace {

/// The window that an event is about; none for an event of another kind. Events that a client has sent (SendEvent)
/// have another type, with the top bit set, and so count as another kind.
xcb_window_t changedWindow(const xcb_generic_event_t& event) {
  switch (event.response_type) {
    case XCB_DESTROY_NOTIFY:
    case XCB_UNMAP_NOTIFY:
    case XCB_MAP_NOTIFY:
    case XCB_REPARENT_NOTIFY:
    case XCB_CONFIGURE_NOTIFY:
    case XCB_CIRCULATE_NOTIFY:
      // All of them have the window in the same place.
      return reinterpret_cast<const xcb_map_notify_event_t&>(event).window;
    default:
      return XCB_NONE;
  }
}

}  // namespace

StructureWatch::StructureWatch(XConnection& connection, xcb_window_t client)
    : connection_(connection), client_(client) {
  select(connection_.root(), XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY);
  select(client_, XCB_EVENT_MASK_STRUCTURE_NOTIFY);
}

StructureWatch::~StructureWatch() {
  select(client_, XCB_EVENT_MASK_NO_EVENT);
  select(connection_.root(), XCB_EVENT_MASK_NO_EVENT);
}

void StructureWatch::select(xcb_window_t window, std::uint32_t events) {
  xcb_change_window_attributes(connection_.xcb(), window, XCB_CW_EVENT_MASK, &events);
}

void StructureWatch::note(const xcb_generic_event_t& event) {
  const auto window = changedWindow(event);
  if (window == XCB_NONE) return;
  (window == client_ || window == frame_ ? hasChanged_ : otherHasChanged_) = true;
}

void StructureWatch::update() {
  while (const auto event = connection_.queuedEvent()) note(*event);
}

}  // namespace tavik::platform::x11
