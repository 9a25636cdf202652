#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "platform/geometry.h"

/// The user interface of running applications. Reads only: nothing here moves focus, raises a window or starts a
/// process.
namespace tavik::platform {

struct UIElement;
using UIElementRef = std::shared_ptr<const UIElement>;

/// A value of a type that the program does not read.
struct OtherValue {};

/// The value of an attribute. Strings are valid UTF-8; numbers may be anything, NaN and infinities included; no
/// reference and no list member is null.
using AttributeValue =
    std::variant<OtherValue, std::string, double, bool, Point, Size, UIElementRef, std::vector<UIElementRef>>;

/// One element of a user interface (AXUIElement).
struct UIElement {
  virtual ~UIElement() = default;
  /// The value of the attribute with this name (AXUIElementCopyAttributeValue): "AXRole", "AXTitle", "AXValue",
  /// "AXHelp", "AXDescription", "AXPosition", "AXSize", "AXChildren"; of an application also "AXMainWindow",
  /// "AXWindows" and "AXFocusedUIElement". Nothing when it cannot be read, for whatever reason. Blocks until the
  /// application answers or the platform's patience ends.
  virtual std::optional<AttributeValue> copyAttributeValue(std::string_view name) const = 0;
};

/// Access to the elements of applications.
struct Accessibility {
  virtual ~Accessibility() = default;
  /// True when this process may read other applications' trees (AXIsProcessTrusted). Never prompts.
  virtual bool isProcessTrusted() const = 0;
  /// The element of a whole application (AXUIElementCreateApplication). Always yields one: every read of a process that
  /// has quit simply finds nothing.
  virtual UIElementRef createApplication(std::int32_t processIdentifier) const = 0;
  /// A hint that the first `maxChildren` children of each element are about to be walked, from `element` (depth 0) down
  /// to depth `maxDepth`. A backend may fetch that subtree in a few round trips; every read answers as it would have
  /// without the hint.
  virtual void prefetch(const UIElementRef& element, int maxDepth, int maxChildren) const = 0;
};

}  // namespace tavik::platform
