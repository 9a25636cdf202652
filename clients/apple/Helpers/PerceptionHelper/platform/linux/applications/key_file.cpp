#include "platform/linux/applications/key_file.h"

#include <algorithm>
#include <cstdlib>

#include "text/utf8.h"

namespace tavik::platform::applications {
namespace {

bool isBlank(char c) { return c == ' ' || (c >= '\t' && c <= '\r' && c != '\n'); }

std::string_view withoutBlanks(std::string_view text) {
  while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
  return text;
}

/// What comes before a separator, or all; `text` goes on behind it.
std::string_view takeUpTo(char separator, std::string_view& text) {
  const auto end = std::min(text.find(separator), text.size());
  const auto part = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  return part;
}

std::optional<char> meaningOf(char escaped) {
  switch (escaped) {
    case 's':
      return ' ';
    case 'n':
      return '\n';
    case 't':
      return '\t';
    case 'r':
      return '\r';
    case '\\':
      return '\\';
    default:
      return std::nullopt;
  }
}

std::optional<std::string> unescaped(std::string_view value) {
  std::string text;
  for (std::size_t at = 0; at < value.size(); ++at) {
    if (value[at] != '\\') {
      text += value[at];
      continue;
    }
    const auto meaning = ++at < value.size() ? meaningOf(value[at]) : std::nullopt;
    if (!meaning) return std::nullopt;
    text += *meaning;
  }
  return text;
}

/// The variants of a locale, language_COUNTRY.ENCODING@MODIFIER, in the order of the Desktop Entry Specification.
void appendVariants(std::string_view locale, std::vector<std::string>& languages) {
  const auto modifierAt = std::min(locale.find('@'), locale.size());
  const auto base = locale.substr(0, std::min(locale.find('.'), modifierAt));
  const std::string modifier(locale.substr(modifierAt)), whole(base), language(base.substr(0, base.find('_')));
  for (const auto& variant : {whole + modifier, whole, language + modifier, language}) {
    if (!variant.empty() && std::ranges::find(languages, variant) == languages.end()) languages.push_back(variant);
  }
}

}  // namespace

std::optional<KeyFile> KeyFile::parse(std::string_view text) {
  KeyFile file;
  std::optional<std::string_view> group;
  while (!text.empty()) {
    auto line = withoutBlanks(takeUpTo('\n', text));
    if (line.empty() || line.starts_with('#')) continue;
    if (line.starts_with('[') && line.ends_with(']')) {
      group = line.substr(1, line.size() - 2);
      continue;
    }
    if (!group || line.find('=') == line.npos) return std::nullopt;
    const auto key = withoutBlanks(takeUpTo('=', line));
    file.lines_.push_back({.group = *group, .key = key, .value = withoutBlanks(line)});
  }
  return file;
}

const KeyFile::Line* KeyFile::find(std::string_view group, std::string_view key) const {
  const auto line = std::ranges::find_if(lines_.rbegin(), lines_.rend(), [&](const Line& candidate) {
    return candidate.key == key && candidate.group == group;
  });
  return line != lines_.rend() ? &*line : nullptr;
}

std::optional<std::string> KeyFile::string(std::string_view group, std::string_view key) const {
  const auto* const line = find(group, key);
  return line != nullptr && text::isValidUTF8(line->value) ? unescaped(line->value) : std::nullopt;
}

std::optional<std::string> KeyFile::localeString(std::string_view group, std::string_view key,
                                                 const std::vector<std::string>& languages) const {
  for (const auto& language : languages) {
    if (auto text = string(group, std::string(key) + "[" + language + "]")) return text;
  }
  return string(group, key);
}

bool KeyFile::boolean(std::string_view group, std::string_view key) const {
  const auto value = string(group, key);
  return value == "true" || value == "1";
}

std::vector<std::string> userLanguages() {
  std::vector<std::string> languages;
  for (const char* const name : {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"}) {
    const char* const value = std::getenv(name);
    std::string_view locales = value != nullptr ? value : "";
    if (locales.empty()) continue;
    while (!locales.empty()) appendVariants(takeUpTo(':', locales), languages);
    break;
  }
  return languages;
}

}  // namespace tavik::platform::applications
