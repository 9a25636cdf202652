#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

/// The settings that a desktop tells its applications through the X server (freedesktop.org, XSETTINGS 0.5).
namespace tavik::platform::x11 {

/// The integer setting of this name among `settings` (the bytes of the property _XSETTINGS_SETTINGS). Nothing when
/// there is none, when it is of another type, or when what comes before it is malformed.
std::optional<std::int32_t> integerSetting(std::string_view settings, std::string_view name);

}  // namespace tavik::platform::x11
