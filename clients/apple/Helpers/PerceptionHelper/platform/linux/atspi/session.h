#pragma once

#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <utility>

#include "platform/linux/dbus/bus.h"
#include "platform/linux/dbus/conversation.h"
#include "platform/linux/dbus/patience.h"

namespace tavik::platform::atspi {

/// What Component.GetExtents counts from (AtspiCoordType).
enum class Coordinates : std::uint32_t { screen = 0, window = 1 };

/// What the elements of one application share: the conversation with it, and how much of it is still taken. The limits
/// keep an endless tree from filling the memory; a browser's window has some thousands of elements.
struct Session {
  explicit Session(dbus::Bus bus, dbus::Patience patience = dbus::Patience())
      : conversation(std::move(bus), std::move(patience)) {}

  dbus::Conversation conversation;
  Coordinates coordinates = Coordinates::screen;
  /// All properties of an object may be asked for at once. Qt 5 crashes when it is asked so.
  bool hasAllProperties = false;
  /// Every object implements Component and Text, so that nobody needs to be asked whether it does.
  bool hasTextEverywhere = false;
  /// What is in a closed menu has no extents, and does not claim to be showing, so that nobody needs to ask for them.
  bool placesOpenMenusOnly = false;
  std::size_t elementsLeft = 20'000;
  std::size_t textBytesLeft = std::size_t{8} << 20U;
  std::set<std::string> withoutHelpText = {};  ///< bus names whose toolkit knows no HelpText, a property of newer ones
};

}  // namespace tavik::platform::atspi
