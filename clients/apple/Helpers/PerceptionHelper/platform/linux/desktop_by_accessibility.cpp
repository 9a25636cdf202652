#include "platform/linux/desktop_by_accessibility.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <functional>
#include <iterator>
#include <map>
#include <set>
#include <string_view>
#include <utility>

#include "platform/linux/applications/process_evidence.h"
#include "platform/linux/applications/process_identity.h"
#include "platform/linux/atspi/accessibility_bus.h"
#include "platform/linux/dbus/conversation.h"
#include "platform/linux/dbus/patience.h"
#include "text/caseless_equal.h"

namespace tavik::platform {
namespace {

using atspi::RegisteredWindow;
using wayland::NativeDesktop;
using wayland::NativeWindow;
using wayland::Toplevel;

using ProcessID = std::int32_t;
using Processes = std::set<ProcessID>;

/// Finds out whose a toplevel is.
class Owners {
 public:
  Owners(std::span<const RegisteredWindow> windows, std::span<const Toplevel> toplevels, const NamesOfProcess& namesOf)
      : windows_(windows), toplevels_(toplevels) {
    for (const auto& window : windows) {
      if (window.isActive) active_.insert(window.processID);
      if (!names_.contains(window.processID)) names_[window.processID] = namesOf(window.processID);
    }
  }

  const Processes& active() const { return active_; }

  /// Nothing when that is not certain.
  std::optional<ProcessID> of(const Toplevel& toplevel) const {
    auto owners = named(toplevel.appID);
    const bool isNamed = !owners.empty();
    if (owners.size() != 1) owners = isNamed ? common(owners, titled(toplevel.title)) : titled(toplevel.title);
    if (!isNamed || owners.size() > 1) owners = common(owners, active_);
    return owners.size() == 1 ? std::optional(*owners.begin()) : std::nullopt;
  }

 private:
  static Processes common(const Processes& left, const Processes& right) {
    Processes both;
    std::ranges::set_intersection(left, right, std::inserter(both, both.end()));
    return both;
  }

  Processes named(std::string_view appID) const {
    Processes processes;
    for (const auto& [process, names] : names_) {
      const auto isIt = [appID](std::string_view name) { return text::caselessEqual(name, appID); };
      if (!appID.empty() && std::ranges::any_of(names, isIt)) processes.insert(process);
    }
    return processes;
  }

  /// None when there are more toplevels than windows with that title: one of them is of nobody who is known.
  Processes titled(const std::string& title) const {
    Processes processes;
    std::ptrdiff_t count = 0;
    for (const auto& window : windows_) {
      if (title.empty() || window.title != title) continue;
      processes.insert(window.processID);
      ++count;
    }
    return std::ranges::count(toplevels_, title, &Toplevel::title) > count ? Processes() : processes;
  }

  std::span<const RegisteredWindow> windows_;
  std::span<const Toplevel> toplevels_;
  std::map<ProcessID, std::vector<std::string>> names_;
  Processes active_;  ///< by what they say
};

/// Who has the focus; nothing when the two sides do not agree.
std::optional<ProcessID> focused(const Owners& owners, std::span<const Toplevel> toplevels) {
  std::set<std::optional<ProcessID>> candidates(owners.active().begin(), owners.active().end());
  for (const auto& toplevel : toplevels) {
    if (toplevel.isActivated) candidates.insert(owners.of(toplevel));
  }
  return candidates.size() == 1 ? *candidates.begin() : std::nullopt;
}

NativeWindow toNativeWindow(const RegisteredWindow& window, std::span<const Toplevel> toplevels, const Owners& owners) {
  NativeWindow result{.processID = window.processID, .title = window.title, .isCovered = true};
  bool isInView = false, isKnown = false;
  for (const auto& toplevel : toplevels) {
    if (toplevel.title != window.title || owners.of(toplevel) != window.processID) continue;
    result.appID = toplevel.appID;
    isKnown = true;
    isInView = isInView || !toplevel.isMinimized;
  }
  result.isMinimized = window.isMinimized || (isKnown && !isInView);
  return result;
}

bool isAnyActivated(std::span<const Toplevel> toplevels) {
  return std::ranges::any_of(toplevels, &Toplevel::isActivated);
}

/// Marks the windows that have the focus, all of the process where they cannot be told apart, and puts them first.
void focus(ProcessID process, NativeDesktop& desktop, std::span<const RegisteredWindow> registered,
           std::span<const Toplevel> toplevels) {
  const auto isIt = [process, toplevels](const RegisteredWindow& window) {
    const auto isTold = [&window](const Toplevel& toplevel) {
      return toplevel.isActivated && toplevel.title == window.title;
    };
    return window.processID == process && (window.isActive || std::ranges::any_of(toplevels, isTold));
  };
  const bool canBeTold = std::ranges::any_of(registered, isIt);
  for (std::size_t i = 0; i < registered.size(); ++i) {
    desktop.windows[i].isFocused = canBeTold ? isIt(registered[i]) : registered[i].processID == process;
  }
  std::ranges::stable_sort(desktop.windows, std::greater(), &NativeWindow::isFocused);
}

}  // namespace

NativeDesktop mergedDesktop(std::span<const RegisteredWindow> registered,
                            const std::optional<std::vector<Toplevel>>& toplevels, const NamesOfProcess& namesOf) {
  const auto known = toplevels.value_or(std::vector<Toplevel>{});
  const Owners owners(registered, known, namesOf);
  NativeDesktop desktop;
  for (const auto& window : registered) {
    desktop.windows.push_back(toNativeWindow(window, known, owners));
    desktop.windows.back().id = static_cast<std::uint32_t>(desktop.windows.size());
  }
  if (toplevels && !isAnyActivated(known)) {
    desktop.isFocusCertain = known.empty() && owners.active().empty();
  } else if (const auto process = focused(owners, known)) {
    desktop.isFocusCertain = toplevels.has_value();
    focus(*process, desktop, registered, known);
  }
  return desktop;
}

namespace {

bool isOfOneOf(std::span<const RegisteredWindow> windows, ProcessID process) {
  return std::ranges::find(windows, process, &RegisteredWindow::processID) != windows.end();
}

/// Adds the windows of processes that have none yet, and are known.
void addThoseOfOthers(std::vector<RegisteredWindow>& windows, std::span<const RegisteredWindow> others) {
  const auto count = windows.size();
  for (const auto& other : others) {
    if (other.processID > 0 && !isOfOneOf({windows.data(), count}, other.processID)) windows.push_back(other);
  }
}

/// Shorter than that of whoever then reads the tree of an application: both may wait for the same one.
constexpr std::chrono::milliseconds kSilence{600};

class DesktopByAccessibility {
 public:
  DesktopByAccessibility(std::shared_ptr<wayland::WlConnection> connection,
                         std::shared_ptr<applications::DesktopEntryCatalog> catalog, X11Side x11)
      : connection_(std::move(connection)), catalog_(std::move(catalog)), x11_(std::move(x11)) {}

  NativeDesktop operator()() {
    if (!connection_->isReachable() || !connect()) return {};
    const auto compositor = connection_->compositorProcessID();
    auto registered = atspi::registeredWindows(*conversation_);
    std::erase_if(registered, [compositor](const auto& window) { return window.processID == compositor; });
    const auto onX11 = x11_.windows();
    addThoseOfOthers(registered, onX11);
    const auto namesOf = [this](ProcessID process) { return names(process); };
    auto desktop = mergedDesktop(registered, wayland::foreignToplevels(*connection_), namesOf);
    for (auto& window : desktop.windows) window.isX11 = isOfOneOf(onX11, window.processID);
    return desktop;
  }

 private:
  bool connect() {
    if (std::exchange(triedToConnect_, true)) return conversation_ != nullptr;
    if (auto bus = atspi::connectToAccessibilityBus(x11_.accessibilityBusAddress)) {
      conversation_ = std::make_unique<dbus::Conversation>(std::move(bus), dbus::Patience({.silence = kSilence}));
    }
    return conversation_ != nullptr;
  }

  const std::vector<std::string>& names(ProcessID process) {
    const auto [entry, isNew] = names_.try_emplace(process);
    if (!isNew) return entry->second;
    entry->second = applications::identityOfProcess(process, {}, *catalog_).bundleIdentifiers;
    const auto executable = applications::executableName(process);
    applications::addNew(entry->second, {executable, applications::scriptName(process, executable)});
    return entry->second;
  }

  std::shared_ptr<wayland::WlConnection> connection_;
  std::shared_ptr<applications::DesktopEntryCatalog> catalog_;
  X11Side x11_;
  bool triedToConnect_ = false;
  std::unique_ptr<dbus::Conversation> conversation_;
  std::map<ProcessID, std::vector<std::string>> names_;
};

}  // namespace

wayland::NativeDesktopSource desktopByAccessibility(std::shared_ptr<wayland::WlConnection> connection,
                                                    std::shared_ptr<applications::DesktopEntryCatalog> catalog,
                                                    X11Side x11) {
  const auto source =
      std::make_shared<DesktopByAccessibility>(std::move(connection), std::move(catalog), std::move(x11));
  return [source] { return (*source)(); };
}

}  // namespace tavik::platform
