// The program without its prefetch: each thing that the walk wants to know of an element is asked for when it is
// wanted, and waited for. Answers as the program does, to the byte, and shows what the prefetch is worth.

#include <cstdlib>
#include <memory>
#include <utility>

#include "driver/host_task.h"
#include "platform/platform.h"

namespace {

using namespace tavik::platform;

class WithoutPrefetch final : public Accessibility {
 public:
  explicit WithoutPrefetch(std::unique_ptr<Accessibility> accessibility) : accessibility_(std::move(accessibility)) {}
  bool isProcessTrusted() override { return accessibility_->isProcessTrusted(); }
  UIElementRef createApplication(std::int32_t processID) override {
    return accessibility_->createApplication(processID);
  }
  void prefetch(const UIElementRef&, const WalkPlan&) override {}

 private:
  std::unique_ptr<Accessibility> accessibility_;
};

}  // namespace

int main() {
  Platform platform = makePlatform({});
  platform.accessibility = std::make_unique<WithoutPrefetch>(std::move(platform.accessibility));
  std::exit(tavik::hostTask(platform));
}
