#include "platform/linux/wayland/wl_connection.h"

#include <algorithm>
#include <chrono>
#include <poll.h>
#include <sys/socket.h>

#include "platform/linux/wayland/identifiable_process.h"
#include "platform/posix/run_time.h"

namespace tavik::platform::wayland {
namespace {

using Clock = std::chrono::steady_clock;

/// How long the compositor may take for one answer, which usually takes it less than a millisecond.
constexpr std::chrono::milliseconds kPatience{1200};

constexpr wl_registry_listener kRegistryListener{
    .global =
        [](void* data, wl_registry*, std::uint32_t name, const char* interface, std::uint32_t version) {
          auto& globals = *static_cast<std::vector<WlConnection::Global>*>(data);
          globals.push_back({.name = name, .interface = interface, .version = version});
        },
    .global_remove =
        [](void* data, wl_registry*, std::uint32_t name) {
          std::erase_if(*static_cast<std::vector<WlConnection::Global>*>(data),
                        [name](const auto& global) { return global.name == name; });
        }};

constexpr wl_callback_listener kDoneListener{
    .done = [](void* data, wl_callback*, std::uint32_t) { *static_cast<bool*>(data) = true; }};

/// libwayland would print protocol errors on standard error.
void keepQuiet(const char*, va_list) {}

}  // namespace

WlConnection::~WlConnection() = default;

bool WlConnection::isReachable() {
  if (!triedToConnect_) {
    triedToConnect_ = true;
    if (wlClient() == nullptr) return false;
    wlClient()->wl_log_set_handler_client(&keepQuiet);
    const IdentifiableProcess whileGlobalsAreAnnounced;
    display_.reset(wlClient()->wl_display_connect(nullptr));
    if (display_) {
      registry_.reset(wl_display_get_registry(display_.get()));
      wl_registry_add_listener(registry_.get(), &kRegistryListener, &globals_);
      settle();
    }
  }
  return display_ && !isOver_;
}

std::int32_t WlConnection::compositorProcessID() const {
  ucred peer{};
  socklen_t size = sizeof peer;
  const int descriptor = display_ ? wlClient()->wl_display_get_fd(display_.get()) : -1;
  return ::getsockopt(descriptor, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 ? peer.pid : 0;
}

const WlConnection::Global* WlConnection::first(const wl_interface& interface) const {
  const auto found = std::ranges::find(globals_, interface.name, &Global::interface);
  return found != globals_.end() ? &*found : nullptr;
}

bool WlConnection::settle() {
  bool isDone = false;
  const Owned<wl_callback> callback(wl_display_sync(display_.get()));
  wl_callback_add_listener(callback.get(), &kDoneListener, &isDone);
  return waitUntil([&isDone] { return isDone; });
}

bool WlConnection::waitUntil(const std::function<bool()>& holds) {
  const auto deadline = Clock::now() + posix::withinRunTime(kPatience);
  while (!isOver_ && !holds()) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
    isOver_ = left.count() <= 0 || !readEvents(static_cast<int>(left.count()));
  }
  return !isOver_;
}

/// Waits for events and handles what comes; false when the connection is at its end.
bool WlConnection::readEvents(int milliseconds) {
  const auto* const library = wlClient();
  while (library->wl_display_prepare_read(display_.get()) != 0) {
    if (library->wl_display_dispatch_pending(display_.get()) < 0) return false;
  }
  library->wl_display_flush(display_.get());
  pollfd waiting{.fd = library->wl_display_get_fd(display_.get()), .events = POLLIN, .revents = 0};
  if (::poll(&waiting, 1, milliseconds) > 0) {
    if (library->wl_display_read_events(display_.get()) < 0) return false;
  } else {
    library->wl_display_cancel_read(display_.get());
  }
  return library->wl_display_dispatch_pending(display_.get()) >= 0;
}

}  // namespace tavik::platform::wayland
