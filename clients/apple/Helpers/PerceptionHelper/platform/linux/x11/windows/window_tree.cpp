#include "platform/linux/x11/windows/window_tree.h"

#include <algorithm>
#include <cstddef>

#include "platform/linux/x11/server/x_property.h"

namespace tavik::platform::x11 {
namespace {

/// Frames hold their client at most this deep, and no more windows than this are looked at.
constexpr int kFrameDepth = 4;
constexpr std::size_t kMostWindows = 4096;

/// A window to look for a client in, and which of the children of the root it stands below.
struct Candidate {
  xcb_window_t window = XCB_NONE;
  std::size_t topLevel = 0;
};

struct CandidateQuery {
  Candidate candidate = {};
  xcb_get_property_cookie_t state = {};
  xcb_query_tree_cookie_t tree = {};
};

bool isManagedState(const PropertyValue& value, xcb_atom_t type) {
  constexpr std::uint32_t kWithdrawnState = 0;
  return firstWord(value, type).value_or(kWithdrawnState) != kWithdrawnState;
}

/// One level of the search: notes the clients found in `clients`, and returns where to look next.
std::vector<Candidate> searchLevel(XConnection& connection, const std::vector<Candidate>& level,
                                   std::vector<xcb_window_t>& clients) {
  std::vector<CandidateQuery> queries;
  queries.reserve(level.size());
  const auto state = connection.atom(Atom::icccmState);
  for (const auto& candidate : level) {
    queries.push_back({.candidate = candidate,
                       .state = requestProperty(connection, candidate.window, state),
                       .tree = xcb_query_tree(connection.xcb(), candidate.window)});
  }
  std::vector<Candidate> next;
  for (const auto& [candidate, stateCookie, treeCookie] : queries) {
    const bool isClient = isManagedState(property(connection, stateCookie), state);
    const auto tree = connection.reply(xcb_query_tree_reply, treeCookie);
    auto& client = clients[candidate.topLevel];
    if (isClient && client == XCB_NONE) client = candidate.window;
    if (!tree || client != XCB_NONE) continue;
    for (const auto child : childrenOfReply(*tree)) next.push_back({.window = child, .topLevel = candidate.topLevel});
  }
  std::erase_if(next, [&](const Candidate& candidate) { return clients[candidate.topLevel] != XCB_NONE; });
  next.resize(std::min(next.size(), kMostWindows));
  return next;
}

}  // namespace

std::vector<xcb_window_t> childrenOfReply(const xcb_query_tree_reply_t& reply) {
  if (reply.children_len > reply.length) return {};
  const auto* const first = xcb_query_tree_children(&reply);
  return {first, first + reply.children_len};
}

std::vector<xcb_window_t> framesOf(XConnection& connection, std::vector<xcb_window_t> windows) {
  std::vector<xcb_window_t> frames(windows.size(), XCB_NONE);
  bool isDone = false;
  for (int depth = 0; depth <= kFrameDepth && !isDone; ++depth) {
    std::vector<xcb_query_tree_cookie_t> cookies;
    cookies.reserve(windows.size());
    for (const auto window : windows) cookies.push_back(xcb_query_tree(connection.xcb(), window));
    isDone = true;
    for (std::size_t i = 0; i < windows.size(); ++i) {
      const auto tree = connection.reply(xcb_query_tree_reply, cookies[i]);
      if (!tree || frames[i] != XCB_NONE) continue;
      if (tree->parent == connection.root()) {
        frames[i] = windows[i];
      } else {
        windows[i] = tree->parent;
        isDone = false;
      }
    }
  }
  return frames;
}

std::vector<xcb_window_t> clientsBelow(XConnection& connection, const std::vector<xcb_window_t>& topLevels) {
  std::vector<xcb_get_window_attributes_cookie_t> cookies;
  cookies.reserve(topLevels.size());
  for (const auto window : topLevels) cookies.push_back(xcb_get_window_attributes(connection.xcb(), window));
  std::vector<xcb_window_t> clients(topLevels.size(), XCB_NONE);
  std::vector<bool> isClientItself(topLevels.size(), false);
  std::vector<Candidate> level;
  for (std::size_t i = 0; i < topLevels.size(); ++i) {
    const auto attributes = connection.reply(xcb_get_window_attributes_reply, cookies[i]);
    if (!attributes || attributes->map_state != XCB_MAP_STATE_VIEWABLE) continue;
    isClientItself[i] = attributes->override_redirect == 0 && attributes->_class == XCB_WINDOW_CLASS_INPUT_OUTPUT;
    level.push_back({.window = topLevels[i], .topLevel = i});
  }
  for (int depth = 0; depth <= kFrameDepth && !level.empty(); ++depth) level = searchLevel(connection, level, clients);
  for (std::size_t i = 0; i < topLevels.size(); ++i) {
    if (clients[i] == XCB_NONE && isClientItself[i]) clients[i] = topLevels[i];
  }
  std::erase(clients, xcb_window_t{XCB_NONE});
  return clients;
}

}  // namespace tavik::platform::x11
