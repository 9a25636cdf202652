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
/// Its objects all implement Component and Text (AXPlatformNodeAuraLinux::GetGTypeInterfaceMask).
bool isChromium(const Toolkit& toolkit) { return text::caselessEqual(toolkit.name.value_or(""), "chromium"); }

/// GTK 4 has no screen coordinates. Asked for them, it gives the window's, and complains in the application's log.
bool knowsWindowCoordinatesOnly(const Toolkit& toolkit) {
  int major = 0;
  const std::string version = toolkit.version.value_or("");
  std::from_chars(version.data(), version.data() + version.size(), major);
  return isGTK(toolkit) && major >= 4;
}

/// Where no widget that is not mapped has extents or is showing (gtk_widget_accessible_get_extents, ref_state_set).
/// Open menus of GTK 4 are not showing.
bool hasWidgetsOfGTK3(const Toolkit& toolkit) { return isGTK(toolkit) && !knowsWindowCoordinatesOnly(toolkit); }

ToolkitUnits unitsOf(const Toolkit& toolkit) {
  return {.areOnScreen = !knowsWindowCoordinatesOnly(toolkit), .areWhole = isGTK(toolkit)};
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

/// Where the window has no extents, as those of Swing have none, its first child's, which fills it.
void askExtentsOfFirstChild(Element& window, std::optional<Extents>& extents) {
  const auto handler = [&window, &extents](const dbus::Answer& answer) {
    const auto child = readReference(answer.reply);
    if (!child || child->busName != window.reference().busName) return;
    const auto coordinates = static_cast<std::uint32_t>(window.session()->coordinates);
    window.session()->conversation.ask(
        *child, kComponent, "GetExtents",
        [&extents](const dbus::Answer& measured) { extents = readExtents(measured.reply); }, "u", coordinates);
  };
  window.session()->conversation.ask(window.reference(), kAccessible, "GetChildAtIndex", handler, "i", std::int32_t{0});
}

std::vector<WindowClaim> readClaimsOf(const std::vector<std::shared_ptr<Element>>& windows,
                                      dbus::Conversation& conversation) {
  for (const auto& window : windows) window->ask(fact::name | fact::extents | fact::states);
  conversation.settle();
  std::vector<WindowClaim> claims;
  claims.reserve(windows.size());
  for (const auto& window : windows) claims.push_back(claimOf(*window));
  for (std::size_t index = 0; index < claims.size(); ++index) {
    auto& [title, extents, isActive] = claims[index];
    if (!title.empty() && !(extents && isSomewhere(*extents))) askExtentsOfFirstChild(*windows[index], extents);
  }
  conversation.settle();
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
  Session& session = *root_->session();
  session.hasAllProperties = isGTK(toolkit) || isChromium(toolkit);
  session.hasTextEverywhere = isChromium(toolkit);
  const ToolkitUnits units = unitsOf(toolkit);
  session.placesOpenMenusOnly = hasWidgetsOfGTK3(toolkit);
  session.coordinates = units.areOnScreen ? Coordinates::screen : Coordinates::window;
  const auto& windows = root_->known().children;
  const auto claims = readClaimsOf(windows, session.conversation);
  const auto candidates = findWindows_();
  if (const auto main = mainWindow(claims, candidates.empty() ? nullptr : &candidates.front(), units)) {
    mainWindow_ = windows[*main];
  }
  const auto placed = placeWindows(claims, candidates, units);
  for (std::size_t index = 0; index < placed.size(); ++index) windows[index]->place(placed[index]);
  return root_.get();
}

std::optional<AttributeValue> Application::copyAttributeValue(std::string_view name) {
  const auto element = [](ElementRef found) {
    return found ? std::optional<AttributeValue>(UIElementRef(std::move(found))) : std::nullopt;
  };
  if (!root()) return std::nullopt;
  if (name == "AXMainWindow") return element(mainWindow_);
  if (name == "AXFocusedUIElement") return element(focusedElement());
  return root()->copyAttributeValue(name == "AXWindows" ? "AXChildren" : name);
}

std::vector<Application::ElementRef> Application::windowsMainFirst() {
  auto windows = root()->known().children;
  const auto main = std::ranges::find(windows, mainWindow_);
  // std::ranges::rotate does not compile with clang 14 over the library of GCC.
  if (main != windows.end()) std::rotate(windows.begin(), main, std::next(main));
  return windows;
}

Application::ElementRef Application::focusedElement() { return atspi::focusedElement(windowsMainFirst()); }

}  // namespace tavik::platform::atspi
