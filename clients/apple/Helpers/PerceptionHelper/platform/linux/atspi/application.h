#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "platform/accessibility.h"
#include "platform/linux/atspi/element.h"
#include "platform/linux/atspi/window_system.h"

namespace tavik::platform::atspi {

/// The element of a whole application. Finds its object on the bus when the first attribute is read.
class Application final : public UIElement {
 public:
  using FindRoot = std::function<std::shared_ptr<const Element>()>;
  using FindWindows = std::function<std::vector<DesktopWindow>()>;
  /// `findRoot` gives the application's object, or null; `findWindows` its windows as the window system has them,
  /// front to back.
  Application(FindRoot findRoot, FindWindows findWindows);

  std::optional<AttributeValue> copyAttributeValue(std::string_view name) const override;
  /// The application's object, with its windows as children; null when there is none.
  const Element* root() const;

 private:
  using ElementRef = std::shared_ptr<const Element>;
  ElementRef mainWindow() const;
  ElementRef focusedElement() const;
  std::vector<ElementRef> windowsMainFirst() const;

  FindRoot findRoot_;
  FindWindows findWindows_;
  mutable bool isResolved_ = false;
  mutable ElementRef root_;
};

}  // namespace tavik::platform::atspi
