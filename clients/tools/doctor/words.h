#pragma once

#include <string_view>

#include "tools/doctor/finding.h"

/// Words that both ways of telling a report have in common.
namespace tavik::doctor {

/// The project's.
inline constexpr std::string_view kVersion = TAVIK_VERSION;

constexpr std::string_view word(Level level) {
  switch (level) {
    case Level::ok:
      return "ok";
    case Level::hint:
      return "hint";
    case Level::fault:
      break;
  }
  return "fault";
}

}  // namespace tavik::doctor
