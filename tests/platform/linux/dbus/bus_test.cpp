#include "platform/linux/dbus/bus.h"

#include <chrono>
#include <string_view>
#include <tuple>

#include <gtest/gtest.h>

namespace tavik::platform::dbus {
namespace {

TEST(LocalAddresses, LeaveOutWhatStartsAProcessOrAsksANameServer) {
  using Case = std::tuple<std::string_view, std::string_view, std::string_view>;
  for (const auto& [reason, list, expected] : {
           Case{"the usual address", "unix:path=/run/bus,guid=0a", "unix:path=/run/bus,guid=0a"},
           Case{"all local ones in their order", "unix:path=/a;unix:abstract=b", "unix:path=/a;unix:abstract=b"},
           Case{"starts a program", "unixexec:path=/bin/true", ""},
           Case{"resolves a host name", "tcp:host=example.org,port=1;unix:path=/a", "unix:path=/a"},
           Case{"enters a container", "x-machine-unix:machine=m", ""},
           Case{"empty entries", ";;unix:path=/a;", "unix:path=/a"},
           Case{"no address at all", "unix", ""},
           Case{"nothing", "", ""},
       }) {
    EXPECT_EQ(localAddresses(list), expected) << reason;
  }
}

TEST(OpenBus, FailsForAddressesThatLeadNowhere) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
  for (const std::string_view list :
       {"", "unix:", "unix:path=%zz", "unix:path=/nonexistent/bus", "unix:path=/a,path=/b"}) {
    EXPECT_EQ(openBus(list, deadline), nullptr) << list;
  }
}

}  // namespace
}  // namespace tavik::platform::dbus
