#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
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

/// An application that answers from a thread of its own at the other end of a socket.
class FakePeer {
 public:
  explicit FakePeer(FakeObjects objects);
  ~FakePeer();

  /// The element of its object "/root", which takes over the connection.
  std::shared_ptr<Element> takeRoot(dbus::PatienceLimits limits = {});
  /// How often a method was called, or a property read, of one object, or of all.
  std::ptrdiff_t calls(const std::string& member, const std::string& path = {}) const;

 private:
  void serve(int descriptor);
  static int onMessage(sd_bus_message* call, void* self, sd_bus_error*);

  FakeObjects objects_;
  mutable std::mutex mutex_;
  std::vector<std::pair<std::string, std::string>> calls_;  ///< member and path
  dbus::Bus connection_;
  std::thread thread_;
};

}  // namespace tavik::platform::atspi
