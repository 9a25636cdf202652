#include "fake/fake_platform.h"

#include <algorithm>
#include <stdexcept>
#include <thread>

namespace tavik::fake {
namespace {

using namespace tavik::platform;

struct FakeHost final : Host {
  const FakeDesktop& desktop;
  explicit FakeHost(const FakeDesktop& d) : desktop(d) {}

  std::optional<std::string> environmentVariable(std::string_view name) const override {
    const auto found = desktop.environment.find(name);
    return found != desktop.environment.end() ? std::optional(found->second) : std::nullopt;
  }
  std::string userName() const override { return desktop.login; }
  bool fileExists(const std::string& path) const override { return desktop.files.contains(path); }
  std::optional<std::string> readUTF8File(const std::string& path) const override {
    const auto found = desktop.files.find(path);
    return found != desktop.files.end() ? found->second : std::nullopt;
  }
  std::optional<std::string> pathForResource(std::string_view name, std::string_view type) const override {
    const auto found = desktop.resources.find(std::string(name) + "." + std::string(type));
    return found != desktop.resources.end() ? std::optional(found->second) : std::nullopt;
  }
  std::chrono::system_clock::time_point currentDate() const override { return desktop.date; }
};

struct FakeStreams final : StandardStreams {
  FakeDesktop& desktop;
  explicit FakeStreams(FakeDesktop& d) : desktop(d) {}

  std::string readInputToEnd() override { return desktop.input; }
  void writeOutput(std::string_view bytes) override { desktop.outputWrites.emplace_back(bytes); }
  void writeError(std::string_view bytes) override { desktop.error += bytes; }
};

struct FakeWorkspace final : Workspace {
  FakeDesktop& desktop;
  explicit FakeWorkspace(FakeDesktop& d) : desktop(d) {}

  std::vector<RunningApplicationRef> runningApplications() const override {
    ++desktop.calls.applicationQueries;
    return desktop.applications;
  }
  std::vector<RunningApplicationRef> runningApplicationsWithBundleIdentifier(
      std::string_view identifier) const override {
    ++desktop.calls.applicationQueries;
    auto matching = desktop.applications;
    std::erase_if(matching, [&](const auto& app) { return app->bundleIdentifier() != identifier; });
    return matching;
  }
  RunningApplicationRef frontmostApplication() const override { return desktop.frontmost; }
  std::optional<Screen> mainScreen() const override { return desktop.screen; }
};

struct FakeAccessibility final : Accessibility {
  FakeDesktop& desktop;
  explicit FakeAccessibility(FakeDesktop& d) : desktop(d) {}

  bool isProcessTrusted() const override {
    ++desktop.calls.isProcessTrusted;
    return desktop.isTrusted;
  }
  UIElementRef createApplication(std::int32_t processIdentifier) const override {
    const auto found = desktop.applicationElements.find(processIdentifier);
    return found != desktop.applicationElements.end() ? found->second : element({});
  }
  void prefetch(const UIElementRef&, int, int) const override { ++desktop.calls.prefetch; }
};

struct FakeScreenCapture final : ScreenCapture {
  FakeDesktop& desktop;
  explicit FakeScreenCapture(FakeDesktop& d) : desktop(d) {}

  bool preflightScreenCaptureAccess() const override {
    ++desktop.calls.preflight;
    return desktop.mayRecordScreen;
  }

  void getShareableContent(const ShareableContentOptions& options,
                           CompletionHandler<ShareableContent> handler) const override {
    ++desktop.calls.shareableContent;
    const bool asDocumented = !options.excludingDesktopWindows && options.onScreenWindowsOnly;
    if (!desktop.content || !asDocumented) return deliver<ShareableContent>(PlatformError{"no content"}, handler);
    deliver<ShareableContent>(*desktop.content, handler);
  }

  void captureImage(const ContentFilter& filter, const StreamConfiguration& configuration,
                    CompletionHandler<ImageRef> handler) const override {
    ++desktop.calls.captureImage;
    desktop.filter = filter;
    desktop.configuration = configuration;
    if (!desktop.image) return deliver<ImageRef>(PlatformError{"no image"}, handler);
    const bool hasSize = desktop.image->size() != PixelSize{};
    const PixelSize wanted{.width = configuration.width, .height = configuration.height};
    deliver<ImageRef>(hasSize ? desktop.image : std::make_shared<FakeImage>(wanted), handler);
  }

  template <class Value>
  void deliver(const std::variant<Value, PlatformError>& outcome, const CompletionHandler<Value>& handler) const {
    switch (desktop.delivery) {
      case Delivery::atOnce:
        return handler(outcome);
      case Delivery::fromAnotherThread:
        return std::thread([=] { handler(outcome); }).detach();
      case Delivery::twice:
        handler(outcome);
        return handler(outcome);
      case Delivery::never:
        return;
      case Delivery::byThrowing:
        throw std::runtime_error("a backend that breaks its promise");
    }
  }
};

}  // namespace

std::optional<AttributeValue> FakeElement::copyAttributeValue(std::string_view name) const {
  asked.emplace_back(name);
  const auto found = attributes.find(name);
  return found != attributes.end() ? std::optional(found->second) : std::nullopt;
}

FakeElementRef element(std::map<std::string, AttributeValue, std::less<>> attributes) {
  auto result = std::make_shared<FakeElement>();
  result->attributes = std::move(attributes);
  return result;
}

ImageRef FakeImage::resized(PixelSize size) const {
  if (size.width < 1 || size.height < 1) return nullptr;
  return std::make_shared<FakeImage>(size, canEncode);
}

std::optional<std::vector<std::byte>> FakeImage::encoded(ImageType type, std::optional<double> quality) const {
  if (!canEncode) return std::nullopt;
  const auto size = std::to_string(pixels.width) + "x" + std::to_string(pixels.height);
  const auto text = type == ImageType::png
                        ? "png " + size
                        : "jpeg " + size + " " + (quality ? std::to_string(*quality).substr(0, 4) : "-");
  std::vector<std::byte> bytes;
  std::transform(text.begin(), text.end(), std::back_inserter(bytes), [](char c) { return static_cast<std::byte>(c); });
  return bytes;
}

std::string FakeDesktop::output() const {
  std::string all;
  for (const auto& write : outputWrites) all += write;
  return all;
}

Platform makePlatform(FakeDesktop& desktop) {
  return {.host = std::make_unique<FakeHost>(desktop),
          .streams = std::make_unique<FakeStreams>(desktop),
          .workspace = std::make_unique<FakeWorkspace>(desktop),
          .accessibility = std::make_unique<FakeAccessibility>(desktop),
          .screenCapture = std::make_unique<FakeScreenCapture>(desktop)};
}

}  // namespace tavik::fake
