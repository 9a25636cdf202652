#pragma once

#include <array>
#include <string_view>

#include "accessibility/ax_summary.h"
#include "platform/accessibility.h"
#include "policy/sensitive_apps_config.h"
#include "protocol/response_dictionary.h"

namespace tavik {

/// The most children of one element that are walked; the rest are neither walked nor counted.
inline constexpr int kMaxAXChildren = 50;

/// The depth below its root to which a walk goes.
inline constexpr int kMaxAXDepth = 8;

/// What a walk reads of every element, in this order; the last one only of those whose children it visits.
inline constexpr std::array<std::string_view, 8> kWalkedAXAttributes{
    "AXRole", "AXTitle", "AXValue", "AXHelp", "AXDescription", "AXPosition", "AXSize", "AXChildren"};

/// How deep a walk is and may go; the root has depth 0, and elements at `maxDepth` are described without their
/// children.
struct WalkDepth {
  int depth = 0;
  int maxDepth = 0;
};

/// The element and everything below it, depth first, as nested nodes: "role", "title", "value", "help", "description"
/// (strings), "frame" (x, y, width, height; truncated toward zero) and "children", each only where the element has it.
/// A frame with a number that is not finite or does not fit 64 bits is left out. The value of an element whose role the
/// policy withholds is replaced by "<redacted>". Adds what it finds to the numbers in `summary`, whose tree it leaves
/// alone.
ResponseDictionary walkAXElement(platform::UIElement& element, WalkDepth depth, AXSummary& summary,
                                 const SensitiveAppsConfig& redaction);

}  // namespace tavik
