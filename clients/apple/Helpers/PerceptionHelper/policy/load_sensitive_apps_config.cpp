#include "policy/load_sensitive_apps_config.h"

#include <optional>
#include <string>

#include "policy/delivered_policy.h"
#include "policy/parse_sensitive_apps_yaml.h"

namespace tavik {
namespace {

std::optional<std::string> readIfExists(const platform::Host& host, const std::string& path) {
  if (path.empty() || !host.fileExists(path)) return std::nullopt;
  return host.readUTF8File(path);
}

std::string policyText(const platform::Host& host) {
  if (auto text = readIfExists(host, host.environmentVariable("TAVIK_PERCEPTION_CONFIG").value_or(""))) return *text;
  const auto defaultPath = "/Users/" + host.userName() + "/Documents/Dev/Quorle/config/perception/sensitive-apps.yaml";
  if (auto text = readIfExists(host, defaultPath)) return *text;
  const auto resource = host.pathForResource("perception-sensitive-apps", "yaml");
  const auto text = resource ? host.readUTF8File(*resource) : std::nullopt;
  return text ? *text : std::string(deliveredPolicy());
}

}  // namespace

SensitiveAppsConfig loadSensitiveAppsConfig(const platform::Host& host) {
  return parseSensitiveAppsYAML(policyText(host));
}

}  // namespace tavik
