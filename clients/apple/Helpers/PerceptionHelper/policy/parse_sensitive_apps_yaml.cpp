#include "policy/parse_sensitive_apps_yaml.h"

#include "policy/policy_lines.h"

namespace tavik {

SensitiveAppsConfig parseSensitiveAppsYAML(std::string_view text) {
  SensitiveAppsConfig config;
  PolicyLines lines(text);
  while (const auto line = lines.next()) {
    if (line->item.empty()) continue;
    if (line->section == PolicySection::bundleIds) config.bundleIdBlocklist.emplace_back(line->item);
    if (line->section == PolicySection::axRoles) config.axRoleTextBlocklist.emplace(line->item);
  }
  return config;
}

}  // namespace tavik
