#pragma once

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <thread>
#include <utility>
#include <vector>

#include "platform/linux/atspi/element.h"

namespace tavik::platform::atspi {

/// An object of a fake application.
struct FakeObject {
  std::uint32_t role = 39;  ///< panel
  std::string roleName = "panel";
  States states = kVisible | kShowing;
  std::vector<std::string> interfaces = {};  ///< without "org.a11y.atspi."
  std::string name = {};
  std::string text = {};
  Extents extents = {};
  bool knowsScreen = true;  ///< else extents on the screen are all 0
  std::string toolkitName = {};
  std::string toolkitVersion = {};
  std::vector<std::string> children = {};  ///< paths; an empty one is the null object, "!" before one another process's
  std::string parent = {};                 ///< its path
  std::vector<std::string> matches = {};   ///< paths that Collection.GetMatches finds
  std::set<std::string> failing = {};      ///< methods and properties that answer with an error
  std::set<std::string> mute = {};         ///< those that never answer
};

/// Objects by their paths.
using FakeObjects = std::map<std::string, FakeObject>;

inline constexpr auto kName = ":1.1";

inline dbus::Bus busOn(int descriptor, bool isServer) {
  sd_bus* created = nullptr;
  sd_bus_new(&created);
  dbus::Bus bus(created, &sd_bus_close_unref);
  sd_bus_set_fd(created, descriptor, descriptor);
  sd_bus_set_server(created, isServer ? 1 : 0, {});
  sd_bus_start(created);
  return bus;
}

inline void appendReference(sd_bus_message* reply, std::string_view path) {
  const bool isOthers = path.starts_with('!');
  if (isOthers) path.remove_prefix(1);
  sd_bus_message_append(reply, "(so)", isOthers ? ":1.2" : kName, path.empty() ? "/org/a11y/atspi/null" : path.data());
}

inline void appendArray(sd_bus_message* reply, const char* type, const std::vector<std::string>& items,
                        const auto& append) {
  sd_bus_message_open_container(reply, SD_BUS_TYPE_ARRAY, type);
  for (const auto& item : items) append(reply, item);
  sd_bus_message_close_container(reply);
}

inline void appendInterface(sd_bus_message* reply, const std::string& name) {
  sd_bus_message_append(reply, "s", ("org.a11y.atspi." + name).c_str());
}

inline void appendAllProperties(sd_bus_message* reply, const FakeObject& object) {
  const auto count = static_cast<std::int32_t>(object.children.size());
  sd_bus_message_append(reply, "a{sv}", 4, "Name", "s", object.name.c_str(), "Locale", "s", "C", "ChildCount", "i",
                        count, "Description", "s", "");
}

/// The value of a property, or what a method returns.
inline void appendAnswer(sd_bus_message* reply, sd_bus_message* call, const FakeObject& object,
                         std::string_view member) {
  const auto appendText = [&](std::string_view property, const std::string& value) {
    if (member == property) sd_bus_message_append(reply, "v", "s", value.c_str());
  };
  appendText("Name", object.name);
  appendText("ToolkitName", object.toolkitName);
  appendText("Version", object.toolkitVersion);
  appendText("Description", "");
  appendText("HelpText", "");
  if (member == "ChildCount") sd_bus_message_append(reply, "v", "i", static_cast<std::int32_t>(object.children.size()));
  if (member == "GetAll") appendAllProperties(reply, object);
  if (member == "Parent") sd_bus_message_append(reply, "v", "(so)", kName, object.parent.c_str());
  if (member == "GetConnectionUnixProcessID") sd_bus_message_append(reply, "u", 7U);
  if (member == "GetRole") sd_bus_message_append(reply, "u", object.role);
  if (member == "GetRoleName") sd_bus_message_append(reply, "s", object.roleName.c_str());
  if (member == "GetState") sd_bus_message_append(reply, "au", 2, static_cast<std::uint32_t>(object.states), 0U);
  if (member == "GetText") sd_bus_message_append(reply, "s", object.text.c_str());
  if (member == "GetChildren") appendArray(reply, "(so)", object.children, appendReference);
  if (member == "GetMatches") appendArray(reply, "(so)", object.matches, appendReference);
  if (member == "GetInterfaces") appendArray(reply, "s", object.interfaces, appendInterface);
  std::uint32_t argument = 0;
  if (member == "GetExtents") {
    sd_bus_message_read(call, "u", &argument);
    const auto [x, y, width, height] = argument == 0 && !object.knowsScreen ? Extents{} : object.extents;
    sd_bus_message_append(reply, "(iiii)", x, y, width, height);
  }
  if (member == "GetChildAtIndex") {
    sd_bus_message_read(call, "i", &argument);
    appendReference(reply, object.children.at(argument));
  }
}

/// An application that answers from a thread of its own at the other end of a socket.
class FakePeer {
 public:
  explicit FakePeer(FakeObjects objects) : objects_(std::move(objects)) {
    std::array<int, 2> ends{};
    socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends.data());
    thread_ = std::thread([this, end = ends[1]] { serve(end); });
    connection_ = busOn(ends[0], false);
    while (sd_bus_is_ready(connection_.get()) == 0) dbus::processBus(connection_.get(), std::chrono::seconds(1));
  }

  ~FakePeer() {
    connection_ = nullptr;
    thread_.join();
  }

  /// The element of its object "/root", which takes over the connection.
  std::shared_ptr<Element> takeRoot(dbus::PatienceLimits limits = {}) {
    auto session = std::make_shared<Session>(std::exchange(connection_, nullptr), dbus::Patience(limits));
    return std::make_shared<Element>(std::move(session), dbus::Reference{.busName = kName, .path = "/root"},
                                     Placement{});
  }

  /// How often a method was called, or a property read, of one object, or of all.
  std::ptrdiff_t calls(const std::string& member, const std::string& path = {}) const {
    const std::lock_guard lock(mutex_);
    return std::ranges::count_if(
        calls_, [&](const auto& call) { return call.first == member && (path.empty() || call.second == path); });
  }

 private:
  /// Ends when the other end is closed.
  void serve(int descriptor) {
    const dbus::Bus bus = busOn(descriptor, true);
    sd_bus_add_filter(bus.get(), nullptr, &onMessage, this);
    while (dbus::processBus(bus.get(), std::chrono::seconds(1))) {
    }
  }

  static int onMessage(sd_bus_message* call, void* userdata, sd_bus_error*) {
    auto& self = *static_cast<FakePeer*>(userdata);
    const std::string path = sd_bus_message_get_path(call);
    std::string member = sd_bus_message_get_member(call);
    const char* interface = nullptr;
    const char* property = nullptr;
    if (member == "Get" && sd_bus_message_read(call, "ss", &interface, &property) > 0) member = property;
    {
      const std::lock_guard lock(self.mutex_);
      self.calls_.emplace_back(member, path);
    }
    const auto object = self.objects_.find(path);
    if (object == self.objects_.end() || object->second.failing.contains(member) ||
        sd_bus_message_get_auto_start(call) != 0) {
      return sd_bus_reply_method_errorf(call, SD_BUS_ERROR_FAILED, "failing");
    }
    if (object->second.mute.contains(member)) return 1;
    sd_bus_message* reply = nullptr;
    sd_bus_message_new_method_return(call, &reply);
    appendAnswer(reply, call, object->second, member);
    sd_bus_send(nullptr, reply, nullptr);
    sd_bus_message_unref(reply);
    return 1;
  }

  FakeObjects objects_;
  mutable std::mutex mutex_;
  std::vector<std::pair<std::string, std::string>> calls_;  ///< member and path
  dbus::Bus connection_;
  std::thread thread_;
};

}  // namespace tavik::platform::atspi
