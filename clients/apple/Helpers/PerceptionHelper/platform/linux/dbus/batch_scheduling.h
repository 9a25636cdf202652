#pragma once

namespace tavik::platform::dbus {

/// While one lives, the calling thread interrupts nobody when it is woken, as the kernel has it for batch processes
/// (SCHED_BATCH, sched(7)); its share of the processors stays. A thread that has been given another policy than the
/// usual one keeps it, as does one that may not change its own. Destroyed by the thread that made it.
class BatchScheduling {
 public:
  BatchScheduling();
  BatchScheduling(const BatchScheduling&) = delete;
  BatchScheduling& operator=(const BatchScheduling&) = delete;
  ~BatchScheduling();

 private:
  bool isOn_;
};

}  // namespace tavik::platform::dbus
