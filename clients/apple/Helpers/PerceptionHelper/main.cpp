#include "driver/host_task.h"
#include "platform/platform.h"
#include "protocol/error_replies.h"

int main() {
  const auto platform = tavik::platform::makePlatform(tavik::kSerializationFailure);
  tavik::platform::runToExit([&platform] { return tavik::hostTask(platform); });
}
