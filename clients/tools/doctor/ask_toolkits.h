#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>

#include "platform/linux/dbus/bus.h"

namespace tavik::doctor {

/// What an application on the accessibility bus says at the first question.
struct BusAnswer {
  bool answers = false;  ///< it answers at all
  std::optional<std::string> toolkit = {};
};

/// Asks all of these processes at once; those that are not on the bus are not in the result. Takes no longer than the
/// longest silence.
std::map<std::int32_t, BusAnswer> askToolkits(const platform::dbus::Bus& bus, std::span<const std::int32_t> processes);

}  // namespace tavik::doctor
