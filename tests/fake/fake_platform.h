#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/platform.h"

namespace tavik::fake {

platform::RunningApplicationRef application(
    std::int32_t processIdentifier, std::optional<std::string> bundleIdentifier,
    std::optional<std::string> localizedName,
    platform::ActivationPolicy activationPolicy = platform::ActivationPolicy::regular);

/// An element that has just these attributes, and notes which are asked for.
struct FakeElement final : platform::UIElement {
  std::map<std::string, platform::AttributeValue, std::less<>> attributes = {};
  mutable std::vector<std::string> asked = {};

  std::optional<platform::AttributeValue> copyAttributeValue(std::string_view name) const override;
};
using FakeElementRef = std::shared_ptr<FakeElement>;

/// An element with these attributes; text is given as a std::string.
FakeElementRef element(std::map<std::string, platform::AttributeValue, std::less<>> attributes);

/// A picture without pixels. Encoded, it is the text "png 800x500", "jpeg 800x500 0.70" or, without a quality, "jpeg
/// 800x500 -".
platform::ImageRef image(platform::PixelSize size, bool canEncode = true);

/// How completion handlers are called.
enum class Delivery : std::uint8_t { atOnce, fromAnotherThread, twice, never, byThrowing };

/// How often the platform was asked.
struct Calls {
  int isProcessTrusted = 0, preflight = 0, shareableContent = 0, captureImage = 0, applicationQueries = 0, prefetch = 0;
  bool operator==(const Calls&) const = default;
};

/// Everything that a platform over it answers from, and everything that the program did to it. As constructed: nobody's
/// desktop, with every permission given.
struct FakeDesktop {
  std::map<std::string, std::string, std::less<>> environment = {};
  std::map<std::string, std::optional<std::string>, std::less<>> files = {};  ///< nothing where reading fails
  std::map<std::string, std::string, std::less<>> resources = {};             ///< paths by "name.type"
  std::optional<std::chrono::system_clock::time_point> date = std::chrono::system_clock::time_point();  ///< else throws

  std::string input = {};
  std::vector<std::string> outputWrites = {};
  std::string error = {};

  std::vector<platform::RunningApplicationRef> applications = {};
  platform::RunningApplicationRef frontmost = {};
  std::optional<platform::Screen> screen = {};

  bool isTrusted = true;
  std::map<std::int32_t, platform::UIElementRef> applicationElements = {};

  bool mayRecordScreen = true;
  std::optional<platform::ShareableContent> content = platform::ShareableContent{};  ///< nothing: an error
  platform::ImageRef image = {};  ///< null: an error; without size: delivered at the size asked for
  Delivery delivery = Delivery::atOnce;

  Calls calls = {};
  std::optional<platform::ContentFilter> filter = {};  ///< of the last screenshot

  std::string output() const;
};

/// A platform over `desktop`, which outlives it.
platform::Platform makePlatform(FakeDesktop& desktop);

}  // namespace tavik::fake
