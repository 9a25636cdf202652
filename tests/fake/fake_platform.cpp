#include "fake/fake_platform.h"

#include <algorithm>

namespace tavik::fake {
namespace {

using namespace tavik::platform;

using Text = std::optional<std::string>;
using Applications = std::vector<RunningApplicationRef>;

template <class Values>
std::optional<typename Values::mapped_type> lookUp(const Values& values, const auto& key) {
  const auto found = values.find(key);
  return found != values.end() ? std::optional(found->second) : std::nullopt;
}

struct FakeApplication final : RunningApplication {
  std::int32_t pid;
  Text identifier, name;
  ActivationPolicy policy;

  FakeApplication(std::int32_t processID, Text bundleIdentifier, Text localized, ActivationPolicy activation)
      : pid(processID), identifier(std::move(bundleIdentifier)), name(std::move(localized)), policy(activation) {}

  std::int32_t processIdentifier() override { return pid; }
  Text bundleIdentifier() override { return identifier; }
  std::vector<std::string> bundleIdentifiers() override {
    return std::vector(identifier ? 1U : 0U, identifier.value_or(""));
  }
  Text localizedName() override { return name; }
  ActivationPolicy activationPolicy() override { return policy; }
};

struct FakeImage final : Image {
  PixelSize pixels;
  explicit FakeImage(PixelSize size) : pixels(size) {}

  PixelSize size() const override { return pixels; }
  ImageRef resized(PixelSize size) const override { return size.width < 1 || size.height < 1 ? nullptr : image(size); }
  std::optional<std::vector<std::byte>> encoded(ImageType type, std::optional<double> quality) const override {
    if (pixels.width < 0 || pixels.height < 0) return std::nullopt;
    std::string text = type == ImageType::png ? "png " : "jpeg ";
    text += std::to_string(pixels.width) + "x" + std::to_string(pixels.height);
    if (type == ImageType::jpeg) text += quality ? ' ' + std::to_string(*quality).substr(0, 4) : " -";
    const auto* const bytes = reinterpret_cast<const std::byte*>(text.data());
    return std::vector(bytes, bytes + text.size());
  }
};

template <class Interface>
struct Fake : Interface {
  FakeDesktop& desktop;
  explicit Fake(FakeDesktop& d) : desktop(d) {}
  void note(std::string call) const { desktop.calls.push_back(std::move(call)); }
  template <class Value>
  Value noted(const char* call, Value value) const {
    return note(call), value;
  }
};

struct FakeHost final : Fake<Host> {
  using Fake::Fake;
  Text environmentVariable(std::string_view name) const override {
    return noted("environmentVariable", lookUp(desktop.environment, name));
  }
  std::string userName() const override { return "ada"; }
  bool fileExists(const std::string& path) const override { return desktop.files.contains(path); }
  Text readUTF8File(const std::string& path) const override { return desktop.files.at(path); }
  Text pathForResource(std::string_view name, std::string_view type) const override {
    return lookUp(desktop.resources, std::string(name) + "." + std::string(type));
  }
  std::chrono::system_clock::time_point currentDate() const override {
    return noted("currentDate", desktop.date.value());
  }
};

struct FakeStreams final : Fake<StandardStreams> {
  using Fake::Fake;
  std::string readInputToEnd() override { return noted("readInputToEnd", desktop.input); }
  void writeOutput(std::string_view bytes) override { desktop.output += bytes; }
  void writeError(std::string_view bytes) override { desktop.error += bytes; }
  void setLastResort(std::string_view output) override { desktop.lastResort = output; }
};

struct FakeWorkspace final : Fake<Workspace> {
  using Fake::Fake;
  Applications runningApplications() override { return noted("runningApplications", desktop.applications); }
  Applications runningApplicationsWithBundleIdentifier(std::string_view identifier) override {
    note("runningApplicationsWithBundleIdentifier");
    auto matching = desktop.applications;
    std::erase_if(matching, [&](const auto& app) { return app->bundleIdentifier() != identifier; });
    return matching;
  }
  RunningApplicationRef frontmostApplication() override {
    note("frontmostApplication");
    const auto count = static_cast<int>(std::ranges::count(desktop.calls, "frontmostApplication"));
    if (desktop.switchesAt.contains(count)) desktop.frontmost.swap(desktop.applications.back());
    return desktop.frontmost;
  }
  std::optional<Screen> mainScreen() override { return noted("mainScreen", desktop.screen); }
};

struct FakeAccessibility final : Fake<Accessibility> {
  using Fake::Fake;
  bool isProcessTrusted() override { return noted("isProcessTrusted", desktop.isTrusted); }
  UIElementRef createApplication(std::int32_t processIdentifier) override {
    note("createApplication");
    return lookUp(desktop.applicationElements, processIdentifier).value_or(element({}));
  }
  void prefetch(const UIElementRef&, const WalkPlan& plan) override {
    note("prefetch " + std::to_string(plan.maxDepth));
  }
};

struct FakeScreenCapture final : Fake<ScreenCapture> {
  using Fake::Fake;
  bool preflightScreenCaptureAccess() override { return noted("preflight", desktop.mayRecordScreen); }
  void getShareableContent(const ShareableContentOptions& options,
                           CompletionHandler<ShareableContent> handler) override {
    note("shareableContent");
    std::variant<ShareableContent, PlatformError> outcome = PlatformError{"no content"};
    if (desktop.content && !options.excludingDesktopWindows && options.onScreenWindowsOnly) outcome = *desktop.content;
    desktop.deliver([=] { handler(outcome); });
  }
  void captureImage(const ContentFilter& filter, const StreamConfiguration& configuration,
                    CompletionHandler<ImageRef> handler) override {
    note("captureImage");
    desktop.filter = filter;
    const PixelSize asked{configuration.width, configuration.height};
    std::variant<ImageRef, PlatformError> outcome = PlatformError{"no image"};
    if (const auto& size = desktop.imageSize) outcome = image(*size == PixelSize{} ? asked : *size);
    desktop.deliver([=] { handler(outcome); });
  }
};

}  // namespace

RunningApplicationRef application(std::int32_t pid, Text identifier, Text name, ActivationPolicy policy) {
  return std::make_shared<FakeApplication>(pid, std::move(identifier), std::move(name), policy);
}

std::optional<AttributeValue> FakeElement::copyAttributeValue(std::string_view name) {
  asked.emplace_back(name);
  return lookUp(attributes, name);
}

FakeElementRef element(Map<AttributeValue> attributes) { return std::make_shared<FakeElement>(std::move(attributes)); }

ImageRef image(PixelSize size) { return std::make_shared<FakeImage>(size); }

Platform makePlatform(FakeDesktop& desktop) {
  return {.host = std::make_unique<FakeHost>(desktop),
          .streams = std::make_unique<FakeStreams>(desktop),
          .workspace = std::make_unique<FakeWorkspace>(desktop),
          .accessibility = std::make_unique<FakeAccessibility>(desktop),
          .screenCapture = std::make_unique<FakeScreenCapture>(desktop)};
}

}  // namespace tavik::fake
