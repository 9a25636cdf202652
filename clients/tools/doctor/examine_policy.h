#pragma once

#include <span>
#include <string>
#include <vector>

#include "platform/host.h"
#include "policy/load_sensitive_apps_config.h"
#include "tools/doctor/doctor_report.h"
#include "tools/doctor/finding.h"
#include "tools/doctor/known_applications.h"

namespace tavik::doctor {

/// Why a file that could not be read as a policy is none.
Finding unreadablePolicy(const platform::Host& host, const std::string& path);

/// What the policy says, and which of these applications it covers.
PolicyReport explainPolicy(const PolicyText& policy, std::span<const KnownApplication> applications);

/// Which file is in force, and why not the one that is named in the environment.
std::vector<Finding> policyInForce(const platform::Host& host, const PolicyText& policy);

}  // namespace tavik::doctor
