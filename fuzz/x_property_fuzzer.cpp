#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <fuzzer/FuzzedDataProvider.h>
#include <string>

#include "platform/linux/x11/server/x_property.h"
#include "platform/linux/x11/xsettings.h"
#include "text/utf8.h"

using namespace tavik::platform::x11;

/// Texts are valid UTF-8 without a NUL, numbers no more than their bytes; a setting is the same with bytes behind it.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider dice(data, size);
  PropertyValue value{.type = dice.PickValueInArray<xcb_atom_t>({XCB_ATOM_STRING, XCB_ATOM_CARDINAL, 300}),
                      .format = dice.PickValueInArray<std::uint8_t>({8, 16, 32}),
                      .isTruncated = dice.ConsumeBool()};
  value.bytes = dice.ConsumeRemainingBytesAsString();
  const auto [instance, className] = wmClass(value);
  for (const auto& text : {textOf(value), instance, className}) {
    if (!tavik::text::isValidUTF8(text) || text.find('\0') != std::string::npos) std::abort();
  }
  if (words(value, XCB_ATOM_CARDINAL).size() * 4 > value.bytes.size()) std::abort();
  const auto setting = integerSetting(value.bytes, "Xft/DPI");
  if (setting && integerSetting(value.bytes + "more", "Xft/DPI") != setting) std::abort();
  return 0;
}
