#include "platform/linux/x11/xsettings.h"

#include <cstddef>

namespace tavik::platform::x11 {
namespace {

enum class SettingType : std::uint8_t { integer = 0, string = 1, color = 2 };

/// Reads the settings item by item. Reading beyond the end gives zeros and marks the reader as exhausted.
class SettingsReader {
 public:
  explicit SettingsReader(std::string_view bytes) : rest_(bytes) {}

  bool isExhausted() const { return isExhausted_; }
  void setMostSignificantFirst(bool value) { mostSignificantFirst_ = value; }

  std::uint32_t number(std::size_t size) {
    std::uint32_t value = 0;
    const auto bytes = take(size);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
      const auto byte = static_cast<unsigned char>(bytes[mostSignificantFirst_ ? i : bytes.size() - 1 - i]);
      value = value << 8 | byte;
    }
    return value;
  }

  /// With the padding after it.
  std::string_view text(std::size_t size) {
    const auto taken = take(size);
    take((4 - size % 4) % 4);
    return taken;
  }

 private:
  std::string_view take(std::size_t size) {
    isExhausted_ = isExhausted_ || size > rest_.size();
    if (isExhausted_) return {};
    const auto taken = rest_.substr(0, size);
    rest_.remove_prefix(size);
    return taken;
  }

  std::string_view rest_;
  bool mostSignificantFirst_ = false;
  bool isExhausted_ = false;
};

}  // namespace

std::optional<std::int32_t> integerSetting(std::string_view settings, std::string_view name) {
  SettingsReader reader(settings);
  reader.setMostSignificantFirst(reader.number(1) != 0);
  reader.number(3);  // unused
  reader.number(4);  // how often they have changed
  for (auto left = reader.number(4); left > 0 && !reader.isExhausted(); --left) {
    const auto type = static_cast<SettingType>(reader.number(1));
    reader.number(1);  // unused
    const auto found = reader.text(reader.number(2));
    reader.number(4);  // when it has changed
    if (type > SettingType::color) return std::nullopt;
    if (type == SettingType::string) reader.text(reader.number(4));
    if (type == SettingType::color) reader.text(8);
    const auto value = type == SettingType::integer ? reader.number(4) : 0;
    if (found == name && type == SettingType::integer && !reader.isExhausted()) return static_cast<std::int32_t>(value);
  }
  return std::nullopt;
}

}  // namespace tavik::platform::x11
