#pragma once

#include <optional>
#include <string_view>

#include "policy/policy_lines.h"

namespace tavik::doctor {

/// Why a line of a policy file does nothing, or something else than it looks like.
struct LineFault {
  std::string_view text = {};  ///< a sentence without its first words: "has a remark behind it"
  std::string_view remedy = {};
};

/// The fault of the line by itself, if it has one. Headers of unknown sections, and items in none, are for whoever
/// knows the lines around them.
std::optional<LineFault> faultOf(const PolicyLine& line);

/// True where a header's name is only written otherwise than that of a section: quoted, in other letters, with hyphens.
bool nearlyNamesSection(const PolicyLine& header);

}  // namespace tavik::doctor
