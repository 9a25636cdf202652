#pragma once

#include <atomic>
#include <exception>
#include <memory>
#include <utility>
#include <variant>

#include <boost/asio/associated_executor.hpp>
#include <boost/asio/async_result.hpp>
#include <boost/asio/awaitable.hpp>
#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/use_awaitable.hpp>

#include "platform/screen_capture.h"

namespace tavik {

/// Thrown where a continuation is awaited, when the platform reported an error instead of a value.
struct ContinuationError : std::exception {
  const char* what() const noexcept override { return "the platform reported an error"; }
};

/// A suspended task that is resumed once. Keeps the task's event loop running until then; when it is destroyed without
/// having been resumed, so is the task.
template <class Value, class Handler>
class PendingResumption {
 public:
  explicit PendingResumption(Handler handler)
      : work_(boost::asio::get_associated_executor(handler)), handler_(std::move(handler)) {}

  /// Resumes the task on its own executor, from whatever thread this is called. Calls after the first do nothing.
  void resume(std::variant<Value, platform::PlatformError> outcome) {
    if (resumed_.test_and_set()) return;
    boost::asio::post(work_.get_executor(), [handler = std::move(handler_), outcome = std::move(outcome)]() mutable {
      if (auto* const value = std::get_if<Value>(&outcome)) return handler(nullptr, std::move(*value));
      handler(std::make_exception_ptr(ContinuationError()), Value());
    });
    work_.reset();
  }

 private:
  /// Outlives the handler: a thread that drops it unused ends the task before the event loop does.
  boost::asio::executor_work_guard<boost::asio::associated_executor_t<Handler>> work_;
  Handler handler_;
  std::atomic_flag resumed_;
};

/// Suspends the calling task while the platform works: calls `start` with a completion handler and yields the value
/// that the handler gets, or throws ContinuationError. The handler may be called from any thread, during the call of
/// `start` or after.
template <class Value, class Start>
boost::asio::awaitable<Value> continuation(Start start) {
  const auto initiate = [](auto handler, Start startWork) {
    using Pending = PendingResumption<Value, decltype(handler)>;
    const auto pending = std::make_shared<Pending>(std::move(handler));
    try {
      startWork(platform::CompletionHandler<Value>(
          [pending](std::variant<Value, platform::PlatformError> outcome) { pending->resume(std::move(outcome)); }));
    } catch (...) {  // it must not escape: the task counts as suspended here
      pending->resume(platform::PlatformError{});
    }
  };
  return boost::asio::async_initiate<const boost::asio::use_awaitable_t<>, void(std::exception_ptr, Value)>(
      initiate, boost::asio::use_awaitable, std::move(start));
}

}  // namespace tavik
