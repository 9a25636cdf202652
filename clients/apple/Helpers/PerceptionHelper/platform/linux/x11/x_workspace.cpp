#include "platform/linux/x11/x_workspace.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "platform/linux/applications/application_identity.h"
#include "platform/linux/applications/process_evidence.h"
#include "platform/linux/x11/monitors.h"
#include "platform/linux/x11/scale_factor.h"
#include "platform/linux/x11/windows/managed_windows.h"

namespace tavik::platform::x11 {
namespace {

using applications::ApplicationEvidence;
using applications::ApplicationIdentity;
using applications::DesktopEntryCatalog;

/// A process and the window that speaks for it: the first regular one, else the first; none for a mere client.
struct ApplicationProcess {
  std::int32_t processID = 0;
  std::optional<ManagedWindow> window = {};
};

/// Adds a process, or another window of a known one.
void addWindow(std::vector<ApplicationProcess>& processes, const ManagedWindow& window) {
  if (window.processID <= 0) return;
  const auto known =
      std::ranges::find_if(processes, [&](const auto& process) { return process.processID == window.processID; });
  if (known == processes.end()) {
    processes.push_back({.processID = window.processID, .window = window});
  } else if (window.isRegular && !known->window->isRegular) {
    known->window = window;
  }
}

std::vector<ApplicationProcess> processesOf(const Desktop& desktop) {
  std::vector<ApplicationProcess> processes;
  for (const auto& window : desktop.windows) addWindow(processes, window);
  for (const auto& client : desktop.clients) {
    const bool isKnown =
        std::ranges::any_of(processes, [&](const auto& process) { return process.processID == client.processID; });
    if (!isKnown) processes.push_back({.processID = client.processID});
  }
  return processes;
}

/// Identifies itself at the first question, which may have to read all desktop entries.
class XApplication final : public RunningApplication {
 public:
  XApplication(ApplicationProcess process, std::shared_ptr<DesktopEntryCatalog> catalog)
      : process_(std::move(process)), catalog_(std::move(catalog)) {}

  std::int32_t processIdentifier() override { return process_.processID; }
  std::optional<std::string> bundleIdentifier() override { return identity().bundleIdentifier; }
  std::optional<std::string> localizedName() override { return identity().localizedName; }

  ActivationPolicy activationPolicy() override {
    if (!process_.window) return ActivationPolicy::prohibited;
    return process_.window->isRegular && !identity().noDisplay ? ActivationPolicy::regular
                                                               : ActivationPolicy::accessory;
  }

 private:
  const ApplicationIdentity& identity() {
    if (!identity_) identity_ = applications::identify(evidence(), *catalog_);
    return *identity_;
  }

  ApplicationEvidence evidence() const {
    const auto window = process_.window.value_or(ManagedWindow{});
    return {.flatpakID = applications::flatpakID(process_.processID),
            .gtkApplicationID = window.gtkApplicationID,
            .instanceName = window.instanceName,
            .className = window.className,
            .executable = applications::executableName(process_.processID),
            .processName = applications::processName(process_.processID)};
  }

  ApplicationProcess process_;
  std::shared_ptr<DesktopEntryCatalog> catalog_;
  std::optional<ApplicationIdentity> identity_ = {};
};

class XWorkspace final : public Workspace {
 public:
  explicit XWorkspace(std::shared_ptr<XConnection> connection) : connection_(std::move(connection)) {}

  std::vector<RunningApplicationRef> runningApplications() override {
    return applicationsOf(readDesktop(*connection_));
  }

  std::vector<RunningApplicationRef> runningApplicationsWithBundleIdentifier(std::string_view identifier) override {
    auto applications = runningApplications();
    std::erase_if(applications, [&](const auto& application) { return application->bundleIdentifier() != identifier; });
    return applications;
  }

  RunningApplicationRef frontmostApplication() override {
    const auto desktop = readDesktop(*connection_);
    const auto applications = applicationsOf(desktop);
    const auto frontmost = std::ranges::find_if(applications, [&](const auto& application) {
      return application->processIdentifier() == desktop.activeProcessID;
    });
    return frontmost != applications.end() ? *frontmost : nullptr;
  }

  std::optional<Screen> mainScreen() override {
    const auto all = monitors(*connection_);
    if (all.empty()) return std::nullopt;
    return Screen{.screenNumber = all.front().output, .backingScaleFactor = scaleFactor(*connection_)};
  }

 private:
  std::vector<RunningApplicationRef> applicationsOf(const Desktop& desktop) {
    if (!catalog_) catalog_ = std::make_shared<DesktopEntryCatalog>(applications::applicationFolders());
    std::vector<RunningApplicationRef> applications;
    for (auto& process : processesOf(desktop)) {
      applications.push_back(std::make_shared<XApplication>(std::move(process), catalog_));
    }
    return applications;
  }

  std::shared_ptr<XConnection> connection_;
  std::shared_ptr<DesktopEntryCatalog> catalog_;  ///< made when it is first needed
};

}  // namespace

std::unique_ptr<Workspace> makeWorkspace(std::shared_ptr<XConnection> connection) {
  return std::make_unique<XWorkspace>(std::move(connection));
}

}  // namespace tavik::platform::x11
