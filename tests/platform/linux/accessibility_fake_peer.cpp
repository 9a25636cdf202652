#include "platform/linux/accessibility_fake_peer.h"

#include <array>
#include <chrono>
#include <string_view>
#include <sys/socket.h>
#include <utility>

#include <systemd/sd-id128.h>

namespace tavik::platform::atspi {
namespace {

constexpr auto kPeerName = ":1.1";

Bus adopt(sd_bus* bus) {
  return {bus, [](sd_bus* owned) { sd_bus_close_unref(owned); }};
}

Bus busOn(int descriptor, bool isServer) {
  sd_bus* created = nullptr;
  sd_bus_new(&created);
  Bus bus = adopt(created);
  sd_bus_set_fd(created, descriptor, descriptor);
  if (isServer) {
    sd_id128_t id{};
    sd_id128_randomize(&id);
    sd_bus_set_server(created, 1, id);
  }
  sd_bus_start(created);
  return bus;
}

void appendReference(sd_bus_message* reply, const std::string& path) {
  sd_bus_message_append(reply, "(so)", kPeerName, path.empty() ? "/org/a11y/atspi/null" : path.c_str());
}

void appendReferences(sd_bus_message* reply, const std::vector<std::string>& paths) {
  sd_bus_message_open_container(reply, SD_BUS_TYPE_ARRAY, "(so)");
  for (const auto& path : paths) appendReference(reply, path);
  sd_bus_message_close_container(reply);
}

void appendProperty(sd_bus_message* reply, const FakeObject& object, std::string_view name) {
  if (name == "ChildCount") sd_bus_message_append(reply, "v", "i", static_cast<std::int32_t>(object.children.size()));
  if (name == "Name") sd_bus_message_append(reply, "v", "s", object.name.c_str());
  if (name == "ToolkitName") sd_bus_message_append(reply, "v", "s", object.toolkitName.c_str());
  if (name == "Version") sd_bus_message_append(reply, "v", "s", object.toolkitVersion.c_str());
  if (name == "Description" || name == "HelpText") sd_bus_message_append(reply, "v", "s", "");
}

void appendAnswer(sd_bus_message* reply, sd_bus_message* call, const FakeObject& object, std::string_view member) {
  if (member == "GetRole") sd_bus_message_append(reply, "u", object.role);
  if (member == "GetRoleName") sd_bus_message_append(reply, "s", object.roleName.c_str());
  if (member == "GetState") sd_bus_message_append(reply, "au", 2, object.states, 0U);
  if (member == "GetText") sd_bus_message_append(reply, "s", object.text.c_str());
  if (member == "GetExtents") {
    std::uint32_t coordinates = 0;
    sd_bus_message_read(call, "u", &coordinates);
    const auto [x, y, width, height] = coordinates == 0 && !object.knowsScreen ? Extents{} : object.extents;
    sd_bus_message_append(reply, "(iiii)", x, y, width, height);
  }
  if (member == "GetInterfaces") {
    sd_bus_message_open_container(reply, SD_BUS_TYPE_ARRAY, "s");
    for (const auto& name : object.interfaces) sd_bus_message_append(reply, "s", ("org.a11y.atspi." + name).c_str());
    sd_bus_message_close_container(reply);
  }
  if (member == "GetChildren") appendReferences(reply, object.children);
  if (member == "GetMatches") appendReferences(reply, object.matches);
  if (member == "GetChildAtIndex") {
    std::int32_t index = 0;
    sd_bus_message_read(call, "i", &index);
    appendReference(reply, object.children.at(static_cast<std::size_t>(index)));
  }
}

}  // namespace

FakePeer::FakePeer(std::map<std::string, FakeObject> objects) : objects_(std::move(objects)) {
  std::array<int, 2> ends{};
  socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends.data());
  thread_ = std::thread([this, end = ends[1]] { serve(end); });
  connection_ = busOn(ends[0], false);
  while (sd_bus_is_ready(connection_.get()) == 0) processBus(connection_.get(), std::chrono::seconds(1));
}

FakePeer::~FakePeer() {
  connection_ = nullptr;
  thread_.join();
}

int FakePeer::calls(const std::string& member, const std::string& path) const {
  const std::lock_guard lock(mutex_);
  const auto found = calls_.find(member);
  if (found == calls_.end()) return 0;
  int sum = 0;
  for (const auto& [calledPath, count] : found->second) sum += path.empty() || path == calledPath ? count : 0;
  return sum;
}

/// Ends when the other end is closed.
void FakePeer::serve(int descriptor) {
  const Bus bus = busOn(descriptor, true);
  sd_bus_add_filter(bus.get(), nullptr, &onMessage, this);
  while (processBus(bus.get(), std::chrono::seconds(1))) {
  }
}

int FakePeer::onMessage(sd_bus_message* call, void* userdata, sd_bus_error*) {
  auto& self = *static_cast<FakePeer*>(userdata);
  const std::string path = sd_bus_message_get_path(call) ? sd_bus_message_get_path(call) : "";
  std::string member = sd_bus_message_get_member(call) ? sd_bus_message_get_member(call) : "";
  const char* interface = nullptr;
  const char* property = nullptr;
  const bool isProperty = member == "Get" && sd_bus_message_read(call, "ss", &interface, &property) > 0;
  if (isProperty) member = property;
  {
    const std::lock_guard lock(self.mutex_);
    ++self.calls_[member][path];
  }
  const auto object = self.objects_.find(path);
  if (object == self.objects_.end() || object->second.failing.contains(member))
    return sd_bus_reply_method_errorf(call, SD_BUS_ERROR_FAILED, "failing");
  if (object->second.mute.contains(member)) return 1;
  sd_bus_message* reply = nullptr;
  sd_bus_message_new_method_return(call, &reply);
  if (isProperty)
    appendProperty(reply, object->second, member);
  else
    appendAnswer(reply, call, object->second, member);
  sd_bus_send(nullptr, reply, nullptr);
  sd_bus_message_unref(reply);
  return 1;
}

}  // namespace tavik::platform::atspi
