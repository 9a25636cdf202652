#pragma once

#include <cstdint>

#include "platform/accessibility.h"
#include "policy/sensitive_apps_config.h"
#include "protocol/response_dictionary.h"

namespace tavik {

/// The most children of one element that are walked; the rest are neither walked nor counted.
inline constexpr int maxAXChildren = 50;

/// How deep a walk is and may go; the root has depth 0, and elements at `maxDepth` are described without their
/// children.
struct WalkDepth {
  int depth = 0;
  int maxDepth = 0;
};

/// What a walk adds up as it goes: the counters of an AXSummary.
struct AXCounters {
  std::int64_t nodeCount = 0;
  std::int64_t textChars = 0;
  bool redactionApplied = false;
};

/// The element and everything below it, depth first, as nested nodes: "role", "title", "value", "help", "description"
/// (strings), "frame" (x, y, width, height; truncated toward zero) and "children", each only where the element has it.
/// A frame with a number that is not finite or does not fit 64 bits is left out. The value of an element whose role the
/// policy withholds is replaced by
/// "<redacted>". Adds to `counters`.
ResponseDictionary walkAXElement(const platform::UIElement& element, WalkDepth depth, AXCounters& counters,
                                 const SensitiveAppsConfig& redaction);

}  // namespace tavik
