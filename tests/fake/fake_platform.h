#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/platform.h"

namespace tavik::fake {

template <class Value>
using Map = std::map<std::string, Value, std::less<>>;

platform::RunningApplicationRef application(
    std::int32_t processIdentifier, std::optional<std::string> bundleIdentifier,
    std::optional<std::string> localizedName,
    platform::ActivationPolicy activationPolicy = platform::ActivationPolicy::regular);

/// An element that has just these attributes (text is a std::string), and notes which are asked for.
struct FakeElement final : platform::UIElement {
  Map<platform::AttributeValue> attributes;
  std::vector<std::string> asked = {};

  explicit FakeElement(Map<platform::AttributeValue> values) : attributes(std::move(values)) {}
  std::optional<platform::AttributeValue> copyAttributeValue(std::string_view name) override;
};
using FakeElementRef = std::shared_ptr<FakeElement>;

FakeElementRef element(Map<platform::AttributeValue> attributes);

/// A picture without pixels. Encoded, it is the text "png 800x500", "jpeg 800x500 0.70" or, without a quality, "jpeg
/// 800x500 -"; one with a side below 0 cannot be encoded.
platform::ImageRef image(platform::PixelSize size);

/// Everything that a platform over it answers from, and everything that the program did to it. As constructed: nobody's
/// desktop, with every permission given.
struct FakeDesktop {
  Map<std::string> environment = {};
  Map<std::optional<std::string>> files = {};  ///< nothing where reading fails; one that is not there is not to be read
  Map<std::string> resources = {};             ///< paths by "name.type"
  std::optional<std::chrono::system_clock::time_point> date = std::chrono::system_clock::time_point();  ///< else throws

  std::string input = {};
  std::string output = {};
  std::string error = {};
  std::string lastResort = {};

  std::vector<platform::RunningApplicationRef> applications = {};
  platform::RunningApplicationRef frontmost = {};
  /// At each of these questions for the frontmost application, it and the last of `applications` change places.
  std::set<int> switchesAt = {};
  std::optional<platform::Screen> screen = {};

  bool isTrusted = true;
  std::map<std::int32_t, platform::UIElementRef> applicationElements = {};

  bool mayRecordScreen = true;
  std::optional<platform::ShareableContent> content = platform::ShareableContent{};  ///< nothing: an error
  std::optional<platform::PixelSize> imageSize = platform::PixelSize{};  ///< nothing: an error; 0x0: as asked for
  /// Calls the completion handlers.
  std::function<void(std::function<void()>)> deliver = [](const auto& handle) { handle(); };

  std::vector<std::string> calls = {};                 ///< what the platform was asked, in order
  std::optional<platform::ContentFilter> filter = {};  ///< of the last screenshot
};

/// A platform over `desktop`, which outlives it.
platform::Platform makePlatform(FakeDesktop& desktop);

}  // namespace tavik::fake
