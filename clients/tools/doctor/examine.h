#pragma once

#include <string>

#include "platform/platform.h"
#include "tools/doctor/doctor_report.h"

namespace tavik::doctor {

/// The desktop, the applications on it and the policy in force. Looks, and starts, activates and asks nobody anything.
DoctorReport examineAll(const platform::Platform& platform);

/// A policy file alone, beside the applications that run and are installed.
DoctorReport examinePolicyFile(const platform::Platform& platform, const std::string& path);

}  // namespace tavik::doctor
