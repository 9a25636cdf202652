#include "tools/doctor/report_as_json.h"

#include <string_view>

#include "tools/doctor/words.h"

namespace tavik::doctor {
namespace {

template <class Value>
ResponseValue orNull(const std::optional<Value>& value) {
  return value ? ResponseValue(*value) : ResponseValue();
}

ResponseDictionary toJSON(const Finding& finding) {
  ResponseDictionary object{{"level", word(finding.level)}, {"about", finding.about}, {"text", finding.text}};
  if (finding.remedy) object["remedy"] = *finding.remedy;
  return object;
}

ResponseDictionary toJSON(const ApplicationReport& application) {
  ResponseDictionary object{{"app_bundle_id", application.identifier},  {"app_name", application.name},
                            {"is_frontmost", application.isFrontmost},  {"is_sensitive", application.isSensitive},
                            {"elements", orNull(application.elements)}, {"toolkit", orNull(application.toolkit)}};
  if (application.remedy) object["remedy"] = *application.remedy;
  return object;
}

ResponseDictionary toJSON(const PolicyLineReport& line) {
  ResponseDictionary object{{"line", line.number}, {"taken_for", line.takenFor}, {"text", line.text}};
  if (!line.matches.empty()) object["matches"] = ResponseArray(line.matches.begin(), line.matches.end());
  return object;
}

template <class Record>
ResponseArray arrayOf(const std::vector<Record>& records) {
  ResponseArray array;
  array.reserve(records.size());
  for (const auto& record : records) array.emplace_back(toJSON(record));
  return array;
}

ResponseDictionary toJSON(const PolicyReport& policy) {
  return {{"file", orNull(policy.file)},
          {"is_delivered", policy.isDelivered},
          {"applications", policy.applications},
          {"roles", policy.roles},
          {"lines", arrayOf(policy.lines)}};
}

}  // namespace

ResponseDictionary reportAsJSON(const DoctorReport& report) {
  return {{"version", kVersion},
          {"findings", arrayOf(report.findings)},
          {"applications", arrayOf(report.applications)},
          {"policy", report.policy ? toJSON(*report.policy) : ResponseDictionary{{"file", nullptr}}}};
}

}  // namespace tavik::doctor
