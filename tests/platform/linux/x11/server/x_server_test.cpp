#include <array>
#include <cstdint>
#include <cstring>
#include <string>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>

#include "platform/linux/x11/server/x_clients.h"
#include "platform/linux/x11/server/x_property.h"
#include "platform/linux/x11/server/x_watchdog.h"
#include "table.h"

namespace tavik::platform::x11 {
namespace {

using Words = std::vector<std::uint32_t>;
using namespace std::literals;

constexpr xcb_atom_t kUTF8String = 300;

std::string bytesOf(const Words& words) {
  std::string bytes(words.size() * sizeof(std::uint32_t), '\0');
  std::memcpy(bytes.data(), words.data(), bytes.size());
  return bytes;
}

PropertyValue value(xcb_atom_t type, std::uint8_t format, const std::string& bytes, bool isTruncated = false) {
  return {.type = type, .format = format, .isTruncated = isTruncated, .bytes = bytes};
}

TEST(XProperty, TextIsValidUTF8WhateverAnApplicationSends) {
  const Table<PropertyValue, std::string> cases{
      {"UTF-8 stays", value(kUTF8String, 8, "Gr\xC3\xBC\xC3\x9F"), "Grüß"},
      {"STRING is ISO 8859-1", value(XCB_ATOM_STRING, 8, "Gr\xFC\xDF"), "Grüß"},
      {"but many put UTF-8 there", value(XCB_ATOM_STRING, 8, "Gr\xC3\xBC\xC3\x9F"), "Grüß"},
      {"other bytes are replaced", value(kUTF8String, 8, "a\xFF\xC3"), "a\uFFFD\uFFFD"},
      {"ends at a NUL", value(kUTF8String, 8, "title\0rest"s), "title"},
      {"numbers are no text", value(kUTF8String, 32, "abcd"), ""},
      {"the limit may cut a character", value(kUTF8String, 8, "a\xE2\x82", true), "a"},
  };
  for (const auto& [reason, property, text] : cases) EXPECT_EQ(textOf(property), text) << reason;
}

TEST(XProperty, WMClassMayLackItsSeparators) {
  for (const auto& [bytes, both] : {std::pair{"xterm\0XTerm\0"s, "xterm|XTerm"},
                                    {"xterm\0XTerm"s, "xterm|XTerm"},
                                    {"xterm"s, "xterm|"},
                                    {"\0XTerm\0"s, "|XTerm"}}) {
    const auto parts = wmClass(value(XCB_ATOM_STRING, 8, bytes));
    EXPECT_EQ(parts.instance + "|" + parts.className, both);
  }
  EXPECT_EQ(wmClass(value(XCB_ATOM_STRING, 8, "xterm\0XTe"s, true)).instance, "xterm") << "cut after it";
}

TEST(XProperty, NumbersNeedTheirTypeAndFormat) {
  for (const auto& [reason, property, expected] : Table<PropertyValue, Words>{
           {"as it should be", value(XCB_ATOM_CARDINAL, 32, bytesOf({7, 8})), {7, 8}},
           {"a process identifier of 8 bits", value(XCB_ATOM_CARDINAL, 8, "\x01\x02\x03\x04"), {}},
           {"of another type", value(XCB_ATOM_WINDOW, 32, bytesOf({7})), {}},
           {"half an item", value(XCB_ATOM_CARDINAL, 32, bytesOf({7}) + "ab"), {7}},
       }) {
    EXPECT_EQ(words(property, XCB_ATOM_CARDINAL), expected) << reason;
    EXPECT_EQ(firstWord(property, XCB_ATOM_CARDINAL).has_value(), !expected.empty()) << reason;
  }
}

TEST(XClients, AreThoseThatFitIntoTheReplyAndOwnTheWindowsWithTheirBase) {
  constexpr std::uint32_t kProcess = 2, kResource = 1, kBase = 0x200000;
  for (const auto& [reason, words, expected] : Table<Words, std::vector<std::int32_t>>{
           {"two processes", {kBase, kProcess, 4, 77, 2 * kBase, kProcess, 4, 78}, {77, 78}},
           {"a client of another machine has no value", {kBase, kProcess, 0, 2 * kBase, kProcess, 4, 78}, {78}},
           {"another kind is skipped", {kBase, kResource, 4, 76, kBase, kProcess, 4, 77}, {77}},
           {"a length beyond the end", {kBase, kProcess, 4, 77, kBase, kProcess, 0xFFFFFFFC, 78}, {77}},
           {"a length a little beyond the end", {kBase, kProcess, 8, 77}, {}},
           {"cut short", {kBase, kProcess}, {}},
           {"no process has such a number", {kBase, kProcess, 4, 0x80000000, kBase, kProcess, 4, 0}, {}},
       }) {
    std::vector<std::int32_t> processIDs;
    for (const auto& client : clientsOfReply(words)) processIDs.push_back(client.processID);
    EXPECT_EQ(processIDs, expected) << reason;
  }
  const std::vector<XClient> clients{{0x200000, 77}, {0x400000, 78}};
  EXPECT_EQ(processOfWindow(clients, 0x1FFFFF, 0x400003), 78);
  EXPECT_EQ(processOfWindow(clients, 0x1FFFFF, 0x600003), 0);
}

TEST(XWatchdog, EndsAWaitWithoutLimitButNoneOfTheProgramsOwn) {
  std::array<int, 2> ends{};
  ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()), 0);
  char byte = 0;
  {
    XWatchdog watchdog;
    watchdog.start(ends[0], 1000ms);
    {
      const XWatchdog::Watch watch(watchdog);
      const XWatchdog::Pause pause(watchdog);
      std::this_thread::sleep_for(1200ms);
    }
    for (int wait = 0; wait < 3; ++wait) {
      const XWatchdog::Watch watch(watchdog);
      { const XWatchdog::Watch within(watchdog); }
      std::this_thread::sleep_for(250ms);
    }
    EXPECT_EQ(::send(ends[1], "x", 1, MSG_NOSIGNAL), 1) << "still connected";
    EXPECT_EQ(::read(ends[0], &byte, 1), 1);
    const XWatchdog::Watch watch(watchdog);
    const auto start = Clock::now();
    EXPECT_EQ(::read(ends[0], &byte, 1), 0) << "nobody sends anything";
    EXPECT_LT(Clock::now() - start, 600ms) << "all waits are taken together";
  }
  ::close(ends[0]);
  ::close(ends[1]);
}

}  // namespace
}  // namespace tavik::platform::x11
