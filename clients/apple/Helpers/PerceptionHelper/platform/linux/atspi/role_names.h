#pragma once

#include <cstdint>
#include <string_view>

/// The AX roles of AT-SPI's roles. A role is told by its number, as libatspi does: the names that an object gives are
/// its toolkit's own ("text box" in GTK 4, "spin box" in Qt), and Qt 5 calls a password field "text".
namespace tavik::platform::atspi {

/// True when the number does not say which role it is: the object's role name has to be asked for.
bool needsRoleName(std::uint32_t role);

/// True when one role stands for fields of one line and of several: the object's states have to be asked for.
bool needsLineState(std::uint32_t role);

/// True of menus and what is in them.
bool isOfMenu(std::uint32_t role);

/// The AX role for a number. "AXUnknown" for a number beyond the known ones.
std::string_view axRole(std::uint32_t role, bool isMultiLine);

/// The AX role for the name of a role that has no number. "AXUnknown" for a name beyond the known ones.
std::string_view axRole(std::string_view roleName);

}  // namespace tavik::platform::atspi
