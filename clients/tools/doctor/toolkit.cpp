#include "tools/doctor/toolkit.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <filesystem>
#include <system_error>

#include "platform/linux/applications/proc_path.h"
#include "platform/linux/applications/read_in_child.h"
#include "text/caseless_equal.h"

namespace tavik::doctor {
namespace {

namespace applications = platform::applications;

constexpr std::string_view kChromium = "Chromium", kJava = "Java", kFirefox = "Firefox";

/// How the path of a library begins in its folder; the first that is found decides, since some load others.
struct Library {
  std::string_view name = {};
  std::string_view toolkit = {};
};
constexpr std::array kLibraries{
    Library{"/libjvm.so", kJava},         Library{"/libxul.so", kFirefox},
    Library{"/libQt6Gui.so", "Qt 6"},     Library{"/libQt5Gui.so", "Qt 5"},
    Library{"/libgtk-4.so", "GTK 4"},     Library{"/libgtk-3.so", "GTK 3"},
    Library{"/libgtk-x11-2.0", "GTK 2"},  Library{"/libtk8", "Tk"},
    Library{"/libfltk.so", "FLTK"},       Library{"/libXaw", "Xt and Xaw"},
    Library{"/libXm.so", "Xt and Motif"}, Library{"/libSDL2", "SDL"},
};

/// How the names of toolkits begin, and what gives their applications a tree.
struct Remedy {
  std::string_view toolkit = {};
  std::string_view text = {};
};
constexpr std::array kRemedies{
    Remedy{kChromium, "Start it with --force-renderer-accessibility on its command line."},
    Remedy{"Qt",
           "Start it with QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1 in its environment, or switch the desktop's accessibility "
           "on: "
           "gsettings set org.gnome.desktop.interface toolkit-accessibility true."},
    Remedy{kJava,
           "Install the package libatk-wrapper-java, and start it with JAVA_TOOL_OPTIONS="
           "'-Xbootclasspath/a:/usr/share/java/java-atk-wrapper.jar "
           "-Djavax.accessibility.assistive_technologies=org.GNOME.Accessibility.AtkWrapper' in its environment."},
    Remedy{"GTK 3", "Start it again while the accessibility bus runs, without NO_AT_BRIDGE in its environment."},
    Remedy{"GTK 4", "Start it again while the accessibility bus runs, without GTK_A11Y in its environment."},
    Remedy{
        kFirefox,
        "Switch the desktop's accessibility on (gsettings set org.gnome.desktop.interface toolkit-accessibility true), "
        "and start it again."},
};

/// Chromium and what is built on it, which is one large program, has such a file beside it.
bool liesWithChromium(std::int32_t processID) {
  std::error_code error;
  const auto program = std::filesystem::read_symlink(applications::procPath(processID, "exe"), error);
  return !error && std::filesystem::exists(program.parent_path() / "chrome_100_percent.pak", error);
}

}  // namespace

std::string toolkitNamed(std::string_view name, std::string_view version) {
  const auto major = std::string(version.substr(0, version.find('.')));
  if (text::caselessEqual(name, "gtk")) return "GTK " + major;
  if (text::caselessEqual(name, "qt")) return "Qt " + major;
  if (text::caselessEqual(name, "Gecko")) return std::string(kFirefox);
  if (name.starts_with("J2SE")) return std::string(kJava);
  return std::string(name);
}

std::optional<std::string> toolkitOfLibraries(std::string_view maps) {
  const auto* const found = std::ranges::find_if(
      kLibraries, [maps](const Library& one) { return maps.find(one.name) != std::string_view::npos; });
  return found != kLibraries.end() ? std::optional(std::string(found->toolkit)) : std::nullopt;
}

std::optional<std::string> toolkitOfProcess(std::int32_t processID) {
  constexpr std::size_t kLongest = std::size_t{4} << 20U;
  constexpr std::chrono::milliseconds kPatience{400};
  if (liesWithChromium(processID)) return std::string(kChromium);
  const auto maps = applications::readInChild(applications::procPath(processID, "maps"), kLongest, kPatience);
  return maps ? toolkitOfLibraries(*maps) : std::nullopt;
}

std::optional<std::string> treeRemedy(std::string_view toolkit) {
  const auto* const found =
      std::ranges::find_if(kRemedies, [toolkit](const Remedy& one) { return toolkit.starts_with(one.toolkit); });
  return found != kRemedies.end() ? std::optional(std::string(found->text)) : std::nullopt;
}

}  // namespace tavik::doctor
