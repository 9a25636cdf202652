#include "platform/linux/wayland/toplevel_handle.h"

#include <utility>
#include <vector>

namespace tavik::platform::wayland {
namespace {

ToplevelHandle& handleOf(void* data) { return *static_cast<ToplevelHandle*>(data); }

constexpr ext_foreign_toplevel_handle_v1_listener kHandleListener{
    .closed = [](void* data, ext_foreign_toplevel_handle_v1*) { handleOf(data).isClosed = true; },
    .done = [](void*, ext_foreign_toplevel_handle_v1*) {},
    .title = [](void*, ext_foreign_toplevel_handle_v1*, const char*) {},
    .app_id = [](void*, ext_foreign_toplevel_handle_v1*, const char*) {},
    .identifier = [](void* data, ext_foreign_toplevel_handle_v1*,
                     const char* identifier) { handleOf(data).identifier = identifier; }};

/// What the list has told so far.
struct Listing {
  std::vector<std::unique_ptr<ToplevelHandle>> handles = {};
  bool hasEnded = false;
};

constexpr ext_foreign_toplevel_list_v1_listener kListListener{
    .toplevel =
        [](void* data, ext_foreign_toplevel_list_v1*, ext_foreign_toplevel_handle_v1* proxy) {
          const auto& handle = static_cast<Listing*>(data)->handles.emplace_back(std::make_unique<ToplevelHandle>());
          handle->proxy.reset(proxy);
          ext_foreign_toplevel_handle_v1_add_listener(proxy, &kHandleListener, handle.get());
        },
    .finished = [](void* data, ext_foreign_toplevel_list_v1*) { static_cast<Listing*>(data)->hasEnded = true; }};

}  // namespace

/// The list is heard to its end: what it made of a window that opened meanwhile would otherwise be nobody's.
std::unique_ptr<ToplevelHandle> toplevelHandle(WlConnection& connection, std::string_view identifier) {
  constexpr std::uint32_t kVersion = 1;
  if (!connection.isReachable()) return nullptr;
  const Owned<ext_foreign_toplevel_list_v1> list(
      connection.bindFirst<ext_foreign_toplevel_list_v1>(ext_foreign_toplevel_list_v1_interface, kVersion));
  if (!list) return nullptr;
  Listing listing;
  ext_foreign_toplevel_list_v1_add_listener(list.get(), &kListListener, &listing);
  if (!connection.settle()) return nullptr;
  ext_foreign_toplevel_list_v1_stop(list.get());
  if (!connection.waitUntil([&listing] { return listing.hasEnded; })) return nullptr;
  for (auto& handle : listing.handles) {
    if (handle->identifier == identifier && !handle->isClosed) return std::move(handle);
  }
  return nullptr;
}

}  // namespace tavik::platform::wayland
