#pragma once

#include <string_view>
#include <vector>

#include "tools/doctor/finding.h"

namespace tavik::doctor {

/// What in the text of a policy file does nothing, or something else than it looks like, and what it lacks.
std::vector<Finding> checkPolicy(std::string_view text);

}  // namespace tavik::doctor
