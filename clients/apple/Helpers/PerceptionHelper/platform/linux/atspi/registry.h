#pragma once

#include <cstdint>
#include <optional>

#include "platform/linux/dbus/conversation.h"

namespace tavik::platform::atspi {

/// The root object of the application that a process, or the Flatpak sandbox that it runs in, has registered on the
/// accessibility bus, if it has. Of several it is the first that has windows, else the first.
std::optional<dbus::Reference> findApplication(dbus::Conversation& conversation, std::int32_t processID);

}  // namespace tavik::platform::atspi
