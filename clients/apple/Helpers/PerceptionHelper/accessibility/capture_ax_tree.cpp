#include "accessibility/capture_ax_tree.h"

#include <string_view>
#include <variant>
#include <vector>

#include "accessibility/walk_ax_element.h"

namespace tavik {
namespace {

using platform::UIElementRef;

platform::RunningApplicationRef chosenApplication(Target target, const std::optional<ResolvedTargetApp>& targetApp,
                                                  platform::Workspace& workspace) {
  if (target == Target::focused_element) return workspace.frontmostApplication();
  return targetApp ? targetApp->app : nullptr;
}

/// The element that an attribute holds; null when it holds none.
UIElementRef elementAttr(platform::UIElement& element, std::string_view name) {
  const auto value = element.copyAttributeValue(name);
  const auto* const found = value ? std::get_if<UIElementRef>(&*value) : nullptr;
  return found != nullptr ? *found : nullptr;
}

UIElementRef firstWindow(platform::UIElement& application) {
  const auto value = application.copyAttributeValue("AXWindows");
  const auto* const windows = value ? std::get_if<std::vector<UIElementRef>>(&*value) : nullptr;
  return windows != nullptr && !windows->empty() ? windows->front() : nullptr;
}

}  // namespace

UIElementRef walkedRoot(Target target, const UIElementRef& application) {
  UIElementRef root;
  if (target == Target::app) {
    root = elementAttr(*application, "AXMainWindow");
    if (!root) root = firstWindow(*application);
  } else if (target == Target::focused_element) {
    root = elementAttr(*application, "AXFocusedUIElement");
  }
  return root ? root : application;
}

AXSummary captureAXTree(Target target, const std::optional<ResolvedTargetApp>& targetApp,
                        const SensitiveAppsConfig& redaction, platform::Accessibility& accessibility,
                        platform::Workspace& workspace) {
  if (!accessibility.isProcessTrusted()) return {};
  const auto app = chosenApplication(target, targetApp, workspace);
  if (!app) return {};
  const auto root = walkedRoot(target, accessibility.createApplication(app->processIdentifier()));
  accessibility.prefetch(root,
                         {.maxDepth = kMaxAXDepth, .maxChildren = kMaxAXChildren, .attributes = kWalkedAXAttributes});
  AXSummary summary;
  summary.tree = walkAXElement(*root, {.depth = 0, .maxDepth = kMaxAXDepth}, summary, redaction);
  return summary;
}

}  // namespace tavik
