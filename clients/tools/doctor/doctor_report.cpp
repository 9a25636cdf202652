#include "tools/doctor/doctor_report.h"

#include <algorithm>

namespace tavik::doctor {

bool isAllWell(const DoctorReport& report) {
  return std::ranges::none_of(report.findings, [](const auto& finding) { return finding.level == Level::fault; }) &&
         std::ranges::none_of(report.applications, [](const auto& application) { return !!application.remedy; });
}

}  // namespace tavik::doctor
