#include "tools/doctor/known_applications.h"

#include <cstddef>
#include <utility>

namespace tavik::doctor {
namespace {

/// The last part of an identifier like a domain's name.
std::string lastPart(const std::string& identifier) { return identifier.substr(identifier.rfind('.') + 1); }

/// None of an entry that is not in menus: the program that it starts is known by another. So is one that is started
/// with options.
std::vector<std::string> otherNamesOf(const platform::applications::DesktopEntry& entry) {
  if (entry.noDisplay) return {};
  return {entry.name, entry.startupClass, entry.hasOptions ? "" : entry.program, lastPart(entry.id)};
}

}  // namespace

std::vector<KnownApplication> runningApplications(const std::vector<platform::RunningApplicationRef>& applications) {
  std::vector<KnownApplication> known;
  for (const auto& application : applications) {
    KnownApplication one{.identifiers = application->bundleIdentifiers()};
    if (one.identifiers.empty()) continue;
    one.otherNames = {application->localizedName().value_or(""), lastPart(one.identifiers.front())};
    known.push_back(std::move(one));
  }
  return known;
}

std::vector<KnownApplication> installedApplications(platform::applications::DesktopEntryCatalog& catalog) {
  std::vector<KnownApplication> known;
  for (std::size_t index = 0; index < catalog.size(); ++index) {
    const auto* const entry = catalog.at(index);
    if (entry == nullptr || entry->isForSettings) continue;
    known.push_back({.identifiers = {entry->id}, .otherNames = otherNamesOf(*entry)});
  }
  return known;
}

}  // namespace tavik::doctor
