#include "platform/linux/x11/x_workspace.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <optional>
#include <utility>

#include "platform/linux/x11/monitors.h"
#include "platform/linux/x11/scale_factor.h"
#include "platform/linux/x11/window_identity.h"
#include "platform/linux/x11/windows/managed_windows.h"

namespace tavik::platform::x11 {
namespace {

using applications::ApplicationIdentity;
using applications::DesktopEntryCatalog;

/// A process and its windows, the one first that speaks for it: a regular one where there is one. None for a mere
/// client.
struct ApplicationProcess {
  std::int32_t processID = 0;
  std::vector<ManagedWindow> windows = {};
};

/// Adds a process, or another window of a known one.
void addWindow(std::vector<ApplicationProcess>& processes, const ManagedWindow& window) {
  if (window.processID == 0) return;
  const auto known =
      std::ranges::find_if(processes, [&](const auto& process) { return process.processID == window.processID; });
  if (known == processes.end()) {
    processes.push_back({.processID = window.processID, .windows = {window}});
    return;
  }
  auto& windows = known->windows;
  const bool speaks = window.isRegular && !windows.front().isRegular;
  windows.insert(speaks ? windows.begin() : windows.end(), window);
}

/// Of several processes of one application, the one that a person means comes first: the active one, then by what is in
/// view, front to back.
void sortByUse(std::vector<ApplicationProcess>& processes, const Desktop& desktop) {
  constexpr auto kOutOfView = std::numeric_limits<std::ptrdiff_t>::max();
  const auto depth = [&](const ManagedWindow& window) {
    const bool isInView = window.isOnScreen && window.isRegular;
    return isInView ? desktop.topLevels.end() - std::ranges::find(desktop.topLevels, window.frame) : kOutOfView;
  };
  const auto rank = [&](const ApplicationProcess& process) {
    if (process.processID == desktop.activeProcessID) return std::ptrdiff_t{-1};
    auto least = kOutOfView;
    for (const auto& window : process.windows) least = std::min(least, depth(window));
    return least;
  };
  std::ranges::stable_sort(processes, {}, rank);
}

std::vector<ApplicationProcess> processesOf(const Desktop& desktop) {
  std::vector<ApplicationProcess> processes;
  for (const auto& window : desktop.windows) addWindow(processes, window);
  for (const auto& client : desktop.clients) {
    const bool isKnown =
        std::ranges::any_of(processes, [&](const auto& process) { return process.processID == client.processID; });
    if (!isKnown) processes.push_back({.processID = client.processID});
  }
  sortByUse(processes, desktop);
  return processes;
}

/// Identifies itself at the first question, which may have to read all desktop entries.
class XApplication final : public RunningApplication {
 public:
  XApplication(ApplicationProcess process, std::shared_ptr<DesktopEntryCatalog> catalog)
      : process_(std::move(process)), catalog_(std::move(catalog)) {}

  std::int32_t processIdentifier() override { return process_.processID; }
  const std::vector<std::string>& ownIdentifiers() { return identity().bundleIdentifiers; }
  std::vector<std::string> bundleIdentifiers() override {
    return withThoseOfRelay(ownIdentifiers(), process_.windows, *catalog_);
  }
  std::optional<std::string> bundleIdentifier() override {
    const auto& identifiers = ownIdentifiers();
    return identifiers.empty() ? std::nullopt : std::optional(identifiers.front());
  }
  std::optional<std::string> localizedName() override { return identity().localizedName; }

  ActivationPolicy activationPolicy() override {
    if (process_.windows.empty()) return ActivationPolicy::prohibited;
    return process_.windows.front().isRegular && !identity().noDisplay ? ActivationPolicy::regular
                                                                       : ActivationPolicy::accessory;
  }

 private:
  const ApplicationIdentity& identity() {
    if (!identity_) identity_ = identityOfProcess(process_.processID, process_.windows, *catalog_);
    return *identity_;
  }

  ApplicationProcess process_;
  std::shared_ptr<DesktopEntryCatalog> catalog_;
  std::optional<ApplicationIdentity> identity_ = {};
};

class XWorkspace final : public Workspace {
 public:
  XWorkspace(std::shared_ptr<XConnection> connection, std::shared_ptr<DesktopEntryCatalog> catalog)
      : connection_(std::move(connection)), catalog_(std::move(catalog)) {}

  std::vector<RunningApplicationRef> runningApplications() override {
    const auto applications = listApplications();
    return {applications.begin(), applications.end()};
  }

  std::vector<RunningApplicationRef> runningApplicationsWithBundleIdentifier(std::string_view identifier) override {
    std::vector<RunningApplicationRef> first, besides;
    for (const auto& application : listApplications()) {
      const auto& identifiers = application->ownIdentifiers();
      const auto found = std::ranges::find(identifiers, identifier);
      if (found != identifiers.end()) (found == identifiers.begin() ? first : besides).push_back(application);
    }
    first.insert(first.end(), besides.begin(), besides.end());
    return first;
  }

  RunningApplicationRef frontmostApplication() override {
    const XWatchdog::Watch watch(connection_->watchdog());
    const auto desktop = readDesktop(*connection_);
    const auto applications = applicationsOf(desktop);
    const auto frontmost = std::ranges::find_if(applications, [&](const auto& application) {
      return application->processIdentifier() == desktop.activeProcessID;
    });
    return frontmost != applications.end() ? *frontmost : nullptr;
  }

  std::optional<Screen> mainScreen() override {
    const XWatchdog::Watch watch(connection_->watchdog());
    const auto all = monitors(*connection_);
    if (all.empty()) return std::nullopt;
    return Screen{.screenNumber = all.front().output, .backingScaleFactor = scaleFactor(*connection_)};
  }

 private:
  using Applications = std::vector<std::shared_ptr<XApplication>>;

  Applications listApplications() const {
    const XWatchdog::Watch watch(connection_->watchdog());
    return applicationsOf(readDesktop(*connection_));
  }

  Applications applicationsOf(const Desktop& desktop) const {
    Applications applications;
    for (auto& process : processesOf(desktop)) {
      applications.push_back(std::make_shared<XApplication>(std::move(process), catalog_));
    }
    return applications;
  }

  std::shared_ptr<XConnection> connection_;
  std::shared_ptr<DesktopEntryCatalog> catalog_;
};

}  // namespace

std::unique_ptr<Workspace> makeWorkspace(std::shared_ptr<XConnection> connection,
                                         std::shared_ptr<DesktopEntryCatalog> catalog) {
  return std::make_unique<XWorkspace>(std::move(connection), std::move(catalog));
}

}  // namespace tavik::platform::x11
