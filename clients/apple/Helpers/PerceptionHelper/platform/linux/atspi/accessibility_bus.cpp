#include "platform/linux/atspi/accessibility_bus.h"

#include <array>
#include <chrono>
#include <cstdlib>

#include "platform/linux/atspi/reply.h"
#include "platform/linux/dbus/conversation.h"

namespace tavik::platform::atspi {
namespace {

std::optional<std::string> addressOfEnvironment() {
  const char* address = std::getenv("AT_SPI_BUS_ADDRESS");
  return address ? std::optional<std::string>(address) : std::nullopt;
}

std::optional<std::string> addressOfSessionBus(dbus::Deadline deadline) {
  dbus::Bus session = dbus::openSessionBus(deadline);
  if (!session) return std::nullopt;
  const auto left = std::chrono::ceil<std::chrono::microseconds>(deadline - std::chrono::steady_clock::now());
  dbus::Conversation conversation(session, dbus::Patience({.silence = left, .total = left}));
  std::optional<std::string> address;
  conversation.ask({.busName = "org.a11y.Bus", .path = "/org/a11y/bus"}, "org.a11y.Bus", "GetAddress",
                   [&address](const dbus::Answer& answer) { address = readString(answer.reply); });
  conversation.settle();
  return address;
}

}  // namespace

/// The root window comes last: every client of the X server can write its property.
dbus::Bus connectToAccessibilityBus(const std::function<std::optional<std::string>()>& addressOfRootWindow) {
  const std::array<std::function<std::optional<std::string>(dbus::Deadline)>, 3> sources{
      [](dbus::Deadline) { return addressOfEnvironment(); }, addressOfSessionBus,
      [&](dbus::Deadline) { return addressOfRootWindow(); }};
  for (const auto& source : sources) {
    const auto deadline = std::chrono::steady_clock::now() + dbus::kLongestSilence / sources.size();
    const auto address = source(deadline);
    if (!address) continue;
    if (dbus::Bus bus = dbus::openBus(*address, deadline)) return bus;
  }
  return nullptr;
}

}  // namespace tavik::platform::atspi
