#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "platform/geometry.h"

/// The user interface of running applications. Reads only: nothing here moves focus, raises a window or starts a
/// process.
namespace tavik::platform {

struct UIElement;
using UIElementRef = std::shared_ptr<UIElement>;

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
  virtual std::optional<AttributeValue> copyAttributeValue(std::string_view name) = 0;
};

/// Which part of a tree a walk is about to read.
struct WalkPlan {
  int maxDepth = 0;     ///< of the elements that are visited; the first has depth 0
  int maxChildren = 0;  ///< the first so many of each element are visited
  std::span<const std::string_view> attributes =
      {};  ///< read of every visited element, "AXChildren" only above maxDepth; they outlive every element
};

/// Access to the elements of applications.
struct Accessibility {
  virtual ~Accessibility() = default;
  /// True when this process may read other applications' trees (AXIsProcessTrusted). Never prompts.
  virtual bool isProcessTrusted() = 0;
  /// The element of a whole application (AXUIElementCreateApplication). Always yields one: every read of a process that
  /// has quit simply finds nothing.
  virtual UIElementRef createApplication(std::int32_t processIdentifier) = 0;
  /// A hint that a walk begins at `element`. A backend may fetch what the plan says in a few round trips; every read
  /// answers as it would have without the hint.
  virtual void prefetch(const UIElementRef& element, const WalkPlan& plan) = 0;
};

}  // namespace tavik::platform
