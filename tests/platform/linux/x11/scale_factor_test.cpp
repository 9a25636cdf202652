#include "platform/linux/x11/scale_factor.h"

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "platform/linux/x11/xsettings.h"

namespace tavik::platform::x11 {
namespace {

using namespace std::string_literals;

TEST(ScaleFactor, ComesFromTheResources) {
  using Row = std::tuple<const char*, std::string, double>;
  const std::vector<Row> rows{
      {"twice the resolution", "Xft.antialias: 1\nXft.dpi:\t192\n", 2},
      {"matches loosely, too", "*dpi: 144", 1.5},
      {"text of small screens is not shrunk", "Xft.dpi: 72", 1},
      {"no number", "Xft.dpi: large", 1},
      {"no finite number", "Xft.dpi: inf", 1},
      {"broken lines", "::::\n\\\n: \n!\nXft.dpi", 1},
  };
  for (const auto& [reason, resources, factor] : rows) EXPECT_EQ(scaleFactorOf(resources, ""), factor) << reason;
}

TEST(ScaleFactor, OpensNoFileThatAResourceNames) {
  const auto path = testing::TempDir() + "scale-factor-resources";
  std::ofstream(path) << "Xft.dpi: 288\n";
  EXPECT_EQ(scaleFactorOf("Xft.dpi: 192\n#include \"" + path + "\"\n \\\n \t#include \"" + path + "\"\n", ""), 2);
  std::remove(path.c_str());
}

/// The bytes of a number, the least significant one first.
std::string number(std::uint32_t value, std::size_t size = 4) {
  std::string bytes;
  for (; bytes.size() < size; value >>= 8U) bytes += static_cast<char>(value & 0xFFU);
  return bytes;
}

std::string padded(const std::string& text) { return text + std::string((4 - text.size() % 4) % 4, '\0'); }

/// One setting as a manager writes it: an integer has type 0, a string 1, a colour 2.
std::string setting(std::uint32_t type, const std::string& name, const std::string& value) {
  return number(type, 2) + number(static_cast<std::uint32_t>(name.size()), 2) + padded(name) + number(3) + value;
}

std::string integer(const std::string& name, std::int32_t value) {
  return setting(0, name, number(static_cast<std::uint32_t>(value)));
}

std::string string(const std::string& name, const std::string& value) {
  return setting(1, name, number(static_cast<std::uint32_t>(value.size())) + padded(value));
}

/// A whole property, which promises so many settings.
std::string settings(std::uint32_t count, const std::string& items) {
  return number(0) + number(7) + number(count) + items;
}

TEST(ScaleFactor, ComesFromTheSettingsManagerFirst) {
  using Row = std::tuple<const char*, std::string, double>;
  const auto scale = [](std::int32_t factor) { return integer("Gdk/WindowScalingFactor", factor); };
  const auto dpi = [](std::int32_t dots) { return integer("Xft/DPI", dots * 1024); };
  const std::vector<Row> rows{
      {"windows of twice the size, in which text is", settings(2, scale(2) + dpi(192)), 2},
      {"half as much again, by text alone", settings(2, scale(1) + dpi(144)), 1.5},
      {"twice the size, with small text", settings(2, scale(2) + dpi(96)), 2},
      {"unscaled, whatever the resources say", settings(1, scale(1)), 1},
      {"no resolution is set", settings(1, dpi(-1)), 1},
      {"it says nothing about it: the resources", settings(1, string("Net/ThemeName", "Default")), 3},
  };
  for (const auto& [reason, bytes, factor] : rows) EXPECT_EQ(scaleFactorOf("Xft.dpi: 288", bytes), factor) << reason;
}

TEST(XSettings, ReadsWhatIsWellFormed) {
  using Row = std::tuple<const char*, std::string, std::optional<std::int32_t>>;
  const auto name = "Xft/DPI"s, wanted = integer(name, 7), none = ""s;
  const auto others = string("a", "12345") + setting(2, "bc", "colours.") + string("empty", none) + wanted;
  // Byte order, how often they have changed, how many there are; type, length and name, when it has changed, value.
  const auto bigEndian = "\1\0\0\0\0\0\0\7\0\0\0\1\0\0\0\7Xft/DPI\0\0\0\0\3\xFF\xFF\xFF\xF9"s;
  auto endless = wanted;
  endless.replace(2, 2, "\xFF\xFF");
  std::vector<Row> rows{
      {"after others of all types", settings(4, others), 7},
      {"most significant byte first", bigEndian, -7},
      {"of another type", settings(1, string(name, "7")), {}},
      {"another name that begins alike", settings(1, integer(name + "x", 7)), {}},
      {"a type whose length nobody knows", settings(2, setting(3, "a", none) + wanted), {}},
      {"a name longer than everything", settings(1, endless), {}},
      {"more settings promised than there are", settings(~0U, wanted), 7},
  };
  const auto whole = settings(1, wanted);
  for (std::size_t length = 0; length < whole.size(); ++length) rows.push_back({"cut", whole.substr(0, length), {}});
  for (const auto& [reason, bytes, value] : rows) EXPECT_EQ(integerSetting(bytes, name), value) << reason;
}

}  // namespace
}  // namespace tavik::platform::x11
