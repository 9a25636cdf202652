#include "platform/linux/dbus/conversation.h"

#include <cstdint>
#include <optional>
#include <utility>

#include "platform/linux/dbus/batch_scheduling.h"

namespace tavik::platform::dbus {
namespace {

/// Enough to keep the other side busy, and far below what a bus lets one connection have unanswered.
constexpr std::size_t kMaxInFlight = 512;

/// While this many are in flight, answers come faster than one by one. Being woken for each of them would take the
/// processor from those who are making the next.
constexpr std::size_t kManyInFlight = kMaxInFlight / 2;

constexpr auto kProperties = "org.freedesktop.DBus.Properties";

/// How toolkits say that an object has no such property: ATK and GLib, GTK 4, Qt.
bool isUnsupported(sd_bus_message* reply) {
  return sdBus()->sd_bus_message_is_method_error(reply, SD_BUS_ERROR_UNKNOWN_PROPERTY) > 0 ||
         sdBus()->sd_bus_message_is_method_error(reply, SD_BUS_ERROR_INVALID_ARGS) > 0 ||
         sdBus()->sd_bus_message_is_method_error(reply, SD_BUS_ERROR_UNKNOWN_INTERFACE) > 0;
}

}  // namespace

Conversation::Conversation(Bus bus, Patience patience) : bus_(std::move(bus)), patience_(std::move(patience)) {}

void Conversation::askProperty(const Reference& target, const char* interface, const char* property, Handler handler) {
  ask(target, kProperties, "Get", std::move(handler), "ss", interface, property);
}

void Conversation::askAllProperties(const Reference& target, const char* interface, Handler handler) {
  ask(target, kProperties, "GetAll", std::move(handler), "s", interface);
}

void Conversation::settle(const std::function<bool()>& askMore) {
  std::optional<BatchScheduling> batch;
  patience_.startWaiting();
  for (;;) {
    while (askMore && inFlight_.size() < kMaxInFlight && askMore()) {
    }
    if (inFlight_.empty()) break;
    if (!batch && inFlight_.size() >= kManyInFlight) batch.emplace();
    const auto left = patience_.remaining();
    if (left.count() == 0 || !processBus(bus_.get(), left)) giveUp();
  }
  patience_.stopWaiting();
}

Conversation::Message Conversation::newCall(const Reference& target, const char* interface, const char* member) const {
  if (patience_.isExhausted() || silent_.contains(target.busName)) return nullptr;
  sd_bus_message* message = nullptr;
  sdBus()->sd_bus_message_new_method_call(bus_.get(), &message, target.busName.c_str(), target.path.c_str(), interface,
                                          member);
  Message call(message);
  if (call && sdBus()->sd_bus_message_set_auto_start(message, 0) < 0) call = nullptr;
  return call;
}

void Conversation::send(Message message, const std::string& busName, Handler handler) {
  if (!message) return handler({});
  Call& call = inFlight_.emplace_back();
  call.conversation = this;
  call.busName = busName;
  call.handler = std::move(handler);
  call.position = std::prev(inFlight_.end());
  sd_bus_slot* slot = nullptr;
  const int sent = sdBus()->sd_bus_call_async(bus_.get(), &slot, message.get(), &onReply, &call, UINT64_MAX);
  call.slot.reset(slot);
  if (sent >= 0) return;
  std::list<Call> failed;
  failed.splice(failed.begin(), inFlight_, call.position);
  failed.front().handler({});
}

int Conversation::onReply(sd_bus_message* reply, void* userdata, sd_bus_error*) {
  const Call& call = *static_cast<Call*>(userdata);
  Conversation& self = *call.conversation;
  std::list<Call> answered;
  answered.splice(answered.begin(), self.inFlight_, call.position);
  self.patience_.noteAnswer();
  if (sdBus()->sd_bus_message_is_method_error(reply, nullptr) > 0) {
    call.handler({.reply = nullptr,
                  .isUnsupported = isUnsupported(reply),
                  .error = sdBus()->sd_bus_message_get_error(reply)->name});
  } else {
    call.handler({.reply = reply});
  }
  return 1;
}

void Conversation::giveUp() {
  std::list<Call> unanswered;
  unanswered.swap(inFlight_);
  for (const Call& call : unanswered) silent_.insert(call.busName);
  patience_.noteAnswer();
  for (const Call& call : unanswered) call.handler({});
}

}  // namespace tavik::platform::dbus
