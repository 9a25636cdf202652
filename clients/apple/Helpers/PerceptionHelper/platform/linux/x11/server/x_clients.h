#pragma once

#include <cstdint>
#include <span>
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

/// The process that made this window; 0 when it is not known.
std::int32_t processOfWindow(const std::vector<XClient>& clients, std::uint32_t resourceMask, xcb_window_t window);

}  // namespace tavik::platform::x11
