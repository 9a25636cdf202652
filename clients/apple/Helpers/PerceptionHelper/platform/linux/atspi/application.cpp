#include "platform/linux/atspi/application.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <utility>

#include "platform/linux/atspi/focus.h"
#include "text/caseless_equal.h"

namespace tavik::platform::atspi {
namespace {

/// More than any real application has.
constexpr std::size_t kMaxWindows = 1000;

/// What a toolkit says of itself.
struct Toolkit {
  std::optional<std::string> name = {};
  std::optional<std::string> version = {};
};

bool isGTK(const Toolkit& toolkit) { return text::caselessEqual(toolkit.name.value_or(""), "gtk"); }

/// GTK 4 has no screen coordinates. Asked for them, it gives the window's, and complains in the application's log.
bool knowsWindowCoordinatesOnly(const Toolkit& toolkit) {
  int major = 0;
  const std::string version = toolkit.version.value_or("");
  std::from_chars(version.data(), version.data() + version.size(), major);
  return isGTK(toolkit) && major >= 4;
}

/// Finds out the toolkit and the windows.
Toolkit readToolkitAndWindows(Element& root) {
  dbus::Conversation& conversation = root.session()->conversation;
  Toolkit toolkit;
  conversation.askProperty(root.reference(), kApplication, "ToolkitName",
                           [&toolkit](const dbus::Answer& answer) { toolkit.name = readStringProperty(answer.reply); });
  conversation.askProperty(root.reference(), kApplication, "Version", [&toolkit](const dbus::Answer& answer) {
    toolkit.version = readStringProperty(answer.reply);
  });
  root.withChildren(kMaxWindows, [] {});
  conversation.settle();
  return toolkit;
}

WindowClaim claimOf(Element& window) {
  const Knowledge& known = window.known();
  return {.title = known.name.value_or(""),
          .extents = known.extents,
          .isActive = (known.states.value_or(0) & kActive) != 0};
}

std::vector<WindowClaim> claimsOfWindows(Element& root) {
  const auto& windows = root.known().children;
  for (const auto& window : windows) window->ask(fact::name | fact::extents | fact::states);
  root.session()->conversation.settle();
  std::vector<WindowClaim> claims;
  claims.reserve(windows.size());
  for (const auto& window : windows) claims.push_back(claimOf(*window));
  return claims;
}

}  // namespace

Application::Application(FindRoot findRoot, FindWindows findWindows)
    : findRoot_(std::move(findRoot)), findWindows_(std::move(findWindows)) {}

Element* Application::root() {
  if (std::exchange(isResolved_, true)) return root_.get();
  root_ = findRoot_();
  if (!root_) return nullptr;
  const Toolkit toolkit = readToolkitAndWindows(*root_);
  root_->session()->hasAllProperties = isGTK(toolkit);
  if (!knowsWindowCoordinatesOnly(toolkit)) return root_.get();
  root_->session()->coordinates = Coordinates::window;
  const auto claims = claimsOfWindows(*root_);
  const auto candidates = findWindows_();
  for (std::size_t index = 0; index < claims.size(); ++index) {
    root_->known().children[index]->setOffset(offsetOfWindow(claims[index], candidates));
  }
  return root_.get();
}

std::optional<AttributeValue> Application::copyAttributeValue(std::string_view name) {
  const auto element = [](ElementRef found) {
    return found ? std::optional<AttributeValue>(UIElementRef(std::move(found))) : std::nullopt;
  };
  if (!root()) return std::nullopt;
  if (name == "AXMainWindow") return element(mainWindow());
  if (name == "AXFocusedUIElement") return element(focusedElement());
  return root()->copyAttributeValue(name == "AXWindows" ? "AXChildren" : name);
}

Application::ElementRef Application::mainWindow() {
  const auto claims = claimsOfWindows(*root());
  std::vector<DesktopWindow> candidates;
  if (std::ranges::none_of(claims, &WindowClaim::isActive)) candidates = findWindows_();
  const auto main = atspi::mainWindow(claims, candidates.empty() ? nullptr : &candidates.front());
  return main ? root()->known().children[*main] : nullptr;
}

std::vector<Application::ElementRef> Application::windowsMainFirst() {
  auto windows = root()->known().children;
  const auto main = std::ranges::find(windows, mainWindow());
  // std::ranges::rotate does not compile with clang 14 over the library of GCC.
  if (main != windows.end()) std::rotate(windows.begin(), main, std::next(main));
  return windows;
}

Application::ElementRef Application::focusedElement() { return atspi::focusedElement(windowsMainFirst()); }

}  // namespace tavik::platform::atspi
