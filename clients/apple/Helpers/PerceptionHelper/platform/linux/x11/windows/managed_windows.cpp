#include "platform/linux/x11/windows/managed_windows.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "platform/linux/x11/server/x_property.h"
#include "platform/linux/x11/windows/outer_rect.h"
#include "platform/linux/x11/windows/window_traits.h"
#include "platform/linux/x11/windows/window_tree.h"

namespace tavik::platform::x11 {
namespace {

/// Room for a list of 4096 windows.
constexpr std::uint32_t kListBytes = kWordBytes * 4096;

/// What the root window and the server say.
struct RootState {
  std::vector<xcb_window_t> windows = {};   ///< managed, the oldest first
  std::vector<xcb_window_t> children = {};  ///< of the root, bottom to top
  xcb_window_t active = XCB_NONE;           ///< a managed window or its frame
  std::optional<std::uint32_t> workspace = {};
  std::vector<XClient> clients = {};
};

/// True when a window manager that speaks EWMH is running. The root's property outlives the manager; the window that it
/// names, and that names itself in turn, does not.
bool managerIsRunning(XConnection& connection, const PropertyValue& rootsCheck) {
  const auto check = connection.atom(Atom::supportingWMCheck);
  const auto window = firstWord(rootsCheck, XCB_ATOM_WINDOW);
  if (!window) return false;
  return firstWord(property(connection, requestProperty(connection, *window, check)), XCB_ATOM_WINDOW) == window;
}

/// The child of the root that has the keyboard focus, or in which it is.
xcb_window_t focusedTopLevel(XConnection& connection) {
  const auto focus = connection.reply(xcb_get_input_focus_reply, xcb_get_input_focus(connection.xcb()));
  if (!focus || focus->focus <= XCB_INPUT_FOCUS_POINTER_ROOT) return XCB_NONE;
  return framesOf(connection, {focus->focus}).front();
}

RootState readRoot(XConnection& connection) {
  const auto ask = [&](Atom atom) {
    return requestProperty(connection, connection.root(), connection.atom(atom), kListBytes);
  };
  const auto check = ask(Atom::supportingWMCheck);
  const auto list = ask(Atom::clientList);
  const auto active = ask(Atom::activeWindow);
  const auto workspace = ask(Atom::currentDesktop);
  const auto tree = xcb_query_tree(connection.xcb(), connection.root());
  RootState root{.clients = clients(connection)};
  if (const auto reply = connection.reply(xcb_query_tree_reply, tree)) root.children = childrenOfReply(*reply);
  if (managerIsRunning(connection, property(connection, check))) {
    root.windows = words(property(connection, list), XCB_ATOM_WINDOW);
    root.active = firstWord(property(connection, active), XCB_ATOM_WINDOW).value_or(XCB_NONE);
    root.workspace = firstWord(property(connection, workspace), XCB_ATOM_CARDINAL);
  } else {
    root.windows = clientsBelow(connection, root.children);
  }
  const bool isNamed = std::ranges::find(root.windows, root.active) != root.windows.end();
  if (!isNamed) root.active = focusedTopLevel(connection);
  return root;
}

/// All questions about one window, in flight at once.
struct WindowQuery {
  xcb_get_window_attributes_cookie_t attributes = {};
  xcb_get_geometry_cookie_t geometry = {};
  xcb_translate_coordinates_cookie_t origin = {};
  xcb_get_geometry_cookie_t frame = {};
  xcb_get_property_cookie_t title = {};
  xcb_get_property_cookie_t icccmTitle = {};
  xcb_get_property_cookie_t wmClass = {};
  xcb_get_property_cookie_t processID = {};
  xcb_get_property_cookie_t clientMachine = {};
  xcb_get_property_cookie_t states = {};
  xcb_get_property_cookie_t types = {};
  xcb_get_property_cookie_t workspace = {};
  xcb_get_property_cookie_t gtkApplicationID = {};
  xcb_get_property_cookie_t gtkFrameExtents = {};
};

WindowQuery requestWindow(XConnection& connection, xcb_window_t client, xcb_window_t frame) {
  auto* const xcb = connection.xcb();
  const auto ask = [&](Atom atom) { return requestProperty(connection, client, connection.atom(atom)); };
  return {.attributes = xcb_get_window_attributes(xcb, client),
          .geometry = xcb_get_geometry(xcb, client),
          .origin = xcb_translate_coordinates(xcb, client, connection.root(), 0, 0),
          .frame = xcb_get_geometry(xcb, frame),
          .title = ask(Atom::wmName),
          .icccmTitle = requestProperty(connection, client, XCB_ATOM_WM_NAME),
          .wmClass = requestProperty(connection, client, XCB_ATOM_WM_CLASS),
          .processID = ask(Atom::wmPID),
          .clientMachine = requestProperty(connection, client, XCB_ATOM_WM_CLIENT_MACHINE),
          .states = ask(Atom::wmState),
          .types = ask(Atom::wmWindowType),
          .workspace = ask(Atom::wmDesktop),
          .gtkApplicationID = ask(Atom::gtkApplicationID),
          .gtkFrameExtents = ask(Atom::gtkFrameExtents)};
}

/// The process that the window itself claims to belong to.
std::int32_t claimedProcess(const PropertyValue& value) {
  return std::max(0, static_cast<std::int32_t>(firstWord(value, XCB_ATOM_CARDINAL).value_or(0)));
}

void readTexts(XConnection& connection, const WindowQuery& query, ManagedWindow& window) {
  window.title = textOf(property(connection, query.title));
  const auto icccmTitle = textOf(property(connection, query.icccmTitle));
  if (window.title.empty()) window.title = icccmTitle;
  auto [instance, className] = wmClass(property(connection, query.wmClass));
  window.instanceName = std::move(instance);
  window.className = std::move(className);
  window.gtkApplicationID = textOf(property(connection, query.gtkApplicationID));
}

/// The rectangles of the client and of its frame; false when one of them is gone.
bool readGeometry(XConnection& connection, const WindowQuery& query, ManagedWindow& window) {
  const auto geometry = connection.reply(xcb_get_geometry_reply, query.geometry);
  const auto origin = connection.reply(xcb_translate_coordinates_reply, query.origin);
  const auto frame = connection.reply(xcb_get_geometry_reply, query.frame);
  if (!geometry || !origin || !frame) return false;
  window.clientRect = {.x = origin->dst_x, .y = origin->dst_y, .width = geometry->width, .height = geometry->height};
  window.frameRect = outerRect(*frame);
  return true;
}

WindowHints readHints(XConnection& connection, const WindowQuery& query, bool isViewable) {
  return {.isViewable = isViewable,
          .states = words(property(connection, query.states), XCB_ATOM_ATOM),
          .types = words(property(connection, query.types), XCB_ATOM_ATOM),
          .workspace = firstWord(property(connection, query.workspace), XCB_ATOM_CARDINAL),
          .extents = words(property(connection, query.gtkFrameExtents), XCB_ATOM_CARDINAL)};
}

std::optional<ManagedWindow> receiveWindow(XConnection& connection, const WindowQuery& query, xcb_window_t client,
                                           xcb_window_t frame, const RootState& root) {
  const auto attributes = connection.reply(xcb_get_window_attributes_reply, query.attributes);
  ManagedWindow window{.client = client, .frame = frame};
  // Also of a window that is gone, every reply is taken: xcb searches those left behind for each later one.
  const bool isThere = readGeometry(connection, query, window) && attributes;
  readTexts(connection, query, window);
  const auto claimed = claimedProcess(property(connection, query.processID));
  const auto known = processOfWindow(root.clients, connection.setup().resource_id_mask, client);
  window.isOfOtherMachine = isOfOtherMachine(textOf(property(connection, query.clientMachine)), claimed, known);
  window.processID = known != 0 || window.isOfOtherMachine ? known : claimed;
  window.isActive = client == root.active || frame == root.active;
  const bool isViewable = attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE;
  applyHints(window, readHints(connection, query, isViewable), connection.atoms(), root.workspace);
  return isThere ? std::optional(std::move(window)) : std::nullopt;
}

/// The records of these windows in their order, without those that are gone.
std::vector<ManagedWindow> describe(XConnection& connection, const std::vector<xcb_window_t>& windows,
                                    const RootState& root) {
  const auto frames = framesOf(connection, windows);
  std::vector<WindowQuery> queries;
  for (std::size_t i = 0; i < windows.size(); ++i) queries.push_back(requestWindow(connection, windows[i], frames[i]));
  std::vector<ManagedWindow> described;
  for (std::size_t i = 0; i < windows.size(); ++i) {
    if (auto window = receiveWindow(connection, queries[i], windows[i], frames[i], root)) {
      described.push_back(*std::move(window));
    }
  }
  return described;
}

}  // namespace

Desktop readDesktop(XConnection& connection) {
  if (!connection.isReachable()) return {};
  auto root = readRoot(connection);
  Desktop desktop{.windows = describe(connection, root.windows, root), .topLevels = std::move(root.children)};
  separateOtherMachines(desktop.windows, connection.setup().resource_id_mask);
  const auto active = std::ranges::find_if(desktop.windows, [](const auto& window) { return window.isActive; });
  desktop.activeProcessID = active != desktop.windows.end()
                                ? active->processID
                                : processOfWindow(root.clients, connection.setup().resource_id_mask, root.active);
  desktop.clients = std::move(root.clients);
  return desktop;
}

/// By the stacking of the frames, which _NET_CLIENT_LIST_STACKING repeats where a window manager sets it.
std::vector<ManagedWindow> managedWindows(XConnection& connection) {
  auto [windows, topLevels, clients, activeProcessID] = readDesktop(connection);
  const auto height = [&topLevels = topLevels](const ManagedWindow& window) {
    return std::ranges::find(topLevels, window.frame) - topLevels.begin();
  };
  std::ranges::stable_sort(windows, [&](const auto& left, const auto& right) { return height(left) > height(right); });
  return std::move(windows);
}

}  // namespace tavik::platform::x11
