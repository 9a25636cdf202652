#pragma once

#include <chrono>
#include <future>
#include <memory>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>

#include "platform/posix/run_time.h"

namespace tavik::platform::posix {

/// The result of a call that may block without limit, made on a thread of its own; nothing when it takes longer than
/// `limit`, or than the run may wait. The thread then goes on, at most until the process ends: `call` owns all that it
/// uses. Where no thread can be had, the call is made here.
template <class Call>
auto within(std::chrono::milliseconds limit, Call call) -> std::optional<decltype(call())> {
  const auto task = std::make_shared<std::packaged_task<decltype(call())()>>(std::move(call));
  auto result = task->get_future();
  try {
    std::thread([task] { (*task)(); }).detach();
  } catch (const std::system_error&) {
    (*task)();
  }
  if (result.wait_for(withinRunTime(limit)) != std::future_status::ready) return std::nullopt;
  return result.get();
}

}  // namespace tavik::platform::posix
