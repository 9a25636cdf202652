#include "platform/linux/x11/server/x_clients.h"

#include <algorithm>
#include <sys/utsname.h>

#include <xcb/res.h>

namespace tavik::platform::x11 {

std::vector<XClient> clients(XConnection& connection) {
  if (!connection.hasExtension(xcb_res_id)) return {};
  constexpr std::uint32_t kAllClients = 0;
  constexpr xcb_res_client_id_spec_t kProcessIDs{.client = kAllClients,
                                                 .mask = XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID};
  const auto cookie = xcb_res_query_client_ids(connection.xcb(), 1, &kProcessIDs);
  const auto reply = connection.reply(xcb_res_query_client_ids_reply, cookie);
  if (!reply) return {};
  // The identifiers follow the reply's fixed part, which is 32 bytes long; its length counts words of 4 bytes.
  auto found = clientsOfReply({reinterpret_cast<const std::uint32_t*>(reply.get() + 1), reply->length});
  const auto ownBase = connection.setup().resource_id_base;
  std::erase_if(found,
                [&](const XClient& client) { return client.resourceBase == ownBase || client.resourceBase == 0; });
  return found;
}

std::vector<XClient> clientsOfReply(std::span<const std::uint32_t> words) {
  constexpr std::size_t kHeaderWords = 3;
  std::vector<XClient> clients;
  while (words.size() >= kHeaderWords) {
    const auto valueWords = words[2] / kWordBytes;
    if (valueWords > words.size() - kHeaderWords) break;
    const auto value = valueWords > 0 ? static_cast<std::int32_t>(words[kHeaderWords]) : 0;
    const bool isProcess = (words[1] & XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID) != 0;
    if (isProcess && value > 0) clients.push_back({.resourceBase = words[0], .processID = value});
    words = words.subspan(kHeaderWords + valueWords);
  }
  return clients;
}

bool isOfOtherMachine(std::string_view clientMachine, std::int32_t namedProcess, std::int32_t knownProcess) {
  utsname system{};
  const bool isNamedSo = ::uname(&system) != 0 || clientMachine == system.nodename;
  return !clientMachine.empty() && !isNamedSo && (knownProcess == 0 || namedProcess != knownProcess);
}

std::int32_t processOfWindow(const std::vector<XClient>& clients, std::uint32_t resourceMask, xcb_window_t window) {
  const auto owner = std::ranges::find_if(
      clients, [&](const XClient& client) { return client.resourceBase == (window & ~resourceMask); });
  return owner != clients.end() ? owner->processID : 0;
}

}  // namespace tavik::platform::x11
