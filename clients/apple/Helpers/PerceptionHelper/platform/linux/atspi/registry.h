#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "platform/linux/dbus/conversation.h"

namespace tavik::platform::atspi {

/// An application on the accessibility bus.
struct RegisteredApplication {
  dbus::Reference root = {};
  std::int32_t processID = 0;  ///< of whoever is connected: a proxy's, where it runs in a Flatpak sandbox
};

/// All of them whose process is known.
std::vector<RegisteredApplication> registeredApplications(dbus::Conversation& conversation);

/// The root object of the application that a process, or the Flatpak sandbox that it runs in, has registered on the
/// accessibility bus, if it has. Of several it is the first that has windows, else the first.
std::optional<dbus::Reference> findApplication(dbus::Conversation& conversation, std::int32_t processID);

}  // namespace tavik::platform::atspi
