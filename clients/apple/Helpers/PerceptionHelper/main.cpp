#include <cstdlib>

#include "driver/host_task.h"
#include "platform/platform.h"

int main() {
  const auto platform = tavik::platform::makePlatform();
  std::exit(tavik::hostTask(platform));
}
