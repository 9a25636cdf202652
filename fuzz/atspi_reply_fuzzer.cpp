#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <fuzzer/FuzzedDataProvider.h>
#include <memory>
#include <string>
#include <sys/socket.h>

#include <systemd/sd-bus.h>

#include "platform/linux/atspi/reply.h"
#include "text/utf8.h"

namespace {

namespace atspi = tavik::platform::atspi;

constexpr int kMaxDepth = 4;

struct Unref {
  void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};
using Message = std::unique_ptr<sd_bus_message, Unref>;

/// A bus that nobody is at the other end of: enough to make messages for.
sd_bus* bus() {
  static sd_bus* const made = [] {
    std::array<int, 2> ends{};
    sd_bus* bus = nullptr;
    const bool works = socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()) == 0 && sd_bus_new(&bus) >= 0 &&
                       sd_bus_set_fd(bus, ends[0], ends[0]) >= 0 && sd_bus_start(bus) >= 0;
    if (!works) std::abort();
    return bus;
  }();
  return made;
}

void appendContents(sd_bus_message* message, FuzzedDataProvider& input, const std::string& types, int depth);

/// One value of that type. An array has up to seven of them.
void appendValue(sd_bus_message* message, FuzzedDataProvider& input, const std::string& type, int depth) {
  const std::string inner = type.substr(1);
  if (type == "s") {
    sd_bus_message_append(message, "s", input.ConsumeRandomLengthString(32).c_str());
  } else if (type == "o") {
    constexpr std::array kPaths{"/org/a11y/atspi/null", "/org/a11y/atspi/accessible/1", "/"};
    sd_bus_message_append(message, "o", input.PickValueInArray(kPaths));
  } else if (type == "i" || type == "u") {
    sd_bus_message_append(message, type.c_str(), input.ConsumeIntegral<std::uint32_t>());
  } else if (type.front() == 'a' && sd_bus_message_open_container(message, 'a', inner.c_str()) >= 0) {
    for (int left = input.ConsumeIntegralInRange(0, 7); left > 0; --left) appendValue(message, input, inner, depth + 1);
    sd_bus_message_close_container(message);
  } else if (type.front() == '(' &&
             sd_bus_message_open_container(message, 'r', inner.substr(0, inner.size() - 1).c_str()) >= 0) {
    for (const char member : inner.substr(0, inner.size() - 1)) {
      appendValue(message, input, std::string(1, member), depth + 1);
    }
    sd_bus_message_close_container(message);
  } else if (type == "{sv}" && sd_bus_message_open_container(message, 'e', "sv") >= 0) {
    constexpr std::array kKeys{"Name", "Description", "HelpText", "ChildCount", "Parent"};
    sd_bus_message_append(message, "s", input.PickValueInArray(kKeys));
    appendContents(message, input, "v", depth + 1);
    sd_bus_message_close_container(message);
  } else if (type == "v") {
    appendContents(message, input, "v", depth + 1);
  }
}

/// A value of some type that such replies have, or of another; as a variant where `types` is "v".
void appendContents(sd_bus_message* message, FuzzedDataProvider& input, const std::string& types, int depth) {
  constexpr std::array kTypes{"s",     "i",      "u",      "o",    "as",  "au",    "ai", "(so)",
                              "a(so)", "(iiii)", "(uuuu)", "(os)", "aas", "a{sv}", "v"};
  const std::string type = depth < kMaxDepth ? input.PickValueInArray(kTypes) : "s";
  if (types != "v") return appendValue(message, input, type, depth);
  if (sd_bus_message_open_container(message, 'v', type.c_str()) < 0) return;
  appendValue(message, input, type, depth);
  sd_bus_message_close_container(message);
}

Message makeReply(FuzzedDataProvider& input) {
  sd_bus_message* made = nullptr;
  if (sd_bus_message_new(bus(), &made, SD_BUS_MESSAGE_METHOD_RETURN) < 0) std::abort();
  Message message(made);
  for (int left = input.ConsumeIntegralInRange(0, 3); left > 0; --left) appendContents(made, input, "", 0);
  return sd_bus_message_seal(made, 1, 0) >= 0 ? std::move(message) : nullptr;
}

template <class Read>
auto fromTheStart(sd_bus_message* reply, const Read& read) {
  if (reply) sd_bus_message_rewind(reply, 1);
  return read(reply);
}

void require(bool isTrue) {
  if (!isTrue) std::abort();
}

}  // namespace

/// Whatever a reply holds, each reader gives what it promises or nothing: text is UTF-8, references name somebody and
/// are no more than wanted, and what is read is what the reply's own signature says.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider input(data, size);
  const auto limit = input.ConsumeIntegralInRange<std::size_t>(0, 5);
  const Message message = makeReply(input);
  sd_bus_message* const reply = message.get();
  const std::string signature = reply ? sd_bus_message_get_signature(reply, 1) : "";
  const auto isOf = [&signature](const char* type) { return signature.starts_with(type); };

  const auto all = fromTheStart(reply, atspi::readAllProperties);
  require(isOf("a{sv}") || all == atspi::Properties{});
  for (const auto& text : {fromTheStart(reply, atspi::readString), fromTheStart(reply, atspi::readStringProperty),
                           all.name, all.description, all.helpText}) {
    require(!text || tavik::text::isValidUTF8(*text));
  }
  for (const auto& found :
       {fromTheStart(reply, atspi::readReference), fromTheStart(reply, atspi::readReferenceProperty)}) {
    require(!found || !found->busName.empty());
  }
  const auto references = fromTheStart(reply, [limit](auto* message) { return atspi::readReferences(message, limit); });
  require(references.has_value() == isOf("a(so)"));
  require(!references || references->size() <= limit);
  require(!references || std::ranges::none_of(*references, [](const auto& one) { return one.busName.empty(); }));
  require(fromTheStart(reply, atspi::readInterfaces).has_value() == isOf("as"));
  require(fromTheStart(reply, atspi::readStates).has_value() == isOf("au"));
  require(fromTheStart(reply, atspi::readExtents).has_value() == isOf("(iiii)"));
  require(fromTheStart(reply, atspi::readUInt32).has_value() == isOf("u"));
  const auto number = fromTheStart(reply, atspi::readInt32Property);
  require(!number || isOf("v"));
  return 0;
}
