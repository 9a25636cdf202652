#include "tools/doctor/examine_applications.h"

#include <cstdint>
#include <map>
#include <string>

#include "policy/sensitive_app_match.h"
#include "tools/doctor/ask_toolkits.h"
#include "tools/doctor/count_elements.h"
#include "tools/doctor/toolkit.h"

namespace tavik::doctor {
namespace {

using platform::RunningApplicationRef;

/// A report in progress.
struct Examined {
  RunningApplicationRef application = {};
  ApplicationReport report = {};
};

std::vector<Examined> listed(platform::Workspace& workspace, const SensitiveAppsConfig& policy) {
  std::vector<Examined> result;
  const auto frontmost = workspace.frontmostApplication();
  for (const auto& application : workspace.runningApplications()) {
    if (application->activationPolicy() != platform::ActivationPolicy::regular) continue;
    const bool isFrontmost = frontmost && frontmost->processIdentifier() == application->processIdentifier();
    result.push_back(
        {.application = application,
         .report = {.identifier = application->bundleIdentifier().value_or(""),
                    .name = application->localizedName().value_or(""),
                    .isFrontmost = isFrontmost,
                    .isSensitive = sensitiveAppMatch(application->bundleIdentifiers(), policy).has_value()}});
  }
  return result;
}

/// A browser's own buttons are there also where its pages are not.
bool lacksTree(const ElementCount& count, const std::string& toolkit) {
  return count.elements <= kNearlyEmpty || (toolkit == "Chromium" && !count.hasPage && count.elements < kMostElements);
}

/// `answer` is null where it is not on the bus.
void examineTree(platform::Accessibility& accessibility, const BusAnswer* answer, Examined& examined) {
  auto& report = examined.report;
  if (answer != nullptr && !answer->answers) {
    report.remedy = "It does not answer on the accessibility bus. Where it stays so, start it again.";
    return;
  }
  const auto process = examined.application->processIdentifier();
  const auto count = answer != nullptr ? countElements(accessibility, process) : ElementCount();
  report.elements = count.elements;
  if (report.toolkit && lacksTree(count, *report.toolkit)) report.remedy = treeRemedy(*report.toolkit);
}

}  // namespace

std::vector<ApplicationReport> examineApplications(const platform::Platform& platform,
                                                   const platform::dbus::Bus& accessibilityBus,
                                                   const SensitiveAppsConfig& policy) {
  auto all = listed(*platform.workspace, policy);
  std::vector<std::int32_t> processes;
  for (const auto& [application, report] : all) {
    if (!report.isSensitive) processes.push_back(application->processIdentifier());
  }
  const auto answers =
      accessibilityBus ? askToolkits(accessibilityBus, processes) : std::map<std::int32_t, BusAnswer>();
  std::vector<ApplicationReport> reports;
  for (auto& examined : all) {
    auto& report = examined.report;
    if (!report.isSensitive) {
      const auto process = examined.application->processIdentifier();
      const auto found = answers.find(process);
      const auto* const answer = found != answers.end() ? &found->second : nullptr;
      report.toolkit = answer != nullptr && answer->toolkit ? answer->toolkit : toolkitOfProcess(process);
      if (accessibilityBus) examineTree(*platform.accessibility, answer, examined);
    }
    reports.push_back(std::move(report));
  }
  return reports;
}

}  // namespace tavik::doctor
