#include "platform/linux/x11/server/x_connection.h"

#include <algorithm>
#include <array>
#include <poll.h>
#include <string>
#include <sys/socket.h>

#include <xcb/composite.h>
#include <xcb/damage.h>
#include <xcb/randr.h>
#include <xcb/res.h>
#include <xcb/shape.h>
#include <xcb/shm.h>
#include <xcb/xcbext.h>

#include "platform/posix/run_time.h"
#include "platform/posix/silent_standard_error.h"
#include "platform/posix/within.h"

namespace tavik::platform::x11 {
namespace {

/// How long the server may keep the program waiting, in all. It usually answers within milliseconds; while another
/// client has grabbed it, as some window managers do while a window is dragged, it answers nobody else.
constexpr std::chrono::milliseconds kPatience{3000};

const xcb_screen_t* screenWithNumber(const xcb_setup_t& setup, int number) {
  auto screens = xcb_setup_roots_iterator(&setup);
  for (; screens.rem > 1 && number > 0; --number) xcb_screen_next(&screens);
  return screens.rem > 0 ? screens.data : nullptr;
}

/// The full name of an atom on the screen with this number.
std::string nameOnScreen(std::string_view name, int number) {
  return std::string(name) + (name.ends_with("_S") ? std::to_string(number) : "");
}

}  // namespace

Clock::time_point deadlineIn(std::chrono::milliseconds limit) { return Clock::now() + posix::withinRunTime(limit); }

Clock::time_point deadlineWithin(const WaitLimits& limits) {
  return deadlineIn(std::clamp(limits.ageOfRun - posix::runTimeSpent(), limits.least, limits.most));
}

/// On a thread of its own, since xcb_connect waits for the server's greeting without limit. A connection that comes too
/// late is closed on that thread. By then all has been said that the program has to say on standard error; xcb would
/// add why the server turns it down.
XConnection::Opened XConnection::open() {
  return posix::within(kPatience,
                       [] {
                         const posix::SilentStandardError silence;
                         int screenNumber = 0;
                         Handle connection(xcb_connect(nullptr, &screenNumber));
                         return Opened{.connection = std::move(connection), .screenNumber = screenNumber};
                       })
      .value_or(Opened{});
}

bool XConnection::isReachable() {
  if (!triedToOpen_) {
    triedToOpen_ = true;
    auto [connection, screenNumber] = open();
    connection_ = std::move(connection);
    if (connection_ && xcb_connection_has_error(xcb()) == 0) {
      watchdog_.start(xcb_get_file_descriptor(xcb()), kPatience);
      const XWatchdog::Watch watch(watchdog_);
      prepare(screenNumber);
    }
  }
  return screen_ != nullptr && !gaveUp_ && xcb_connection_has_error(xcb()) == 0;
}

/// One batch: the atoms, and the presence of the extensions, which xcb answers from its cache from then on.
void XConnection::prepare(int screenNumber) {
  screen_ = screenWithNumber(setup(), screenNumber);
  for (auto* const extension :
       {&xcb_composite_id, &xcb_damage_id, &xcb_randr_id, &xcb_res_id, &xcb_shape_id, &xcb_shm_id}) {
    xcb_prefetch_extension_data(xcb(), extension);
  }
  std::array<xcb_intern_atom_cookie_t, kAtomNames.size()> cookies{};
  std::ranges::transform(kAtomNames, cookies.begin(), [&](std::string_view atomName) {
    constexpr std::uint8_t kOnlyIfExists = 1;
    const auto name = nameOnScreen(atomName, screenNumber);
    return xcb_intern_atom(xcb(), kOnlyIfExists, static_cast<std::uint16_t>(name.size()), name.data());
  });
  std::ranges::transform(cookies, atoms_.begin(), [this](xcb_intern_atom_cookie_t cookie) {
    const auto found = reply(xcb_intern_atom_reply, cookie);
    return found ? found->atom : xcb_atom_t{XCB_ATOM_NONE};
  });
}

const xcb_query_extension_reply_t* XConnection::extension(xcb_extension_t& extension) const {
  if (gaveUp_) return nullptr;
  const auto* const data = xcb_get_extension_data(xcb(), &extension);
  return data != nullptr && data->present != 0 ? data : nullptr;
}

bool XConnection::passesDescriptors() const {
  sockaddr address{};
  socklen_t size = sizeof address;
  return ::getsockname(xcb_get_file_descriptor(xcb()), &address, &size) == 0 && address.sa_family == AF_UNIX;
}

void* XConnection::waitForReply(unsigned int sequence) {
  const auto deadline = deadlineIn(kPatience);
  void* reply = nullptr;
  xcb_generic_error_t* error = nullptr;
  xcb_flush(xcb());
  while (!gaveUp_ && xcb_poll_for_reply(xcb(), sequence, &reply, &error) == 0) gaveUp_ = !waitForInput(deadline);
  const MallocPtr<xcb_generic_error_t> ownedError(error);
  return reply;
}

bool XConnection::hasFailed(xcb_void_cookie_t cookie) {
  void* none = nullptr;
  xcb_generic_error_t* error = nullptr;
  const bool isKnown = xcb_poll_for_reply(xcb(), cookie.sequence, &none, &error) != 0;
  const MallocPtr<xcb_generic_error_t> ownedError(error);
  return !isKnown || ownedError != nullptr;
}

MallocPtr<xcb_generic_event_t> XConnection::nextEvent(Clock::time_point deadline) {
  xcb_flush(xcb());
  while (Clock::now() < deadline) {
    if (MallocPtr<xcb_generic_event_t> event(xcb_poll_for_event(xcb())); event) return event;
    const XWatchdog::Pause pause(watchdog_);
    if (xcb_connection_has_error(xcb()) != 0 || !waitForInput(deadline)) break;
  }
  return nullptr;
}

/// True when the server has sent something, or has gone, before `deadline`.
bool XConnection::waitForInput(Clock::time_point deadline) const {
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
  pollfd waiting{.fd = xcb_get_file_descriptor(xcb()), .events = POLLIN, .revents = 0};
  return left.count() > 0 && ::poll(&waiting, 1, static_cast<int>(left.count())) != 0;
}

}  // namespace tavik::platform::x11
