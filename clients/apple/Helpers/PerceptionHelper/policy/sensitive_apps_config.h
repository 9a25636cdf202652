#pragma once

#include <set>
#include <string>
#include <vector>

namespace tavik {

/// The sensitive-apps policy.
struct SensitiveAppsConfig {
  /// Patterns (fnmatchSimple) of the bundle identifiers of sensitive applications, in the file's order, duplicates
  /// kept.
  std::vector<std::string> bundleIdBlocklist = {};
  /// Accessibility roles whose elements' values are withheld: exact names, no patterns.
  std::set<std::string, std::less<>> axRoleTextBlocklist = {};

  /// The policy under which no application is sensitive and nothing is withheld.
  static const SensitiveAppsConfig empty;
  bool operator==(const SensitiveAppsConfig&) const = default;
};

inline const SensitiveAppsConfig SensitiveAppsConfig::empty = {};

}  // namespace tavik
