#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <systemd/sd-bus.h>

#include "platform/linux/atspi/window_matching.h"
#include "platform/linux/dbus/conversation.h"

/// The contents of replies. Each reader gives nothing for a null reply and for one of another type or with text that is
/// not UTF-8.
namespace tavik::platform::atspi {

/// Interfaces that objects implement.
constexpr auto kAccessible = "org.a11y.atspi.Accessible";
constexpr auto kApplication = "org.a11y.atspi.Application";
constexpr auto kCollection = "org.a11y.atspi.Collection";
constexpr auto kComponent = "org.a11y.atspi.Component";
constexpr auto kText = "org.a11y.atspi.Text";

/// States of an object, a bit for each number of AtspiStateType.
using States = std::uint64_t;
constexpr States kActive = States{1} << 1U;
constexpr States kFocused = States{1} << 12U;
constexpr States kIconified = States{1} << 15U;
constexpr States kMultiLine = States{1} << 17U;
constexpr States kShowing = States{1} << 25U;
constexpr States kVisible = States{1} << 30U;

/// Which of the interfaces that not every object has an object implements.
struct Interfaces {
  bool collection = false;
  bool component = false;
  bool text = false;
};

/// What is wanted of the properties of an object.
struct Properties {
  std::optional<std::string> name = {};
  std::optional<std::string> description = {};
  std::optional<std::string> helpText = {};
  std::optional<std::int32_t> childCount = {};
  bool operator==(const Properties&) const = default;
};

std::optional<std::string> readString(sd_bus_message* reply);
std::optional<std::string> readStringProperty(sd_bus_message* reply);
std::optional<std::int32_t> readInt32Property(sd_bus_message* reply);
/// Those that stand in the dictionary of them all (a{sv}), up to the first that is not of its type.
Properties readAllProperties(sd_bus_message* reply);
std::optional<std::uint32_t> readUInt32(sd_bus_message* reply);
std::optional<States> readStates(sd_bus_message* reply);
std::optional<Interfaces> readInterfaces(sd_bus_message* reply);
std::optional<Extents> readExtents(sd_bus_message* reply);
/// One reference; nothing when it is the null object.
std::optional<dbus::Reference> readReference(sd_bus_message* reply);
/// The same of a property.
std::optional<dbus::Reference> readReferenceProperty(sd_bus_message* reply);
/// The first `limit` references that are not the null object.
std::optional<std::vector<dbus::Reference>> readReferences(sd_bus_message* reply, std::size_t limit);

}  // namespace tavik::platform::atspi
