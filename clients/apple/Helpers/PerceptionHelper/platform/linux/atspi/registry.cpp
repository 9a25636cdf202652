#include "platform/linux/atspi/registry.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "platform/linux/applications/process_evidence.h"
#include "platform/linux/atspi/reply.h"

namespace tavik::platform::atspi {
namespace {

constexpr auto kBusDriver = "org.freedesktop.DBus";
constexpr std::size_t kMaxApplications = 1000;

/// A registered application that may be the one.
struct Candidate {
  dbus::Reference root = {};
  bool hasWindows = false;
};

std::vector<RegisteredApplication> registeredRoots(dbus::Conversation& conversation) {
  const dbus::Reference registry{.busName = "org.a11y.atspi.Registry", .path = "/org/a11y/atspi/accessible/root"};
  std::vector<RegisteredApplication> applications;
  conversation.ask(registry, kAccessible, "GetChildren", [&applications](const dbus::Answer& answer) {
    for (auto& root : readReferences(answer.reply, kMaxApplications).value_or(std::vector<dbus::Reference>{})) {
      applications.push_back({.root = std::move(root)});
    }
  });
  conversation.settle();
  return applications;
}

void askForWindows(dbus::Conversation& conversation, std::vector<Candidate>& candidates) {
  for (Candidate& candidate : candidates) {
    conversation.askProperty(candidate.root, kAccessible, "ChildCount", [&candidate](const dbus::Answer& answer) {
      candidate.hasWindows = readInt32Property(answer.reply).value_or(0) > 0;
    });
  }
  conversation.settle();
}

/// True when the connected process is the application's own, or the proxy between its Flatpak sandbox and the bus.
/// `instance` is that of the sandbox, empty without one.
bool speaksFor(std::int32_t connected, std::int32_t processID, const std::string& instance) {
  return connected == processID || (!instance.empty() && applications::flatpakInstance(connected) == instance);
}

}  // namespace

std::vector<RegisteredApplication> registeredApplications(dbus::Conversation& conversation) {
  const dbus::Reference driver{.busName = kBusDriver, .path = "/org/freedesktop/DBus"};
  auto applications = registeredRoots(conversation);
  for (auto& application : applications) {
    const auto handler = [&application](const dbus::Answer& answer) {
      application.processID = static_cast<std::int32_t>(readUInt32(answer.reply).value_or(0));
    };
    conversation.ask(driver, kBusDriver, "GetConnectionUnixProcessID", handler, "s", application.root.busName.c_str());
  }
  conversation.settle();
  std::erase_if(applications, [](const auto& application) { return application.processID <= 0; });
  return applications;
}

std::optional<dbus::Reference> findApplication(dbus::Conversation& conversation, std::int32_t processID) {
  const auto instance = applications::flatpakInstance(processID);
  std::vector<Candidate> candidates;
  for (auto& application : registeredApplications(conversation)) {
    if (speaksFor(application.processID, processID, instance)) candidates.push_back({std::move(application.root)});
  }
  if (candidates.empty()) return std::nullopt;
  if (candidates.size() > 1) askForWindows(conversation, candidates);
  const auto withWindows = std::ranges::find_if(candidates, &Candidate::hasWindows);
  return (withWindows != candidates.end() ? *withWindows : candidates.front()).root;
}

}  // namespace tavik::platform::atspi
