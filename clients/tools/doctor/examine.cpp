#include "tools/doctor/examine.h"

#include <algorithm>
#include <iterator>
#include <utility>
#include <vector>

#include "platform/linux/applications/desktop_entry_catalog.h"
#include "policy/load_sensitive_apps_config.h"
#include "policy/parse_sensitive_apps_yaml.h"
#include "tools/doctor/check_policy.h"
#include "tools/doctor/desktop_facts.h"
#include "tools/doctor/desktop_findings.h"
#include "tools/doctor/examine_applications.h"
#include "tools/doctor/examine_policy.h"
#include "tools/doctor/known_applications.h"
#include "tools/doctor/near_matches.h"

namespace tavik::doctor {
namespace {

void append(std::vector<Finding>& findings, std::vector<Finding> more) {
  std::ranges::move(more, std::back_inserter(findings));
}

std::vector<KnownApplication> knownApplications(platform::Workspace& workspace) {
  platform::applications::DesktopEntryCatalog catalog(&platform::applications::applicationFolders);
  auto known = runningApplications(workspace.runningApplications());
  std::ranges::move(installedApplications(catalog), std::back_inserter(known));
  return known;
}

void examine(const PolicyText& policy, platform::Workspace& workspace, DoctorReport& report) {
  const auto known = knownApplications(workspace);
  append(report.findings, checkPolicy(policy.text));
  append(report.findings, nearMatches(parseSensitiveAppsYAML(policy.text), known));
  report.policy = explainPolicy(policy, known);
}

}  // namespace

DoctorReport examineAll(const platform::Platform& platform) {
  DoctorReport report;
  auto [facts, accessibilityBus] = lookAtDesktop(*platform.host);
  facts.mayCapture = platform.screenCapture->preflightScreenCaptureAccess();
  report.findings = desktopFindings(facts);
  const auto policy = loadPolicyText(*platform.host);
  report.applications = examineApplications(platform, accessibilityBus, parseSensitiveAppsYAML(policy.text));
  append(report.findings, policyInForce(*platform.host, policy));
  examine(policy, *platform.workspace, report);
  return report;
}

DoctorReport examinePolicyFile(const platform::Platform& platform, const std::string& path) {
  DoctorReport report;
  if (auto text = platform.host->readUTF8File(path)) {
    examine({.path = path, .text = *std::move(text)}, *platform.workspace, report);
  } else {
    report.findings.push_back(unreadablePolicy(*platform.host, path));
  }
  return report;
}

}  // namespace tavik::doctor
