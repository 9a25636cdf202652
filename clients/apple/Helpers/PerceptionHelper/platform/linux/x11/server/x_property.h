#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <xcb/xproto.h>

#include "platform/linux/x11/server/x_connection.h"

/// Window properties. Any client may have written them, so neither type nor format, length or encoding is trusted.
namespace tavik::platform::x11 {

/// The value of a property as it came; no bytes when there is none.
struct PropertyValue {
  xcb_atom_t type = XCB_ATOM_NONE;
  std::uint8_t format = 0;   ///< bits per item: 8, 16 or 32
  bool isTruncated = false;  ///< the property is longer than what was asked for
  std::string bytes = {};    ///< items in this machine's byte order
};

/// How much of a property is read: more than any real title, name or list of states needs, and little beside the
/// megabytes that an application can put there.
inline constexpr std::uint32_t kPropertyBytes = 4096;

/// Asks for the first `maximumBytes` bytes of a property of any type.
xcb_get_property_cookie_t requestProperty(XConnection& connection, xcb_window_t window, xcb_atom_t name,
                                          std::uint32_t maximumBytes = kPropertyBytes);

/// The answer to such a request.
PropertyValue property(XConnection& connection, xcb_get_property_cookie_t cookie);

/// The items of a property of this type and of format 32; none when it is of another kind.
std::vector<std::uint32_t> words(const PropertyValue& value, xcb_atom_t type);

/// The first of them.
std::optional<std::uint32_t> firstWord(const PropertyValue& value, xcb_atom_t type);

/// A text property up to its first NUL, as valid UTF-8. Text of type STRING that is not UTF-8 is ISO 8859-1, as ICCCM
/// has it. Empty when the property is no text.
std::string textOf(const PropertyValue& value);

/// The two parts of WM_CLASS, as valid UTF-8.
struct WMClass {
  std::string instance = {};
  std::string className = {};
};

/// Reads WM_CLASS: two strings, each ended by a NUL. What is missing stays empty.
WMClass wmClass(const PropertyValue& value);

}  // namespace tavik::platform::x11
