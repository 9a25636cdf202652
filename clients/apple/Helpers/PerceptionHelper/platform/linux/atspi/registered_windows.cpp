#include "platform/linux/atspi/registered_windows.h"

#include <cstddef>
#include <list>
#include <optional>
#include <utility>

#include "platform/linux/atspi/registry.h"
#include "platform/linux/atspi/reply.h"
#include "platform/linux/atspi/role_names.h"

namespace tavik::platform::atspi {
namespace {

/// More than any real desktop has.
constexpr std::size_t kMaxWindows = 1000;

/// A child of an application's object, which may be a window.
struct Candidate {
  dbus::Reference reference = {};
  RegisteredWindow window = {};
  std::optional<States> states = {};
  bool hasRole = false;  ///< that of a window
};

/// Anybody can claim anybody's objects: an application's own are its windows.
std::list<Candidate> candidatesOf(dbus::Conversation& conversation,
                                  const std::vector<RegisteredApplication>& applications) {
  std::list<Candidate> candidates;
  for (const auto& application : applications) {
    const auto handler = [&candidates, &application](const dbus::Answer& answer) {
      for (auto& child : readReferences(answer.reply, kMaxWindows).value_or(std::vector<dbus::Reference>{})) {
        if (child.busName != application.root.busName || candidates.size() == kMaxWindows) continue;
        candidates.push_back({.reference = std::move(child), .window = {.processID = application.processID}});
      }
    };
    conversation.ask(application.root, kAccessible, "GetChildren", handler);
  }
  conversation.settle();
  return candidates;
}

void askAbout(Candidate& candidate, dbus::Conversation& conversation) {
  conversation.ask(candidate.reference, kAccessible, "GetRole", [&candidate](const dbus::Answer& answer) {
    const auto role = readUInt32(answer.reply);
    candidate.hasRole = role && axRole(*role, false) == "AXWindow";
  });
  conversation.ask(candidate.reference, kAccessible, "GetState",
                   [&candidate](const dbus::Answer& answer) { candidate.states = readStates(answer.reply); });
  conversation.askProperty(candidate.reference, kAccessible, "Name", [&candidate](const dbus::Answer& answer) {
    candidate.window.title = readStringProperty(answer.reply).value_or("");
  });
}

}  // namespace

std::vector<RegisteredWindow> registeredWindows(dbus::Conversation& conversation) {
  auto candidates = candidatesOf(conversation, registeredApplications(conversation));
  for (auto& candidate : candidates) askAbout(candidate, conversation);
  conversation.settle();
  std::vector<RegisteredWindow> windows;
  for (auto& [reference, window, states, hasRole] : candidates) {
    const auto has = [given = states.value_or(0)](States state) { return (given & state) != 0; };
    if (!hasRole || !has(kShowing | kVisible | kIconified)) continue;
    window.isActive = has(kActive);
    window.isMinimized = has(kIconified);
    windows.push_back(std::move(window));
  }
  return windows;
}

}  // namespace tavik::platform::atspi
