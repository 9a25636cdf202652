#include "driver/host_task.h"
#include "platform/platform.h"

int main() {
  const auto platform = tavik::platform::makePlatform();
  tavik::platform::runToExit([&platform] { return tavik::hostTask(platform); });
}
