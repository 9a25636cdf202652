#include "platform/linux/atspi/registry.h"

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

/// What is known of a registered application.
struct Application {
  dbus::Reference root = {};
  std::optional<std::uint32_t> processID = {};
  bool hasWindows = false;
};

std::vector<Application> registeredApplications(dbus::Conversation& conversation) {
  const dbus::Reference registry{.busName = "org.a11y.atspi.Registry", .path = "/org/a11y/atspi/accessible/root"};
  std::vector<Application> applications;
  conversation.ask(registry, kAccessible, "GetChildren", [&applications](const dbus::Answer& answer) {
    for (auto& root : readReferences(answer.reply, kMaxApplications).value_or(std::vector<dbus::Reference>{})) {
      applications.push_back({.root = std::move(root)});
    }
  });
  conversation.settle();
  return applications;
}

void askProcessIDs(dbus::Conversation& conversation, std::vector<Application>& applications) {
  const dbus::Reference driver{.busName = kBusDriver, .path = "/org/freedesktop/DBus"};
  for (Application& application : applications) {
    conversation.ask(
        driver, kBusDriver, "GetConnectionUnixProcessID",
        [&application](const dbus::Answer& answer) { application.processID = readUInt32(answer.reply); }, "s",
        application.root.busName.c_str());
  }
  conversation.settle();
}

void askForWindows(dbus::Conversation& conversation, std::vector<Application>& applications) {
  for (Application& application : applications) {
    conversation.askProperty(application.root, kAccessible, "ChildCount", [&application](const dbus::Answer& answer) {
      application.hasWindows = readInt32Property(answer.reply).value_or(0) > 0;
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

std::optional<dbus::Reference> findApplication(dbus::Conversation& conversation, std::int32_t processID) {
  auto applications = registeredApplications(conversation);
  askProcessIDs(conversation, applications);
  const auto instance = applications::flatpakInstance(processID);
  std::erase_if(applications, [&](const Application& application) {
    return !application.processID || !speaksFor(static_cast<std::int32_t>(*application.processID), processID, instance);
  });
  if (applications.empty()) return std::nullopt;
  if (applications.size() > 1) askForWindows(conversation, applications);
  for (const Application& application : applications) {
    if (application.hasWindows) return application.root;
  }
  return applications.front().root;
}

}  // namespace tavik::platform::atspi
