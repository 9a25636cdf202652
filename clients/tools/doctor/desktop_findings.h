#pragma once

#include <vector>

#include "tools/doctor/desktop_facts.h"
#include "tools/doctor/finding.h"

namespace tavik::doctor {

/// What those facts mean for who wants pictures and trees.
std::vector<Finding> desktopFindings(const DesktopFacts& facts);

}  // namespace tavik::doctor
