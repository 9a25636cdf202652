#include "platform/macos/ax_accessibility.h"

#include <ApplicationServices/ApplicationServices.h>
#include <utility>

#include "platform/macos/ax_element.h"

namespace tavik::platform::macos {
namespace {

struct AXAccessibility final : Accessibility {
  bool isProcessTrusted() const override { return AXIsProcessTrusted() != 0; }

  UIElementRef createApplication(std::int32_t processIdentifier) const override {
    return makeElement(CFRef(AXUIElementCreateApplication(processIdentifier)));
  }

  void prefetch(const UIElementRef& element, int maxDepth, int) const override { readInBatches(element, maxDepth); }
};

}  // namespace

std::unique_ptr<Accessibility> makeAccessibility() { return std::make_unique<AXAccessibility>(); }

}  // namespace tavik::platform::macos
