#include "platform/macos/ax_accessibility.h"

#include <ApplicationServices/ApplicationServices.h>
#include <utility>

#include "platform/macos/ax_element.h"

namespace tavik::platform::macos {
namespace {

class AXAccessibility final : public Accessibility {
 public:
  bool isProcessTrusted() override { return AXIsProcessTrusted() != 0; }

  UIElementRef createApplication(std::int32_t processIdentifier) override {
    return makeElement(adopted(AXUIElementCreateApplication(processIdentifier)), silent_);
  }

  void prefetch(const UIElementRef& element, const WalkPlan& plan) override { readInBatches(element, plan); }

 private:
  std::shared_ptr<SilentProcesses> silent_ = std::make_shared<SilentProcesses>();
};

}  // namespace

std::unique_ptr<Accessibility> makeAccessibility() { return std::make_unique<AXAccessibility>(); }

}  // namespace tavik::platform::macos
