#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>

#include <xcb/xcb.h>

#include "platform/linux/x11/server/malloc_ptr.h"
#include "platform/linux/x11/server/x_atoms.h"
#include "platform/linux/x11/server/x_watchdog.h"

namespace tavik::platform::x11 {

/// The unit in which the protocol counts the lengths of replies and values, in bytes.
inline constexpr std::size_t kWordBytes = 4;

/// When a wait of at most `limit` ends: earlier where the run may not wait so long.
Clock::time_point deadlineIn(std::chrono::milliseconds limit);

/// The limits of a wait that is shorter the later in the run it begins.
struct WaitLimits {
  std::chrono::milliseconds most = {};      ///< however early
  std::chrono::milliseconds least = {};     ///< however late
  std::chrono::milliseconds ageOfRun = {};  ///< that is not to be exceeded, but for `least`
};
Clock::time_point deadlineWithin(const WaitLimits& limits);

/// Owns the connection to the X server, shared by all who hold something there. It is made at the first question, and
/// it is single-threaded. Nothing here ends the process or waits without limit: a server that is not there, that goes
/// away, or that another client has grabbed answers nothing.
class XConnection : public std::enable_shared_from_this<XConnection> {
 public:
  XConnection() = default;
  XConnection(const XConnection&) = delete;
  XConnection& operator=(const XConnection&) = delete;

  /// True when there is a server that answers; connects to $DISPLAY at the first call. Call it before the members
  /// below, which need a connection. Once a reply has taken too long, it is false for good.
  bool isReachable();

  /// Whoever asks the server something has one of these meanwhile: all waits of a run together have a limit.
  XWatchdog& watchdog() { return watchdog_; }

  xcb_connection_t* xcb() const { return connection_.get(); }
  const xcb_setup_t& setup() const { return *xcb_get_setup(xcb()); }
  const xcb_screen_t& screen() const { return *screen_; }
  xcb_window_t root() const { return screen_->root; }
  /// XCB_ATOM_NONE for one that no client of this server has ever used.
  xcb_atom_t atom(Atom name) const { return atoms_[static_cast<std::size_t>(name)]; }
  const AtomTable& atoms() const { return atoms_; }
  /// Requests of an extension that the server lacks end the connection, so this is asked before the first one.
  bool hasExtension(xcb_extension_t& extension) const { return this->extension(extension) != nullptr; }
  /// Where its requests and events begin; null when the server lacks it or has gone.
  const xcb_query_extension_reply_t* extension(xcb_extension_t& extension) const;

  /// True where file descriptors reach the server: at the other end of a socket of this machine.
  bool passesDescriptors() const;

  /// Waits for the reply to `cookie`; null when the request failed. The first argument is xcb's own function for that
  /// reply: it only tells the types, since calling it could wait for ever.
  template <class Reply, class Cookie>
  MallocPtr<Reply> reply(Reply* (*)(xcb_connection_t*, Cookie, xcb_generic_error_t**), Cookie cookie) {
    return MallocPtr<Reply>(static_cast<Reply*>(waitForReply(cookie.sequence)));
  }

  /// True when a checked request without a reply has failed. Asked once a later request has been answered.
  bool hasFailed(xcb_void_cookie_t cookie);

  /// An event, or a failed request's error, that has come with an earlier reply; null when there is none left.
  MallocPtr<xcb_generic_event_t> queuedEvent() {
    return MallocPtr<xcb_generic_event_t>(xcb_poll_for_queued_event(xcb()));
  }
  /// The next event, or a failed request's error, that arrives before `deadline`. This wait counts as a pause.
  MallocPtr<xcb_generic_event_t> nextEvent(Clock::time_point deadline);

 private:
  struct Disconnect {
    void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
  };
  using Handle = std::unique_ptr<xcb_connection_t, Disconnect>;
  struct Opened {
    Handle connection = {};
    int screenNumber = 0;
  };

  static Opened open();
  void prepare(int screenNumber);
  void* waitForReply(unsigned int sequence);
  bool waitForInput(Clock::time_point deadline) const;

  bool triedToOpen_ = false;
  bool gaveUp_ = false;
  Handle connection_ = {};
  XWatchdog watchdog_;  ///< ends before the connection does
  const xcb_screen_t* screen_ = nullptr;
  AtomTable atoms_ = {};
};

}  // namespace tavik::platform::x11
