#import <CoreGraphics/CoreGraphics.h>
#import <Foundation/Foundation.h>
#include <cstdlib>
#include <thread>
#include <utility>

#include "platform/platform.h"

namespace tavik::platform {

void runToExit(std::function<std::int32_t()> pass) {
  CGMainDisplayID();  // a tool without a user interface is not connected to the window server before
  std::thread worker([pass = std::move(pass)] {
    std::int32_t status = 0;
    @autoreleasepool {
      status = pass();
    }
    std::exit(status);
  });
  CFRunLoopRun();  // until the process ends: the main queue is always something to wait for
  worker.join();
  std::abort();
}

}  // namespace tavik::platform
