#include "platform/linux/wayland/wl_workspace.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include "platform/linux/applications/identified_application.h"
#include "platform/linux/wayland/native_identity.h"

namespace tavik::platform::wayland {
namespace {

using Catalog = std::shared_ptr<applications::DesktopEntryCatalog>;
using Windows = std::vector<NativeWindow>;

/// The windows by their processes, in the order of the first of each. A window of no known process is nobody's.
std::vector<Windows> byProcess(const Windows& windows) {
  std::vector<Windows> processes;
  for (const auto& window : windows) {
    if (window.processID <= 0) continue;
    const auto known = std::ranges::find_if(
        processes, [&window](const Windows& of) { return of.front().processID == window.processID; });
    known != processes.end() ? known->push_back(window) : processes.push_back({window});
  }
  return processes;
}

RunningApplicationRef applicationOf(Windows windows, const Catalog& catalog) {
  const auto processID = windows.front().processID;
  return applications::makeApplication({.processID = processID,
                                        .policy = ActivationPolicy::regular,
                                        .identify = [processID, windows = std::move(windows), catalog] {
                                          return identityOf(processID, windows, *catalog);
                                        }});
}

class WlWorkspace final : public Workspace {
 public:
  WlWorkspace(std::shared_ptr<WlConnection> connection, NativeDesktopSource desktop, Catalog catalog)
      : connection_(std::move(connection)), desktop_(std::move(desktop)), catalog_(std::move(catalog)) {}

  /// Those with a window in front first.
  std::vector<RunningApplicationRef> runningApplications() override {
    std::vector<RunningApplicationRef> applications;
    for (auto& windows : byProcess(desktop_().windows)) {
      applications.push_back(applicationOf(std::move(windows), catalog_));
    }
    return applications;
  }

  std::vector<RunningApplicationRef> runningApplicationsWithBundleIdentifier(std::string_view identifier) override {
    return applications::withIdentifier(runningApplications(), identifier);
  }

  RunningApplicationRef frontmostApplication() override {
    for (auto& windows : byProcess(desktop_().windows)) {
      if (std::ranges::any_of(windows, &NativeWindow::isFocused)) return applicationOf(std::move(windows), catalog_);
    }
    return nullptr;
  }

  std::optional<Screen> mainScreen() override {
    const auto all = outputs(*connection_);
    if (all.empty()) return std::nullopt;
    return Screen{.screenNumber = all.front().global, .backingScaleFactor = scaleOf(all.front())};
  }

 private:
  std::shared_ptr<WlConnection> connection_;
  NativeDesktopSource desktop_;
  Catalog catalog_;
};

}  // namespace

std::unique_ptr<Workspace> makeWorkspace(std::shared_ptr<WlConnection> connection, NativeDesktopSource desktop,
                                         Catalog catalog) {
  return std::make_unique<WlWorkspace>(std::move(connection), std::move(desktop), std::move(catalog));
}

}  // namespace tavik::platform::wayland
