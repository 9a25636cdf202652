#include "platform/linux/scale_factor.h"

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/linux/xsettings.h"

namespace tavik::platform::x11 {
namespace {

using namespace std::string_literals;

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
  for (const auto& [reason, resources, factor] : rows) EXPECT_EQ(scaleFactorOf(resources, ""), factor) << reason;
}

TEST(ScaleFactor, OpensNoFileThatAResourceNames) {
  const auto path = testing::TempDir() + "scale-factor-resources";
  std::ofstream(path) << "Xft.dpi: 288\n";
  EXPECT_EQ(scaleFactorOf("Xft.dpi: 192\n#include \"" + path + "\"\n \\\n \t#include \"" + path + "\"\n", ""), 2);
  std::remove(path.c_str());
}

/// Settings as a manager writes them.
class Settings {
 public:
  explicit Settings(bool mostSignificantFirst = false) : mostSignificantFirst_(mostSignificantFirst) {}

  Settings& integer(const std::string& name, std::int32_t value) {
    return begin(0, name).number(static_cast<std::uint32_t>(value), 4);
  }
  Settings& string(const std::string& name, const std::string& value) {
    return begin(1, name).number(static_cast<std::uint32_t>(value.size()), 4).padded(value);
  }
  Settings& color(const std::string& name) { return begin(2, name).number(~0U, 4).number(~0U, 4); }

  std::string bytes() const {
    Settings head(mostSignificantFirst_);
    head.number(mostSignificantFirst_ ? 0x01000000 : 0, 4).number(7, 4).number(count_, 4);
    return head.bytes_ + bytes_;
  }

 private:
  Settings& begin(std::uint32_t type, const std::string& name) {
    ++count_;
    return number(type, 1).number(0, 1).number(static_cast<std::uint32_t>(name.size()), 2).padded(name).number(3, 4);
  }
  Settings& number(std::uint32_t value, int size) {
    for (int i = 0; i < size; ++i) {
      const int shift = 8 * (mostSignificantFirst_ ? size - 1 - i : i);
      bytes_ += static_cast<char>(value >> shift & 0xFF);
    }
    return *this;
  }
  Settings& padded(const std::string& text) {
    bytes_ += text + std::string((4 - text.size() % 4) % 4, '\0');
    return *this;
  }

  bool mostSignificantFirst_;
  std::uint32_t count_ = 0;
  std::string bytes_ = {};
};

TEST(ScaleFactor, ComesFromTheSettingsManagerFirst) {
  struct Row {
    const char* reason;
    std::string settings;
    double factor;
  };
  const std::string scale = "Gdk/WindowScalingFactor", dpi = "Xft/DPI";
  const std::vector<Row> rows{
      {"windows of twice the size, in which text is", Settings().integer(scale, 2).integer(dpi, 192 * 1024).bytes(), 2},
      {"half as much again, by text alone", Settings().integer(scale, 1).integer(dpi, 144 * 1024).bytes(), 1.5},
      {"twice the size, with small text", Settings().integer(scale, 2).integer(dpi, 96 * 1024).bytes(), 2},
      {"unscaled, whatever the resources say", Settings().integer(scale, 1).bytes(), 1},
      {"no resolution is set", Settings().integer(dpi, -1).bytes(), 1},
      {"never below 1", Settings().integer(scale, -5).bytes(), 1},
      {"it says nothing about it: the resources", Settings().string("Net/ThemeName", "Default").bytes(), 3},
  };
  for (const auto& [reason, settings, factor] : rows) {
    EXPECT_EQ(scaleFactorOf("Xft.dpi: 288", settings), factor) << reason;
  }
}

TEST(XSettings, ReadsWhatIsWellFormed) {
  struct Row {
    const char* reason;
    std::string settings;
    std::optional<std::int32_t> value;
  };
  const std::string name = "Xft/DPI";
  const auto others = Settings().string("a", "12345").color("bc").string("empty", "").integer(name, 7).bytes();
  const auto wanted = Settings().integer(name, 7).bytes();
  auto unknownType = others;
  unknownType[12] = 3;
  auto endless = wanted;
  endless.replace(14, 2, "\xFF\xFF");
  std::vector<Row> rows{
      {"after others of all types", others, 7},
      {"most significant byte first", Settings(true).string("a", "12345").integer(name, -7).bytes(), -7},
      {"of another type", Settings().string(name, "7").bytes(), std::nullopt},
      {"another name that begins alike", Settings().integer(name + "x", 7).bytes(), std::nullopt},
      {"a type whose length nobody knows", unknownType, std::nullopt},
      {"a name longer than everything", endless, std::nullopt},
      {"more settings promised than there are", wanted.substr(0, 8) + "\xFF\xFF\xFF\xFF" + wanted.substr(12), 7},
      {"fewer promised", wanted.substr(0, 8) + "\0\0\0\0"s + wanted.substr(12), std::nullopt},
  };
  for (std::size_t length = 0; length < wanted.size(); ++length) {
    rows.push_back({"cut short", wanted.substr(0, length), std::nullopt});
  }
  for (const auto& [reason, settings, value] : rows) EXPECT_EQ(integerSetting(settings, name), value) << reason;
}

}  // namespace
}  // namespace tavik::platform::x11
