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
  using FindRoot = std::function<std::shared_ptr<Element>()>;
  using FindWindows = std::function<std::vector<DesktopWindow>()>;
  /// `findRoot` gives the application's object, or null; `findWindows` its windows as the window system has them,
  /// front to back.
  Application(FindRoot findRoot, FindWindows findWindows);

  std::optional<AttributeValue> copyAttributeValue(std::string_view name) override;
  /// The application's object, with its windows as children; null when there is none.
  Element* root();

 private:
  using ElementRef = std::shared_ptr<Element>;
  ElementRef focusedElement();
  std::vector<ElementRef> windowsMainFirst();

  FindRoot findRoot_;
  FindWindows findWindows_;
  bool isResolved_ = false;
  ElementRef root_;
  ElementRef mainWindow_;
};

}  // namespace tavik::platform::atspi
