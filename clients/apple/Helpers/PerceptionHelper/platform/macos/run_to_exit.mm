#import <Foundation/Foundation.h>
#include <cstdlib>
#include <thread>

#include "platform/platform.h"

namespace tavik::platform {

void runToExit(const std::function<std::int32_t()>& pass) {
  std::thread worker([pass] {
    std::int32_t status = 0;
    @autoreleasepool {
      status = pass();
    }
    std::exit(status);
  });
  CFRunLoopRun();  // until the process ends: the main queue keeps the loop from running out of sources
  worker.join();
  std::abort();
}

}  // namespace tavik::platform
