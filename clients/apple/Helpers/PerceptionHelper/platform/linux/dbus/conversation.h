#pragma once

#include <cstddef>
#include <functional>
#include <list>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <utility>

#include <systemd/sd-bus.h>

#include "platform/linux/dbus/bus.h"
#include "platform/linux/dbus/patience.h"
#include "platform/linux/dbus/sd_bus_library.h"

namespace tavik::platform::dbus {

/// An object of some process on a bus.
struct Reference {
  std::string busName = {};
  std::string path = {};
  bool operator==(const Reference&) const = default;
};

/// What became of a call.
struct Answer {
  sd_bus_message* reply = nullptr;  ///< null when the call failed; borrowed for the duration of the handler
  bool isUnsupported = false;       ///< it failed because the object has no such property
  std::string_view error = {};      ///< the name of the error that the other side told; as long as the reply
};

/// Calls to other processes, many in flight at once, which never wait longer than the patience allows. A process that
/// lets the patience run out is asked nothing more: every further call to it fails at once. Calls start no service.
class Conversation {
 public:
  /// Called exactly once, when the call is made or while the conversation settles. May ask more.
  using Handler = std::function<void(const Answer&)>;

  explicit Conversation(Bus bus, Patience patience = Patience());
  Conversation(const Conversation&) = delete;
  Conversation& operator=(const Conversation&) = delete;

  /// Calls a method. `types` and `arguments` are those of sd_bus_message_append.
  template <class... Arguments>
  void ask(const Reference& target, const char* interface, const char* member, Handler handler, const char* types = "",
           Arguments... arguments) {
    Message call = newCall(target, interface, member);
    if (call && sdBus()->sd_bus_message_append(call.get(), types, arguments...) < 0) call = nullptr;
    send(std::move(call), target.busName, std::move(handler));
  }
  /// Reads one property (org.freedesktop.DBus.Properties.Get).
  void askProperty(const Reference& target, const char* interface, const char* property, Handler handler);
  /// Reads all of an interface (org.freedesktop.DBus.Properties.GetAll).
  void askAllProperties(const Reference& target, const char* interface, Handler handler);

  /// Waits until everything asked has been answered or given up. While there is room in flight, `askMore` is called,
  /// which asks some more, or returns false when it has nothing to ask at the moment.
  void settle(const std::function<bool()>& askMore = {});

 private:
  struct ReleaseMessage {
    void operator()(sd_bus_message* message) const { sdBus()->sd_bus_message_unref(message); }
  };
  using Message = std::unique_ptr<sd_bus_message, ReleaseMessage>;
  struct CancelCall {
    void operator()(sd_bus_slot* slot) const { sdBus()->sd_bus_slot_unref(slot); }
  };
  struct Call {
    Conversation* conversation = nullptr;
    std::string busName = {};
    Handler handler = {};
    std::unique_ptr<sd_bus_slot, CancelCall> slot = {};
    std::list<Call>::iterator position = {};
  };

  /// Null when the target is asked nothing more, or cannot be asked: its name or path is not one.
  Message newCall(const Reference& target, const char* interface, const char* member) const;
  void send(Message message, const std::string& busName, Handler handler);
  static int onReply(sd_bus_message* reply, void* call, sd_bus_error*);
  void giveUp();

  Bus bus_;
  Patience patience_;
  std::list<Call> inFlight_;
  std::set<std::string> silent_;
};

}  // namespace tavik::platform::dbus
