#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include <systemd/sd-bus.h>

/// Connections to message buses. Opening one starts no process.
namespace tavik::platform::dbus {

/// A connection that is ready for calls; null when there is none. Closed with its last owner, without waiting for what
/// it has still to send.
using Bus = std::shared_ptr<sd_bus>;

using Deadline = std::chrono::steady_clock::time_point;

/// The entries of a D-Bus address list that lead to a socket of this machine. The other kinds may start a process or
/// ask a name server.
std::string localAddresses(std::string_view addressList);

/// Whether messages over the connection may carry file descriptors. It accepts none otherwise.
enum class Descriptors : std::uint8_t { none, sent };

/// Connects to the first local address that works. Null when that is none, or not by the deadline.
Bus openBus(std::string_view addressList, Deadline deadline, Descriptors descriptors = Descriptors::none);

/// The same for the session bus of this process's environment.
Bus openSessionBus(Deadline deadline, Descriptors descriptors = Descriptors::none);

/// Handles one message that has arrived, or waits for one, at most this long. False when the connection is lost.
bool processBus(sd_bus* bus, std::chrono::microseconds patience);

}  // namespace tavik::platform::dbus
