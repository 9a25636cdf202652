#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/platform.h"

namespace tavik::fake {

struct FakeApplication final : platform::RunningApplication {
  std::int32_t pid = 0;
  std::optional<std::string> identifier = {};
  std::optional<std::string> name = {};
  platform::ActivationPolicy policy = platform::ActivationPolicy::regular;

  FakeApplication(std::int32_t processID, std::optional<std::string> bundleIdentifier,
                  std::optional<std::string> localizedName,
                  platform::ActivationPolicy activation = platform::ActivationPolicy::regular)
      : pid(processID), identifier(std::move(bundleIdentifier)), name(std::move(localizedName)), policy(activation) {}

  std::int32_t processIdentifier() const override { return pid; }
  std::optional<std::string> bundleIdentifier() const override { return identifier; }
  std::optional<std::string> localizedName() const override { return name; }
  platform::ActivationPolicy activationPolicy() const override { return policy; }
};

/// An element that has just these attributes, and notes which are asked for.
struct FakeElement final : platform::UIElement {
  std::map<std::string, platform::AttributeValue, std::less<>> attributes = {};
  mutable std::vector<std::string> asked = {};

  std::optional<platform::AttributeValue> copyAttributeValue(std::string_view name) const override;
};
using FakeElementRef = std::shared_ptr<FakeElement>;

/// An element with these attributes; text given as a literal is a string value.
FakeElementRef element(std::map<std::string, platform::AttributeValue, std::less<>> attributes);

/// A picture without pixels. Encoded, it is the text "png 800x500" or "jpeg 800x500 0.7" (without a quality: "jpeg
/// 800x500 -").
struct FakeImage final : platform::Image {
  platform::PixelSize pixels = {};
  bool canEncode = true;

  explicit FakeImage(platform::PixelSize size, bool encodes = true) : pixels(size), canEncode(encodes) {}
  platform::PixelSize size() const override { return pixels; }
  platform::ImageRef resized(platform::PixelSize size) const override;
  std::optional<std::vector<std::byte>> encoded(platform::ImageType type, std::optional<double> quality) const override;
};

/// How completion handlers are called.
enum class Delivery : std::uint8_t { atOnce, fromAnotherThread, twice, never, byThrowing };

/// How often the platform was asked.
struct Calls {
  int isProcessTrusted = 0;
  int preflight = 0;
  int shareableContent = 0;
  int captureImage = 0;
  int applicationQueries = 0;
  int prefetch = 0;
};

/// Everything that a platform over it answers from, and everything that the program did to it. As constructed: nobody's
/// desktop, with every permission given.
struct FakeDesktop {
  std::map<std::string, std::string, std::less<>> environment = {};
  std::map<std::string, std::optional<std::string>, std::less<>> files = {};  ///< nothing where reading fails
  std::map<std::string, std::string, std::less<>> resources = {};             ///< paths by "name.type"
  std::string login = "ada";
  std::chrono::system_clock::time_point date = {};

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
  platform::ImageRef image =
      {};  ///< null: an error. Otherwise delivered as it is, or, when it has no size, at the size asked for
  Delivery delivery = Delivery::atOnce;

  Calls calls = {};
  std::optional<platform::ContentFilter> filter = {};  ///< of the last screenshot
  std::optional<platform::StreamConfiguration> configuration = {};

  std::string output() const;
};

/// A platform over `desktop`, which outlives it.
platform::Platform makePlatform(FakeDesktop& desktop);

}  // namespace tavik::fake
