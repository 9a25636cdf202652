#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tavik::doctor {

enum class Level : std::uint8_t {
  ok,
  hint,   ///< worth knowing; nothing has to be done
  fault,  ///< something to mend
};

/// What was found out, in whole sentences for a person.
struct Finding {
  Level level = Level::ok;
  std::string_view about = {};  ///< "desktop", "pictures", "trees", "applications" or "policy"
  std::string text = {};
  std::optional<std::string> remedy = {};  ///< what to do about it
  bool operator==(const Finding&) const = default;
};

}  // namespace tavik::doctor
