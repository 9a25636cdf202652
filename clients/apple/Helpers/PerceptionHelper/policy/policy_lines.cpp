#include "policy/policy_lines.h"

#include <algorithm>

#include "text/grapheme_clusters.h"
#include "text/trimming.h"

namespace tavik {
namespace {

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

std::string_view withoutQuotes(std::string_view item) {
  for (const std::string_view quote : {"\"", "'"}) {
    if (item.size() >= 2 && text::firstCharacter(item) == quote && text::lastCharacter(item) == quote) {
      return item.substr(1, item.size() - 2);
    }
  }
  return item;
}

}  // namespace

PolicySection sectionNamed(std::string_view name) {
  if (name == "bundle_id_blocklist") return PolicySection::bundleIds;
  if (name == "ax_role_text_blocklist") return PolicySection::axRoles;
  return PolicySection::none;
}

std::optional<PolicyLine> PolicyLines::next() {
  if (rest_.empty()) return std::nullopt;
  const auto whole = takeLine(rest_);
  PolicyLine line{.number = number_, .text = text::trimmedOfWhitespace(whole)};
  number_ += 1 + static_cast<std::size_t>(std::ranges::count(whole, '\n'));
  if (text::firstCharacter(line.text) == "#") {
    line.kind = PolicyLineKind::comment;
  } else if (text::lastCharacter(line.text) == ":") {
    line.kind = PolicyLineKind::header;
    section_ = sectionNamed(text::trimmedOfWhitespace(line.text.substr(0, line.text.size() - 1)));
  } else if (beginsWithHyphenAndSpace(line.text)) {
    line.kind = PolicyLineKind::item;
    line.item = withoutQuotes(text::trimmedOfWhitespace(line.text.substr(2)));
  }
  line.section = section_;
  return line;
}

}  // namespace tavik
