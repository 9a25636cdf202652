#pragma once

#include <string_view>

#include "policy/sensitive_apps_config.h"

namespace tavik {

/// Reads the policy file's format, a small subset of YAML taken line by line: the header lines "bundle_id_blocklist:"
/// and "ax_role_text_blocklist:", each followed by item lines "- item", the item bare or in double or single quotes,
/// and comment lines that begin with "#". Any other header closes the section; whatever else is skipped. Lines end with
/// LF; CR LF ends none. Never fails.
SensitiveAppsConfig parseSensitiveAppsYAML(std::string_view text);

}  // namespace tavik
