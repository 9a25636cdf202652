#pragma once

#include "protocol/response_dictionary.h"
#include "tools/doctor/doctor_report.h"

namespace tavik::doctor {

/// "version", "findings", "applications" and "policy", for programs.
ResponseDictionary reportAsJSON(const DoctorReport& report);

}  // namespace tavik::doctor
