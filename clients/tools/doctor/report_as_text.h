#pragma once

#include <string>

#include "tools/doctor/doctor_report.h"

namespace tavik::doctor {

/// What is told: the policy's lines where they are asked for, or where the policy is the user's own.
struct TextOptions {
  bool isPolicyAlone = false;
};

/// The report for a person, in lines of at most 100 columns, names and paths aside.
std::string reportAsText(const DoctorReport& report, TextOptions options);

}  // namespace tavik::doctor
