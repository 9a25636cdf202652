#include "platform/linux/atspi/atspi_accessibility.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "platform/linux/atspi/accessibility_bus.h"
#include "platform/linux/atspi/application.h"
#include "platform/linux/atspi/registry.h"
#include "platform/linux/atspi/tree.h"

namespace tavik::platform::atspi {
namespace {

/// The desktop as all applications share it: connected to when first asked for.
class Desktop {
 public:
  explicit Desktop(WindowSystem windowSystem) : windowSystem_(std::move(windowSystem)) {}

  const dbus::Bus& bus() {
    if (!std::exchange(isConnected_, true)) bus_ = connectToAccessibilityBus(windowSystem_.accessibilityBusAddress);
    return bus_;
  }

  std::shared_ptr<Element> findRoot(std::int32_t processID) {
    if (!bus()) return nullptr;
    auto session = std::make_shared<Session>(bus());
    const auto root = findApplication(session->conversation, processID);
    return root ? std::make_shared<Element>(std::move(session), *root, Placement{}) : nullptr;
  }

  std::vector<DesktopWindow> windowsOf(std::int32_t processID) const {
    return windowSystem_.windowsOfProcess(processID);
  }

 private:
  WindowSystem windowSystem_;
  bool isConnected_ = false;
  dbus::Bus bus_;
};

class AtspiAccessibility final : public Accessibility {
 public:
  explicit AtspiAccessibility(WindowSystem windowSystem)
      : desktop_(std::make_shared<Desktop>(std::move(windowSystem))) {}

  bool isProcessTrusted() override { return desktop_->bus() != nullptr; }

  UIElementRef createApplication(std::int32_t processID) override {
    return std::make_shared<Application>([desktop = desktop_, processID] { return desktop->findRoot(processID); },
                                         [desktop = desktop_, processID] { return desktop->windowsOf(processID); });
  }

  void prefetch(const UIElementRef& element, const WalkPlan& plan) override {
    auto* const application = dynamic_cast<Application*>(element.get());
    auto* const root = application != nullptr ? application->root() : dynamic_cast<Element*>(element.get());
    if (root == nullptr) return;
    readTree(*root, {.maxDepth = plan.maxDepth,
                     .maxChildren = static_cast<std::size_t>(std::max(plan.maxChildren, 0)),
                     .maxElements = SIZE_MAX,
                     .facts = factsFor(plan.attributes)});
  }

 private:
  std::shared_ptr<Desktop> desktop_;
};

}  // namespace

std::unique_ptr<Accessibility> makeAccessibility(WindowSystem windowSystem) {
  return std::make_unique<AtspiAccessibility>(std::move(windowSystem));
}

}  // namespace tavik::platform::atspi
