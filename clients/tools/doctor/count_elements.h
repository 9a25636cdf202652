#pragma once

#include <cstdint>

#include "platform/accessibility.h"

namespace tavik::doctor {

/// So many elements are counted, and no more.
inline constexpr std::int64_t kMostElements = 100;

struct ElementCount {
  std::int64_t elements = 0;  ///< kMostElements: so many or more
  bool hasPage = false;       ///< a page of a browser is among them
};

/// Counts what a walk of an application visits, level by level; nothing but windows counts, so an application without
/// any has no elements. Blocks until the application has answered or the platform's patience ends.
ElementCount countElements(platform::Accessibility& accessibility, std::int32_t processID);

}  // namespace tavik::doctor
