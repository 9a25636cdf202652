#include "platform/linux/wayland/plasma_windows.h"

#include <algorithm>
#include <list>
#include <set>
#include <string>
#include <string_view>
#include <utility>

#include "text/utf8.h"

namespace tavik::platform::wayland {
namespace {

/// A window while its events come in.
struct Candidate {
  NativeWindow window = {};
  std::set<std::string> desktops = {};  ///< on all of them when empty
  bool isGone = false;
  Owned<org_kde_plasma_window> proxy = {};
};

/// What the compositor has announced. Listeners point into both lists.
struct Announced {
  std::list<Candidate> windows = {};
  std::string stack = {};  ///< identifiers from the lowest window to the highest, each followed by a semicolon
  struct Desktop {
    std::string id = {};
    bool isShown = false;
    Owned<org_kde_plasma_virtual_desktop> proxy = {};
  };
  std::list<Desktop> desktops = {};
};

Candidate& candidateOf(void* data) { return *static_cast<Candidate*>(data); }
NativeWindow& windowOf(void* data) { return candidateOf(data).window; }
Announced& announcedOf(void* data) { return *static_cast<Announced*>(data); }

template <class... Arguments>
void ignore(void*, org_kde_plasma_window*, Arguments...) {}

constexpr org_kde_plasma_window_listener kWindowListener{
    .title_changed = [](void* data, org_kde_plasma_window*,
                        const char* title) { windowOf(data).title = text::toValidUTF8(title); },
    .app_id_changed = [](void* data, org_kde_plasma_window*,
                         const char* appID) { windowOf(data).appID = text::toValidUTF8(appID); },
    .state_changed =
        [](void* data, org_kde_plasma_window*, std::uint32_t flags) {
          windowOf(data).isFocused = (flags & ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_ACTIVE) != 0;
          windowOf(data).isMinimized = (flags & ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_MINIMIZED) != 0;
        },
    .virtual_desktop_changed = &ignore<std::int32_t>,
    .themed_icon_name_changed = &ignore<const char*>,
    .unmapped = [](void* data, org_kde_plasma_window*) { candidateOf(data).isGone = true; },
    .initial_state = &ignore<>,
    .parent_window = &ignore<org_kde_plasma_window*>,
    .geometry =
        [](void* data, org_kde_plasma_window*, std::int32_t x, std::int32_t y, std::uint32_t width,
           std::uint32_t height) {
          windowOf(data).contents = {.x = static_cast<double>(x),
                                     .y = static_cast<double>(y),
                                     .width = static_cast<double>(width),
                                     .height = static_cast<double>(height)};
        },
    .icon_changed = &ignore<>,
    .pid_changed = [](void* data, org_kde_plasma_window*,
                      std::uint32_t pid) { windowOf(data).processID = static_cast<std::int32_t>(pid); },
    .virtual_desktop_entered = [](void* data, org_kde_plasma_window*,
                                  const char* id) { candidateOf(data).desktops.insert(id); },
    .virtual_desktop_left = [](void* data, org_kde_plasma_window*,
                               const char* id) { candidateOf(data).desktops.erase(id); },
    .application_menu = &ignore<const char*, const char*>,
    .activity_entered = &ignore<const char*>,
    .activity_left = &ignore<const char*>,
    .resource_name_changed = [](void* data, org_kde_plasma_window*,
                                const char* name) { windowOf(data).instanceName = text::toValidUTF8(name); }};

constexpr org_kde_plasma_window_management_listener kManagementListener{
    .show_desktop_changed = [](void*, org_kde_plasma_window_management*, std::uint32_t) {},
    .window = [](void*, org_kde_plasma_window_management*, std::uint32_t) {},
    .stacking_order_changed = [](void*, org_kde_plasma_window_management*, wl_array*) {},
    .stacking_order_uuid_changed = [](void* data, org_kde_plasma_window_management*,
                                      const char* stack) { announcedOf(data).stack = stack; },
    .window_with_uuid =
        [](void* data, org_kde_plasma_window_management* management, std::uint32_t id, const char* uuid) {
          auto& candidate = announcedOf(data).windows.emplace_back();
          candidate.window.id = id & ~kNativeWindowBit;
          candidate.window.uuid = uuid;
          candidate.proxy.reset(org_kde_plasma_window_management_get_window_by_uuid(management, uuid));
          org_kde_plasma_window_add_listener(candidate.proxy.get(), &kWindowListener, &candidate);
        }};

bool& isShown(void* data) { return static_cast<Announced::Desktop*>(data)->isShown; }

constexpr org_kde_plasma_virtual_desktop_listener kDesktopListener{
    .desktop_id = [](void*, org_kde_plasma_virtual_desktop*, const char*) {},
    .name = [](void*, org_kde_plasma_virtual_desktop*, const char*) {},
    .activated = [](void* data, org_kde_plasma_virtual_desktop*) { isShown(data) = true; },
    .deactivated = [](void* data, org_kde_plasma_virtual_desktop*) { isShown(data) = false; },
    .done = [](void*, org_kde_plasma_virtual_desktop*) {},
    .removed = [](void*, org_kde_plasma_virtual_desktop*) {}};

constexpr org_kde_plasma_virtual_desktop_management_listener kDesktopsListener{
    .desktop_created =
        [](void* data, org_kde_plasma_virtual_desktop_management* management, const char* id, std::uint32_t) {
          auto& desktop = announcedOf(data).desktops.emplace_back(Announced::Desktop{.id = id});
          desktop.proxy.reset(org_kde_plasma_virtual_desktop_management_get_virtual_desktop(management, id));
          org_kde_plasma_virtual_desktop_add_listener(desktop.proxy.get(), &kDesktopListener, &desktop);
        },
    .desktop_removed = [](void*, org_kde_plasma_virtual_desktop_management*, const char*) {},
    .done = [](void*, org_kde_plasma_virtual_desktop_management*) {},
    .rows = [](void*, org_kde_plasma_virtual_desktop_management*, std::uint32_t) {}};

/// Where nothing is known of desktops, every window is on that which is shown.
bool isOnOtherDesktop(const Candidate& candidate, const Announced& announced) {
  const bool isOnAll = candidate.desktops.empty() || announced.desktops.empty();
  return !isOnAll && std::ranges::none_of(announced.desktops, [&candidate](const auto& desktop) {
    return desktop.isShown && candidate.desktops.contains(desktop.id);
  });
}

std::vector<NativeWindow> windowsOf(Announced announced) {
  std::vector<NativeWindow> windows;
  for (auto& candidate : announced.windows) {
    candidate.window.isOnOtherWorkspace = isOnOtherDesktop(candidate, announced);
    if (!candidate.isGone) windows.push_back(std::move(candidate.window));
  }
  const auto height = [&announced](const NativeWindow& window) { return announced.stack.find(window.uuid) + 1; };
  std::ranges::stable_sort(windows, std::ranges::greater(), height);
  return windows;
}

}  // namespace

std::optional<std::vector<NativeWindow>> plasmaWindows(WlConnection& connection) {
  constexpr std::uint32_t kLeastVersion = 13, kVersion = 16;  // from 13 on windows are told with the names ...by_uuid
  if (!connection.isReachable()) return std::nullopt;
  Announced announced;
  const Owned<org_kde_plasma_window_management> management(
      connection.bindFirst<org_kde_plasma_window_management>(org_kde_plasma_window_management_interface, kVersion));
  if (!management || org_kde_plasma_window_management_get_version(management.get()) < kLeastVersion) {
    return std::nullopt;
  }
  org_kde_plasma_window_management_add_listener(management.get(), &kManagementListener, &announced);
  const Owned<org_kde_plasma_virtual_desktop_management> desktops(
      connection.bindFirst<org_kde_plasma_virtual_desktop_management>(
          org_kde_plasma_virtual_desktop_management_interface, 1));
  if (desktops) {
    org_kde_plasma_virtual_desktop_management_add_listener(desktops.get(), &kDesktopsListener, &announced);
  }
  // the first round names them, the second tells of them
  if (!connection.settle() || !connection.settle()) return std::nullopt;
  return windowsOf(std::move(announced));
}

bool isKWin(const WlConnection& connection) {
  return std::ranges::any_of(connection.globals(), [](const auto& global) {
    return global.interface == org_kde_plasma_virtual_desktop_management_interface.name;
  });
}

}  // namespace tavik::platform::wayland
