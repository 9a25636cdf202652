#include "tools/doctor/desktop_findings.h"

#include <array>
#include <string>
#include <string_view>
#include <utility>

namespace tavik::doctor {
namespace {

constexpr std::string_view kDesktop = "desktop", kPictures = "pictures", kTrees = "trees";

constexpr auto kPassOn =
    "Whatever starts the helper has to pass on from the user's session: DISPLAY, and XAUTHORITY where it is set; under "
    "Wayland WAYLAND_DISPLAY, XDG_RUNTIME_DIR and, on sway, SWAYSOCK; for the trees DBUS_SESSION_BUS_ADDRESS, or else "
    "XDG_RUNTIME_DIR. Compare with what env says in a terminal of that session.";

using Findings = std::vector<Finding>;

void ok(Findings& findings, std::string_view about, std::string text) {
  findings.push_back({.level = Level::ok, .about = about, .text = std::move(text)});
}
void hint(Findings& findings, std::string_view about, std::string text, const char* remedy) {
  findings.push_back({.level = Level::hint, .about = about, .text = std::move(text), .remedy = remedy});
}
void fault(Findings& findings, std::string_view about, std::string text, std::string remedy) {
  findings.push_back({.level = Level::fault, .about = about, .text = std::move(text), .remedy = std::move(remedy)});
}

/// The two of them without a gap.
std::string joined(std::string_view one, std::string_view other) { return std::string(one).append(other); }

void judgeX11(const DesktopFacts& facts, Findings& findings) {
  const auto& display = facts.variables.display;
  if (display.empty()) return;
  if (!facts.isXReachable) {
    const auto& cookie = facts.variables.xauthority;
    return fault(findings, kDesktop,
                 joined("DISPLAY is ", display).append(", but no X server lets this program in there."),
                 joined("Take DISPLAY and XAUTHORITY from the user's session. XAUTHORITY is ",
                        cookie.empty() ? "not set, so ~/.Xauthority counts." : cookie + ", which has to be readable."));
  }
  auto text = joined("DISPLAY is ", display).append(", and the X server answers. Window manager: ");
  text.append(facts.windowManager.empty() ? "none that says so" : facts.windowManager);
  text.append(facts.isComposited ? "; windows are composited." : "; windows are not composited.");
  ok(findings, kDesktop, std::move(text));
}

void judgeSway(const DesktopFacts& facts, Findings& findings) {
  if (facts.compositor != "sway" || facts.tellsWindows) return;
  const auto& socket = facts.variables.swaySocket;
  fault(findings, kDesktop,
        socket.empty() ? "SWAYSOCK is not set: sway does not tell whose its windows are."
                       : joined("SWAYSOCK is ", socket).append(", but sway does not answer there."),
        "Pass SWAYSOCK on from the user's session.");
}

void judgeOtherCompositor(const DesktopFacts& facts, Findings& findings) {
  if (facts.compositor == "sway" || facts.tellsWindows) return;
  if (facts.isKWin) {
    return hint(
        findings, kDesktop,
        "KWin tells its windows to the helper alone: below are those on the accessibility bus and those of XWayland.",
        "To find another application's identifier, look for its desktop file in /usr/share/applications.");
  }
  hint(findings, kDesktop,
       "This compositor does not tell whose its windows are: only applications on the accessibility bus, and those "
       "that run through XWayland, can be looked at, and native windows have no pictures.",
       "Start an application that is wanted with a picture through XWayland (GDK_BACKEND=x11, QT_QPA_PLATFORM=xcb).");
}

void judgeWayland(const DesktopFacts& facts, Findings& findings) {
  const auto& display = facts.variables.waylandDisplay;
  if (display.empty()) {
    if (facts.variables.sessionType == "wayland") {
      fault(findings, kDesktop,
            "The session is one of Wayland (XDG_SESSION_TYPE), but WAYLAND_DISPLAY is not set: windows that speak "
            "Wayland cannot be seen.",
            kPassOn);
    }
    return;
  }
  if (!facts.isCompositorReachable) {
    const auto& folder = facts.variables.runtimeFolder;
    return fault(findings, kDesktop,
                 joined("WAYLAND_DISPLAY is ", display).append(", but no compositor answers there."),
                 joined("Take WAYLAND_DISPLAY and XDG_RUNTIME_DIR from the user's session. XDG_RUNTIME_DIR is ",
                        folder.empty() ? "not set." : folder + "."));
  }
  ok(findings, kDesktop,
     joined("WAYLAND_DISPLAY is ", display)
         .append(", and the compositor answers: ")
         .append(facts.compositor.empty() ? "an unknown one" : facts.compositor)
         .append("."));
  judgeSway(facts, findings);
  judgeOtherCompositor(facts, findings);
}

void judgeDisplays(const DesktopFacts& facts, Findings& findings) {
  if (facts.variables.display.empty() && facts.variables.waylandDisplay.empty()) {
    fault(findings, kDesktop, "Neither DISPLAY nor WAYLAND_DISPLAY is set: there is no desktop to look at.", kPassOn);
  }
  judgeX11(facts, findings);
  judgeWayland(facts, findings);
}

/// For who starts the helper elsewhere.
void tellWhatToPassOn(const SessionVariables& variables, Findings& findings) {
  std::string list;
  for (const auto& [name, value] : {std::pair{"DISPLAY", &variables.display},
                                    {"XAUTHORITY", &variables.xauthority},
                                    {"WAYLAND_DISPLAY", &variables.waylandDisplay},
                                    {"SWAYSOCK", &variables.swaySocket},
                                    {"XDG_RUNTIME_DIR", &variables.runtimeFolder},
                                    {"DBUS_SESSION_BUS_ADDRESS", &variables.sessionBusAddress}}) {
    if (!value->empty()) list.append(list.empty() ? "" : " ").append(name).append("=").append(*value);
  }
  if (list.empty()) return;
  ok(findings, kDesktop, "A program that starts the helper has to pass these variables on, which count here: " + list);
}

void judgePictures(const DesktopFacts& facts, Findings& findings) {
  if (facts.isKWin) {
    if (facts.isAllowedByKWin) {
      return ok(findings, kPictures, "The helper has a desktop file that has KWin allow it pictures.");
    }
    return fault(
        findings, kPictures,
        "KWin takes pictures for a program with a desktop file that asks for it, and the helper beside this program "
        "has none.",
        "Install with cmake --install, into /usr/local, /usr or ~/.local, and run kbuildsycoca5 once.");
  }
  if (facts.mayCapture) {
    const bool hasNoWindows = facts.isCompositorReachable && !facts.tellsWindows;
    return ok(findings, kPictures,
              hasNoWindows
                  ? "Pictures can be taken: of windows through XWayland, and of the screen where the compositor "
                    "tells who is in front."
                  : "Pictures can be taken.");
  }
  const bool hasDisplay = facts.isXReachable || facts.isCompositorReachable;
  fault(
      findings, kPictures, "Pictures cannot be taken (screen_recording_permission_required).",
      facts.isCompositorReachable
          ? "This compositor has no interface for pictures: applications through XWayland have them, where it has one."
      : hasDisplay ? "The display answers, but has no interface for pictures."
                   : "See to the display first, as said above.");
}

void judgeTrees(const DesktopFacts& facts, Findings& findings) {
  if (!facts.hasBusLibrary) {
    return fault(findings, kTrees, "The library libsystemd is not there: no bus can be asked for trees.",
                 "Install the package libsystemd0.");
  }
  if (facts.hasAccessibilityBus) {
    ok(findings, kTrees, "The accessibility bus answers, so trees can be read.");
    return;
  }
  if (!facts.hasSessionBus) {
    const auto& address = facts.variables.sessionBusAddress;
    const auto& folder = facts.variables.runtimeFolder;
    return fault(
        findings, kTrees,
        joined("The session bus cannot be reached: DBUS_SESSION_BUS_ADDRESS is ", address.empty() ? "not set" : address)
            .append(", XDG_RUNTIME_DIR is ")
            .append(folder.empty() ? "not set" : folder)
            .append(". There are no trees without it."),
        "Pass DBUS_SESSION_BUS_ADDRESS, or else XDG_RUNTIME_DIR, on from the user's session.");
  }
  fault(
      findings, kTrees,
      "The session bus answers, but no accessibility bus runs: there are no trees (accessibility_permission_required).",
      "Install the package at-spi2-core and log in again; or, on a desktop that starts nothing by itself, run "
      "/usr/libexec/at-spi-bus-launcher --launch-immediately, and then the applications.");
}

}  // namespace

std::vector<Finding> desktopFindings(const DesktopFacts& facts) {
  Findings findings;
  judgeDisplays(facts, findings);
  tellWhatToPassOn(facts.variables, findings);
  judgePictures(facts, findings);
  judgeTrees(facts, findings);
  return findings;
}

}  // namespace tavik::doctor
