#include "platform/linux/wayland/foreign_toplevels.h"

#include <algorithm>
#include <cstdint>
#include <list>
#include <span>
#include <utility>

#include "text/utf8.h"

namespace tavik::platform::wayland {
namespace {

/// A window while its events come in.
struct Candidate {
  Toplevel toplevel = {};
  bool isClosed = false;
  Owned<zwlr_foreign_toplevel_handle_v1> proxy = {};
};

/// What a manager has told so far. Listeners point into the list.
struct Listing {
  std::list<Candidate> candidates = {};
  bool hasEnded = false;
};

Candidate& candidateOf(void* data) { return *static_cast<Candidate*>(data); }

std::span<const std::uint32_t> statesOf(const wl_array& array) {
  return {static_cast<const std::uint32_t*>(array.data), array.size / sizeof(std::uint32_t)};
}

constexpr zwlr_foreign_toplevel_handle_v1_listener kHandleListener{
    .title = [](void* data, zwlr_foreign_toplevel_handle_v1*,
                const char* title) { candidateOf(data).toplevel.title = text::toValidUTF8(title); },
    .app_id = [](void* data, zwlr_foreign_toplevel_handle_v1*,
                 const char* appID) { candidateOf(data).toplevel.appID = text::toValidUTF8(appID); },
    .output_enter = [](void*, zwlr_foreign_toplevel_handle_v1*, wl_output*) {},
    .output_leave = [](void*, zwlr_foreign_toplevel_handle_v1*, wl_output*) {},
    .state =
        [](void* data, zwlr_foreign_toplevel_handle_v1*, wl_array* array) {
          const auto states = statesOf(*array);
          const auto has = [states](std::uint32_t state) { return std::ranges::find(states, state) != states.end(); };
          candidateOf(data).toplevel.isActivated = has(ZWLR_FOREIGN_TOPLEVEL_HANDLE_V1_STATE_ACTIVATED);
          candidateOf(data).toplevel.isMinimized = has(ZWLR_FOREIGN_TOPLEVEL_HANDLE_V1_STATE_MINIMIZED);
        },
    .done = [](void*, zwlr_foreign_toplevel_handle_v1*) {},
    .closed = [](void* data, zwlr_foreign_toplevel_handle_v1*) { candidateOf(data).isClosed = true; },
    .parent = [](void*, zwlr_foreign_toplevel_handle_v1*, zwlr_foreign_toplevel_handle_v1*) {}};

constexpr zwlr_foreign_toplevel_manager_v1_listener kManagerListener{
    .toplevel =
        [](void* data, zwlr_foreign_toplevel_manager_v1*, zwlr_foreign_toplevel_handle_v1* handle) {
          auto& candidate = static_cast<Listing*>(data)->candidates.emplace_back();
          candidate.proxy.reset(handle);
          zwlr_foreign_toplevel_handle_v1_add_listener(handle, &kHandleListener, &candidate);
        },
    .finished = [](void* data, zwlr_foreign_toplevel_manager_v1*) { static_cast<Listing*>(data)->hasEnded = true; }};

}  // namespace

/// The manager is told to stop and then heard to its end: what it made of a window that opened meanwhile would
/// otherwise be nobody's.
std::optional<std::vector<Toplevel>> foreignToplevels(WlConnection& connection) {
  constexpr std::uint32_t kVersion = 3;
  if (!connection.isReachable()) return std::nullopt;
  const Owned<zwlr_foreign_toplevel_manager_v1> manager(
      connection.bindFirst<zwlr_foreign_toplevel_manager_v1>(zwlr_foreign_toplevel_manager_v1_interface, kVersion));
  if (!manager) return std::nullopt;
  Listing listing;
  zwlr_foreign_toplevel_manager_v1_add_listener(manager.get(), &kManagerListener, &listing);
  if (!connection.settle()) return std::nullopt;
  zwlr_foreign_toplevel_manager_v1_stop(manager.get());
  if (!connection.waitUntil([&listing] { return listing.hasEnded; })) return std::nullopt;
  std::vector<Toplevel> toplevels;
  for (auto& candidate : listing.candidates) {
    if (!candidate.isClosed) toplevels.push_back(std::move(candidate.toplevel));
  }
  return toplevels;
}

}  // namespace tavik::platform::wayland
