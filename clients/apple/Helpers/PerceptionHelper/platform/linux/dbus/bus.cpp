#include "platform/linux/dbus/bus.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <utility>

#include "platform/linux/dbus/sd_bus_library.h"

namespace tavik::platform::dbus {
namespace {

struct CloseBus {
  void operator()(sd_bus* bus) const { sdBus()->sd_bus_close_unref(bus); }
};
using OwnedBus = std::unique_ptr<sd_bus, CloseBus>;

/// `bus`, which has begun to connect, once it is ready.
Bus readyBus(OwnedBus bus, Deadline deadline) {
  while (sdBus()->sd_bus_is_ready(bus.get()) <= 0) {
    const auto left = std::chrono::ceil<std::chrono::microseconds>(deadline - std::chrono::steady_clock::now());
    if (left.count() <= 0 || !processBus(bus.get(), left)) return nullptr;
  }
  return bus;
}

}  // namespace

std::string localAddresses(std::string_view addressList) {
  std::string local;
  while (!addressList.empty()) {
    const std::string_view address = addressList.substr(0, addressList.find(';'));
    addressList.remove_prefix(std::min(addressList.size(), address.size() + 1));
    if (!address.starts_with("unix:")) continue;
    if (!local.empty()) local += ';';
    local += address;
  }
  return local;
}

Bus openBus(std::string_view addressList, Deadline deadline, Descriptors descriptors) {
  const std::string addresses = localAddresses(addressList);
  sd_bus* created = nullptr;
  if (addresses.empty() || !sdBus() || sdBus()->sd_bus_new(&created) < 0) return nullptr;
  OwnedBus bus(created);
  const bool begun = sdBus()->sd_bus_set_address(created, addresses.c_str()) >= 0 &&
                     sdBus()->sd_bus_set_bus_client(created, 1) >= 0 &&
                     sdBus()->sd_bus_negotiate_fds(created, descriptors == Descriptors::sent ? 1 : 0) >= 0 &&
                     sdBus()->sd_bus_start(created) >= 0;
  return begun ? readyBus(std::move(bus), deadline) : nullptr;
}

Bus openSessionBus(Deadline deadline, Descriptors descriptors) {
  if (const char* address = std::getenv("DBUS_SESSION_BUS_ADDRESS")) return openBus(address, deadline, descriptors);
  sd_bus* created = nullptr;
  if (!sdBus() || sdBus()->sd_bus_open_user(&created) < 0) return nullptr;
  return readyBus(OwnedBus(created), deadline);
}

bool processBus(sd_bus* bus, std::chrono::microseconds patience) {
  const int handled = sdBus()->sd_bus_process(bus, nullptr);
  if (handled != 0) return handled > 0;
  const int waited = sdBus()->sd_bus_wait(bus, static_cast<std::uint64_t>(std::max<std::int64_t>(patience.count(), 0)));
  return waited >= 0 || waited == -EINTR;
}

}  // namespace tavik::platform::dbus
