#include "tools/doctor/ask_toolkits.h"

#include <utility>

#include "platform/linux/atspi/registry.h"
#include "platform/linux/atspi/reply.h"
#include "platform/linux/dbus/conversation.h"
#include "tools/doctor/toolkit.h"

namespace tavik::doctor {
namespace {

namespace atspi = platform::atspi;
namespace dbus = platform::dbus;

struct Question {
  bool isAnswered = false;
  std::string name = {};
  std::string version = {};
};

void ask(dbus::Conversation& conversation, const dbus::Reference& root, Question& question) {
  conversation.askProperty(root, atspi::kApplication, "ToolkitName", [&question](const dbus::Answer& answer) {
    question.isAnswered = answer.reply != nullptr || !answer.error.empty();
    question.name = atspi::readStringProperty(answer.reply).value_or("");
  });
  conversation.askProperty(root, atspi::kApplication, "Version", [&question](const dbus::Answer& answer) {
    question.version = atspi::readStringProperty(answer.reply).value_or("");
  });
}

}  // namespace

std::map<std::int32_t, BusAnswer> askToolkits(const dbus::Bus& bus, std::span<const std::int32_t> processes) {
  dbus::Conversation conversation(bus);
  std::map<std::int32_t, Question> questions;  // whose places do not change
  for (const auto process : processes) {
    if (const auto root = atspi::findApplication(conversation, process)) {
      ask(conversation, *root, questions[process]);
    }
  }
  conversation.settle();
  std::map<std::int32_t, BusAnswer> answers;
  for (const auto& [process, question] : questions) {
    auto& answer = answers[process];
    answer.answers = question.isAnswered;
    if (!question.name.empty()) answer.toolkit = toolkitNamed(question.name, question.version);
  }
  return answers;
}

}  // namespace tavik::doctor
