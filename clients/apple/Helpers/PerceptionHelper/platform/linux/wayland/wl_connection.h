#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/linux/wayland/wl_proxy.h"

namespace tavik::platform::wayland {

/// Owns the connection to the compositor. It is made at the first question, and it is single-threaded. Waits have a
/// limit: a compositor that has once let it pass is asked nothing more.
class WlConnection {
 public:
  WlConnection() = default;
  WlConnection(const WlConnection&) = delete;
  WlConnection& operator=(const WlConnection&) = delete;
  ~WlConnection();

  /// True when there is a compositor that answers; connects to $WAYLAND_DISPLAY at the first call. Call it before the
  /// members below, which need a connection.
  bool isReachable();

  /// The process at the other end; 0 when it is not known.
  std::int32_t compositorProcessID() const;

  /// True when the compositor has a global object with this interface.
  bool has(const wl_interface& interface) const { return first(interface) != nullptr; }

  /// Binds the global object with this name and interface, at most at the version that both sides know; null when the
  /// compositor has none. The caller owns it.
  template <class Object>
  Object* bind(std::uint32_t name, const wl_interface& interface, std::uint32_t version) {
    return static_cast<Object*>(wl_registry_bind(registry_.get(), name, &interface, version));
  }
  template <class Object>
  Object* bindFirst(const wl_interface& interface, std::uint32_t version) {
    const auto* const global = first(interface);
    return global ? bind<Object>(global->name, interface, std::min(version, global->version)) : nullptr;
  }

  /// A global object of the compositor's.
  struct Global {
    std::uint32_t name = 0;
    std::string interface = {};
    std::uint32_t version = 0;
  };
  /// In the order in which the compositor announced them.
  const std::vector<Global>& globals() const { return globals_; }

  /// Handles events until the condition holds. False when that takes too long, or when the compositor has gone.
  bool waitUntil(const std::function<bool()>& holds);
  /// Waits until all requests so far have been handled, and their events.
  bool settle();

 private:
  struct Disconnect {
    void operator()(wl_display* display) const { wlClient()->wl_display_disconnect(display); }
  };

  const Global* first(const wl_interface& interface) const;
  bool readEvents(int milliseconds);

  bool triedToConnect_ = false;
  bool isOver_ = false;
  std::unique_ptr<wl_display, Disconnect> display_;
  Owned<wl_registry> registry_;
  std::vector<Global> globals_;
};

}  // namespace tavik::platform::wayland
