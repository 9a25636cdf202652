#include "platform/linux/x_property.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/linux/monitors.h"
#include "platform/linux/x_clients.h"

namespace tavik::platform::x11 {
namespace {

using Words = std::vector<std::uint32_t>;
using namespace std::string_literals;

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
  struct Row {
    const char* reason;
    PropertyValue property;
    std::string text;
  };
  const std::vector<Row> rows{
      {"no property", {}, ""},
      {"UTF-8 stays", value(kUTF8String, 8, "Gr\xC3\xBC\xC3\x9F"), "Grüß"},
      {"STRING is ISO 8859-1", value(XCB_ATOM_STRING, 8, "Gr\xFC\xDF"), "Grüß"},
      {"but many put UTF-8 there", value(XCB_ATOM_STRING, 8, "Gr\xC3\xBC\xC3\x9F"), "Grüß"},
      {"other bytes are replaced", value(kUTF8String, 8, "a\xFF\xC3"), "a\uFFFD\uFFFD"},
      {"ends at a NUL", value(kUTF8String, 8, "title\0rest"s), "title"},
      {"numbers are no text", value(kUTF8String, 32, "abcd"), ""},
      {"the limit may cut a character", value(kUTF8String, 8, "a\xE2\x82", true), "a"},
  };
  for (const auto& [reason, property, text] : rows) EXPECT_EQ(textOf(property), text) << reason;
}

TEST(XProperty, WMClassMayLackItsSeparators) {
  struct Row {
    std::string bytes, instance, className;
  };
  const std::vector<Row> rows{{"xterm\0XTerm\0"s, "xterm", "XTerm"},
                              {"xterm\0XTerm"s, "xterm", "XTerm"},
                              {"xterm", "xterm", ""},
                              {"\0XTerm\0"s, "", "XTerm"},
                              {"", "", ""}};
  for (const auto& [bytes, instance, className] : rows) {
    const auto parts = wmClass(value(XCB_ATOM_STRING, 8, bytes));
    EXPECT_EQ(parts.instance, instance);
    EXPECT_EQ(parts.className, className);
  }
}

TEST(XProperty, NumbersNeedTheirTypeAndFormat) {
  struct Row {
    const char* reason;
    PropertyValue property;
    Words words;
  };
  const std::vector<Row> rows{
      {"as it should be", value(XCB_ATOM_CARDINAL, 32, bytesOf({7, 8})), {7, 8}},
      {"a process identifier of 8 bits", value(XCB_ATOM_CARDINAL, 8, "\x01\x02\x03\x04"), {}},
      {"of another type", value(XCB_ATOM_WINDOW, 32, bytesOf({7})), {}},
      {"half an item", value(XCB_ATOM_CARDINAL, 32, bytesOf({7}) + "ab"), {7}},
      {"empty", value(XCB_ATOM_CARDINAL, 32, ""), {}},
  };
  for (const auto& [reason, property, expected] : rows) {
    EXPECT_EQ(words(property, XCB_ATOM_CARDINAL), expected) << reason;
    EXPECT_EQ(firstWord(property, XCB_ATOM_CARDINAL).has_value(), !expected.empty()) << reason;
  }
}

TEST(XClients, ListsWhatFitsIntoTheReply) {
  struct Row {
    const char* reason;
    Words words;
    std::vector<std::int32_t> processIDs;
  };
  constexpr std::uint32_t process = 2, resource = 1, base = 0x200000;
  const std::vector<Row> rows{
      {"two processes", {base, process, 4, 77, 2 * base, process, 4, 78}, {77, 78}},
      {"a client of another machine has no value", {base, process, 0, 2 * base, process, 4, 78}, {78}},
      {"identifiers of another kind are skipped", {base, resource, 0, base, process, 4, 77}, {77}},
      {"a length beyond the end", {base, process, 4, 77, base, process, 0xFFFFFFFC, 78}, {77}},
      {"a length a little beyond the end", {base, process, 8, 77}, {}},
      {"cut short", {base, process}, {}},
      {"no process has such a number", {base, process, 4, 0x80000000, base, process, 4, 0}, {}},
  };
  for (const auto& [reason, words, expected] : rows) {
    std::vector<std::int32_t> processIDs;
    for (const auto& client : clientsOfReply(words)) processIDs.push_back(client.processID);
    EXPECT_EQ(processIDs, expected) << reason;
  }
}

TEST(XClients, OwnTheWindowsWithTheirBase) {
  const std::vector<XClient> clients{{.resourceBase = 0x200000, .processID = 77},
                                     {.resourceBase = 0x400000, .processID = 78}};
  EXPECT_EQ(processOfWindow(clients, 0x1FFFFF, 0x400003), 78);
  EXPECT_EQ(processOfWindow(clients, 0x1FFFFF, 0x600003), 0);
}

TEST(ScaleFactor, ComesFromTheResources) {
  struct Row {
    const char* reason;
    std::string resources;
    double factor;
  };
  const std::vector<Row> rows{
      {"twice the resolution", "Xft.antialias: 1\nXft.dpi:\t192\n", 2},
      {"need not be whole", "Xft.dpi: 120.0", 1.25},
      {"matches loosely, too", "*dpi: 144", 1.5},
      {"text of small screens is not shrunk", "Xft.dpi: 72", 1},
      {"nothing said", "XTerm*font: fixed", 1},
      {"no number", "Xft.dpi: large", 1},
      {"no finite number", "Xft.dpi: inf", 1},
      {"broken lines", "::::\n\\\n: \n!\nXft.dpi", 1},
  };
  for (const auto& [reason, resources, factor] : rows) EXPECT_EQ(scaleFactorOfResources(resources), factor) << reason;
}

TEST(ScaleFactor, OpensNoFileThatAResourceNames) {
  const auto path = testing::TempDir() + "scale-factor-resources";
  std::ofstream(path) << "Xft.dpi: 288\n";
  EXPECT_EQ(scaleFactorOfResources("Xft.dpi: 192\n#include \"" + path + "\"\n \\\n \t#include \"" + path + "\"\n"), 2);
  std::remove(path.c_str());
}

}  // namespace
}  // namespace tavik::platform::x11
