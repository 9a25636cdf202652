#include "platform/linux/dbus/batch_scheduling.h"

#include <sched.h>

namespace tavik::platform::dbus {
namespace {

constexpr int kThisThread = 0;

bool setPolicy(int policy) {
  const sched_param parameters{};
  return ::sched_setscheduler(kThisThread, policy, &parameters) == 0;
}

}  // namespace

BatchScheduling::BatchScheduling()
    : isOn_(::sched_getscheduler(kThisThread) == SCHED_OTHER && setPolicy(SCHED_BATCH)) {}

BatchScheduling::~BatchScheduling() {
  if (isOn_) setPolicy(SCHED_OTHER);
}

}  // namespace tavik::platform::dbus
