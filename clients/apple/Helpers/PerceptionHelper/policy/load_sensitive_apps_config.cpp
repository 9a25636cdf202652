#include "policy/load_sensitive_apps_config.h"

#include <utility>

#include "policy/delivered_policy.h"
#include "policy/parse_sensitive_apps_yaml.h"

namespace tavik {
namespace {

std::optional<std::string> readIfExists(const platform::Host& host, const std::string& path) {
  if (path.empty() || !host.fileExists(path)) return std::nullopt;
  return host.readUTF8File(path);
}

}  // namespace

PolicyText loadPolicyText(const platform::Host& host) {
  const auto named = host.environmentVariable("TAVIK_PERCEPTION_CONFIG").value_or("");
  if (auto text = readIfExists(host, named)) return {.path = named, .text = *std::move(text)};
  const auto usual = "/Users/" + host.userName() + "/Documents/Dev/Quorle/config/perception/sensitive-apps.yaml";
  if (auto text = readIfExists(host, usual)) return {.path = usual, .text = *std::move(text)};
  const auto resource = host.pathForResource("perception-sensitive-apps", "yaml");
  if (auto text = resource ? host.readUTF8File(*resource) : std::nullopt) {
    return {.path = resource, .text = *std::move(text)};
  }
  return {.text = std::string(deliveredPolicy())};
}

SensitiveAppsConfig loadSensitiveAppsConfig(const platform::Host& host) {
  return parseSensitiveAppsYAML(loadPolicyText(host).text);
}

}  // namespace tavik
