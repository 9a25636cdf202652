#include "platform/linux/merged_desktop.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <utility>

#include "platform/linux/applications/process_identity.h"

namespace tavik::platform {
namespace {

/// True where one of these is the same process.
bool contains(const std::vector<RunningApplicationRef>& applications, const RunningApplicationRef& application) {
  return std::ranges::any_of(applications, [&application](const auto& other) {
    return other->processIdentifier() == application->processIdentifier();
  });
}

std::int32_t processOf(const Window& window) {
  return window.owningApplication ? window.owningApplication->processID : 0;
}

/// Adds the windows of processes without a native one: a compositor may know an X server's windows as well as its own.
void addNew(std::vector<Window>& windows, const std::vector<Window>& ofX11) {
  std::set<std::int32_t> known;
  for (const auto& window : windows) known.insert(processOf(window));
  std::ranges::copy_if(ofX11, std::back_inserter(windows), [&known](const Window& window) {
    const auto process = processOf(window);
    return process == 0 || !known.contains(process);
  });
}

/// One process that both sources know.
class MergedApplication final : public RunningApplication {
 public:
  MergedApplication(RunningApplicationRef native, RunningApplicationRef x11)
      : native_(std::move(native)), x11_(std::move(x11)) {}

  std::int32_t processIdentifier() override { return native_->processIdentifier(); }
  std::optional<std::string> bundleIdentifier() override {
    auto identifier = native_->bundleIdentifier();
    return identifier ? identifier : x11_->bundleIdentifier();
  }
  std::vector<std::string> bundleIdentifiers() override {
    auto identifiers = native_->bundleIdentifiers();
    applications::addNew(identifiers, x11_->bundleIdentifiers());
    return identifiers;
  }
  std::optional<std::string> localizedName() override {
    auto name = native_->localizedName();
    return name ? name : x11_->localizedName();
  }
  ActivationPolicy activationPolicy() override {
    return std::min(native_->activationPolicy(), x11_->activationPolicy());
  }

 private:
  RunningApplicationRef native_;
  RunningApplicationRef x11_;
};

class MergedWorkspace final : public Workspace {
 public:
  explicit MergedWorkspace(NativeAndX11<Workspace> sources) : sources_(std::move(sources)) {}

  std::vector<RunningApplicationRef> runningApplications() override {
    auto ofX11 = sources_.x11->runningApplications();
    if (!sources_.hasNative()) return ofX11;
    auto applications = sources_.native->runningApplications();
    for (auto& application : ofX11) {
      const auto known = std::ranges::find_if(applications, [&application](const auto& other) {
        return other->processIdentifier() == application->processIdentifier();
      });
      if (known == applications.end()) {
        applications.push_back(std::move(application));
      } else {
        *known = std::make_shared<MergedApplication>(*known, std::move(application));
      }
    }
    return applications;
  }

  std::vector<RunningApplicationRef> runningApplicationsWithBundleIdentifier(std::string_view identifier) override {
    auto found = sources_.x11->runningApplicationsWithBundleIdentifier(identifier);
    if (!sources_.hasNative()) return found;
    const auto native = sources_.native->runningApplicationsWithBundleIdentifier(identifier);
    found.insert(found.begin(), native.begin(), native.end());
    std::vector<RunningApplicationRef> merged;
    for (const auto& application : runningApplications()) {
      if (contains(found, application)) merged.push_back(application);
    }
    return merged;
  }

  RunningApplicationRef frontmostApplication() override {
    if (!sources_.hasNative()) return sources_.x11->frontmostApplication();
    const auto frontmost = sources_.native->frontmostApplication();
    if (!frontmost) return nullptr;
    const auto all = runningApplications();
    const auto merged = std::ranges::find_if(all, [&frontmost](const auto& application) {
      return application->processIdentifier() == frontmost->processIdentifier();
    });
    return merged != all.end() ? *merged : frontmost;
  }

  std::optional<Screen> mainScreen() override {
    return sources_.hasNative() ? sources_.native->mainScreen() : sources_.x11->mainScreen();
  }

 private:
  NativeAndX11<Workspace> sources_;
};

class MergedScreenCapture final : public ScreenCapture {
 public:
  MergedScreenCapture(NativeAndX11<ScreenCapture> sources, std::function<bool(const Window&)> isNative,
                      std::function<bool()> isNativeAlone)
      : sources_(std::move(sources)), isNative_(std::move(isNative)), isNativeAlone_(std::move(isNativeAlone)) {}

  bool preflightScreenCaptureAccess() override {
    return (sources_.hasNative() && sources_.native->preflightScreenCaptureAccess()) ||
           (!isNativeAlone_() && sources_.x11->preflightScreenCaptureAccess());
  }

  void getShareableContent(const ShareableContentOptions& options,
                           CompletionHandler<ShareableContent> completionHandler) override {
    if (!sources_.hasNative()) return sources_.x11->getShareableContent(options, std::move(completionHandler));
    sources_.native->getShareableContent(
        options, [this, options, completionHandler = std::move(completionHandler)](auto native) {
          auto* const content = std::get_if<ShareableContent>(&native);
          if (content == nullptr) return completionHandler(std::move(native));
          sources_.x11->getShareableContent(options, [content, &completionHandler](const auto& x11) {
            if (const auto* const more = std::get_if<ShareableContent>(&x11)) {
              addNew(content->windows, more->windows);
            }
            completionHandler(std::move(*content));
          });
        });
  }

  void captureImage(const ContentFilter& filter, const StreamConfiguration& configuration,
                    CompletionHandler<ImageRef> completionHandler) override {
    const bool isOfX11 = filter.includedWindow && !isNative_(*filter.includedWindow);
    auto& source = isOfX11 || !sources_.hasNative() ? *sources_.x11 : *sources_.native;
    source.captureImage(filter, configuration, std::move(completionHandler));
  }

 private:
  NativeAndX11<ScreenCapture> sources_;
  std::function<bool(const Window&)> isNative_;
  std::function<bool()> isNativeAlone_;
};

}  // namespace

std::unique_ptr<Workspace> mergedWorkspace(NativeAndX11<Workspace> sources) {
  return std::make_unique<MergedWorkspace>(std::move(sources));
}

std::unique_ptr<ScreenCapture> mergedScreenCapture(NativeAndX11<ScreenCapture> sources,
                                                   std::function<bool(const Window&)> isNative,
                                                   std::function<bool()> isNativeAlone) {
  return std::make_unique<MergedScreenCapture>(std::move(sources), std::move(isNative), std::move(isNativeAlone));
}

}  // namespace tavik::platform
