#include "policy/parse_sensitive_apps_yaml.h"

#include <algorithm>

#include "text/grapheme_clusters.h"
#include "text/trimming.h"

namespace tavik {
namespace {

enum class Section : std::uint8_t { none, bundleIds, axRoles };

/// Takes the first line off `rest`: up to a line feed that does not follow a carriage return, which would make both one
/// character.
std::string_view takeLine(std::string_view& rest) {
  auto end = rest.find('\n');
  while (end != std::string_view::npos && end > 0 && rest[end - 1] == '\r') end = rest.find('\n', end + 1);
  const auto line = rest.substr(0, end);
  rest.remove_prefix(std::min(rest.size(), line.size() + 1));
  return line;
}

bool beginsWithHyphenAndSpace(std::string_view line) {
  return text::firstCharacter(line) == "-" && text::firstCharacter(line.substr(1)) == " ";
}

Section sectionNamed(std::string_view key) {
  if (key == "bundle_id_blocklist") return Section::bundleIds;
  if (key == "ax_role_text_blocklist") return Section::axRoles;
  return Section::none;
}

std::string_view withoutQuotes(std::string_view item) {
  for (const std::string_view quote : {"\"", "'"}) {
    if (item.size() >= 2 && text::firstCharacter(item) == quote && text::lastCharacter(item) == quote) {
      return item.substr(1, item.size() - 2);
    }
  }
  return item;
}

void addItem(std::string_view item, Section section, SensitiveAppsConfig& config) {
  if (item.empty()) return;
  if (section == Section::bundleIds) config.bundleIdBlocklist.emplace_back(item);
  if (section == Section::axRoles) config.axRoleTextBlocklist.emplace(item);
}

}  // namespace

SensitiveAppsConfig parseSensitiveAppsYAML(std::string_view text) {
  SensitiveAppsConfig config;
  auto section = Section::none;
  while (!text.empty()) {
    const auto line = text::trimmedOfWhitespace(takeLine(text));
    if (text::firstCharacter(line) == "#") continue;
    if (text::lastCharacter(line) == ":") {
      section = sectionNamed(text::trimmedOfWhitespace(line.substr(0, line.size() - 1)));
    } else if (beginsWithHyphenAndSpace(line)) {
      addItem(withoutQuotes(text::trimmedOfWhitespace(line.substr(2))), section, config);
    }
  }
  return config;
}

}  // namespace tavik
