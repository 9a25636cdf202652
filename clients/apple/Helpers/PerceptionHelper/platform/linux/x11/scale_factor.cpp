#include "platform/linux/x11/scale_factor.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <memory>
#include <optional>
#include <sstream>

#include <xcb/xcb_xrm.h>

#include "platform/linux/x11/server/selection_owner.h"
#include "platform/linux/x11/server/x_property.h"
#include "platform/linux/x11/xsettings.h"

namespace tavik::platform::x11 {
namespace {

constexpr double kUnscaledDPI = 96;
constexpr std::uint32_t kMostBytes = 256 * 1024;

struct DatabaseDeleter {
  void operator()(xcb_xrm_database_t* database) const { xcb_xrm_database_free(database); }
};

using Database = std::unique_ptr<xcb_xrm_database_t, DatabaseDeleter>;

/// The resources without directives: #include would open whatever file a client has named.
std::string withoutDirectives(const std::string& resources) {
  std::istringstream lines(resources);
  std::string kept;
  for (std::string line; std::getline(lines, line);) {
    const auto start = line.find_first_not_of(" \t");
    if (start == std::string::npos || line[start] != '#') kept += line + '\n';
  }
  return kept;
}

/// The resource Xft.dpi.
std::optional<double> factorOfResources(const std::string& resources) {
  const Database database(xcb_xrm_database_from_string(withoutDirectives(resources).c_str()));
  char* value = nullptr;
  if (!database || xcb_xrm_resource_get_string(database.get(), "Xft.dpi", nullptr, &value) < 0) return std::nullopt;
  const MallocPtr<char> owned(value);
  const std::string_view digits = value;
  double dpi = 0;
  std::from_chars(digits.data(), digits.data() + digits.size(), dpi);
  return std::isfinite(dpi) ? std::optional(dpi / kUnscaledDPI) : std::nullopt;
}

std::optional<double> factorOfSettings(std::string_view settings) {
  const auto windowScale = integerSetting(settings, "Gdk/WindowScalingFactor");
  const auto dpi = integerSetting(settings, "Xft/DPI");
  if (!windowScale && !dpi) return std::nullopt;
  return std::max<double>(windowScale.value_or(1), dpi.value_or(0) / 1024.0 / kUnscaledDPI);
}

/// What the settings manager of the screen has written to its window.
PropertyValue settingsOf(XConnection& connection) {
  const auto manager = selectionOwner(connection, Atom::xsettingsManager);
  if (manager == XCB_NONE) return {};
  const auto name = connection.atom(Atom::xsettingsSettings);
  auto settings = property(connection, requestProperty(connection, manager, name, kMostBytes));
  return settings.format == 8 ? std::move(settings) : PropertyValue{};
}

}  // namespace

double scaleFactorOf(const std::string& resources, std::string_view settings) {
  auto factor = factorOfSettings(settings);
  if (!factor) factor = factorOfResources(resources);
  return std::max(1.0, factor.value_or(1));
}

double scaleFactor(XConnection& connection) {
  if (!connection.isReachable()) return 1;
  const auto resources = requestProperty(connection, connection.root(), XCB_ATOM_RESOURCE_MANAGER, kMostBytes);
  const auto settings = settingsOf(connection);
  return scaleFactorOf(textOf(property(connection, resources)), settings.bytes);
}

}  // namespace tavik::platform::x11
