#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include <xcb/xproto.h>

#include "platform/linux/x11/server/x_connection.h"

/// Which process is behind a window, as the X server knows it from its sockets (X-Resource extension 1.2). Unlike
/// _NET_WM_PID it can be neither forged nor a number from another process namespace.
namespace tavik::platform::x11 {

/// A program's connection to the X server.
struct XClient {
  std::uint32_t resourceBase = 0;  ///< what the identifiers of all its windows have in common
  std::int32_t processID = 0;
};

/// The clients of local processes in the server's order, without this program itself and without the server. None when
/// the server cannot tell.
std::vector<XClient> clients(XConnection& connection);

/// Reads the identifiers of a QueryClientIds reply: per identifier the client, the kind, the length in bytes, and the
/// value. Stops at the first that does not fit.
std::vector<XClient> clientsOfReply(std::span<const std::uint32_t> words);

/// The server cannot look into other machines: a process that windows come through only relays them (ssh(1)). True for
/// such a window, by the machine and the process that it names, and the process that the server knows, 0 where it knows
/// none. One that names that process is of this machine, which may have had another name.
bool isOfOtherMachine(std::string_view clientMachine, std::int32_t namedProcess, std::int32_t knownProcess);

/// The process that made this window; 0 when it is not known.
std::int32_t processOfWindow(const std::vector<XClient>& clients, std::uint32_t resourceMask, xcb_window_t window);

}  // namespace tavik::platform::x11
