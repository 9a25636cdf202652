#include "platform/linux/atspi/reply.h"

#include <string_view>
#include <utility>

#include "platform/linux/dbus/sd_bus_library.h"
#include "text/utf8.h"

namespace tavik::platform::atspi {
namespace {

template <class Value>
std::optional<Value> readBasic(sd_bus_message* message, char type) {
  Value value{};
  if (!message || dbus::sdBus()->sd_bus_message_read_basic(message, type, &value) <= 0) return std::nullopt;
  return value;
}

bool entersVariant(sd_bus_message* reply, const char* contents) {
  return reply && dbus::sdBus()->sd_bus_message_enter_container(reply, SD_BUS_TYPE_VARIANT, contents) > 0;
}

/// The next of all properties; false at the end.
bool readNextProperty(sd_bus_message* reply, Properties& properties) {
  const auto* const library = dbus::sdBus();
  if (library->sd_bus_message_enter_container(reply, SD_BUS_TYPE_DICT_ENTRY, "sv") <= 0) return false;
  const auto key = readBasic<const char*>(reply, SD_BUS_TYPE_STRING);
  const std::string_view name = key ? *key : "";
  const auto take = [reply, library](auto& property, auto value) {
    property = std::move(value);
    return property && library->sd_bus_message_exit_container(reply) > 0;
  };
  bool isRead = false;
  if (name == "Name") {
    isRead = take(properties.name, readStringProperty(reply));
  } else if (name == "Description") {
    isRead = take(properties.description, readStringProperty(reply));
  } else if (name == "HelpText") {
    isRead = take(properties.helpText, readStringProperty(reply));
  } else if (name == "ChildCount") {
    isRead = take(properties.childCount, readInt32Property(reply));
  } else {
    isRead = library->sd_bus_message_skip(reply, "v") > 0;
  }
  return isRead && library->sd_bus_message_exit_container(reply) > 0;
}

/// The next reference of a message; nothing at the end. The null object comes as an empty bus name.
std::optional<dbus::Reference> nextReference(sd_bus_message* message) {
  const char* busName = nullptr;
  const char* path = nullptr;
  if (!message || dbus::sdBus()->sd_bus_message_read(message, "(so)", &busName, &path) <= 0) return std::nullopt;
  if (std::string_view(path) == "/org/a11y/atspi/null") return dbus::Reference{};
  return dbus::Reference{busName, path};
}

}  // namespace

std::optional<std::string> readString(sd_bus_message* reply) {
  const auto string = readBasic<const char*>(reply, SD_BUS_TYPE_STRING);
  if (!string) return std::nullopt;
  return text::toValidUTF8(*string);
}

std::optional<std::string> readStringProperty(sd_bus_message* reply) {
  return entersVariant(reply, "s") ? readString(reply) : std::nullopt;
}

std::optional<std::int32_t> readInt32Property(sd_bus_message* reply) {
  return entersVariant(reply, "i") ? readBasic<std::int32_t>(reply, SD_BUS_TYPE_INT32) : std::nullopt;
}

Properties readAllProperties(sd_bus_message* reply) {
  Properties properties;
  if (!reply || dbus::sdBus()->sd_bus_message_enter_container(reply, SD_BUS_TYPE_ARRAY, "{sv}") <= 0) return properties;
  while (readNextProperty(reply, properties)) {
  }
  return properties;
}

std::optional<std::uint32_t> readUInt32(sd_bus_message* reply) {
  return readBasic<std::uint32_t>(reply, SD_BUS_TYPE_UINT32);
}

std::optional<States> readStates(sd_bus_message* reply) {
  if (!reply || dbus::sdBus()->sd_bus_message_enter_container(reply, SD_BUS_TYPE_ARRAY, "u") <= 0) return std::nullopt;
  const States low = readUInt32(reply).value_or(0);
  const States high = readUInt32(reply).value_or(0);
  return low | (high << 32U);
}

std::optional<Interfaces> readInterfaces(sd_bus_message* reply) {
  if (!reply || dbus::sdBus()->sd_bus_message_enter_container(reply, SD_BUS_TYPE_ARRAY, "s") <= 0) return std::nullopt;
  Interfaces interfaces;
  while (const auto string = readBasic<const char*>(reply, SD_BUS_TYPE_STRING)) {
    const std::string_view name(*string);
    interfaces.collection |= name == kCollection;
    interfaces.component |= name == kComponent;
    interfaces.text |= name == kText;
  }
  return interfaces;
}

std::optional<Extents> readExtents(sd_bus_message* reply) {
  Extents extents;
  if (!reply || dbus::sdBus()->sd_bus_message_read(reply, "(iiii)", &extents.x, &extents.y, &extents.width,
                                                   &extents.height) <= 0) {
    return std::nullopt;
  }
  return extents;
}

std::optional<dbus::Reference> readReference(sd_bus_message* reply) {
  auto reference = nextReference(reply);
  return reference && !reference->busName.empty() ? reference : std::nullopt;
}

std::optional<dbus::Reference> readReferenceProperty(sd_bus_message* reply) {
  return entersVariant(reply, "(so)") ? readReference(reply) : std::nullopt;
}

std::optional<std::vector<dbus::Reference>> readReferences(sd_bus_message* reply, std::size_t limit) {
  if (!reply || dbus::sdBus()->sd_bus_message_enter_container(reply, SD_BUS_TYPE_ARRAY, "(so)") <= 0) {
    return std::nullopt;
  }
  std::vector<dbus::Reference> references;
  while (references.size() < limit) {
    auto reference = nextReference(reply);
    if (!reference) break;
    if (!reference->busName.empty()) references.push_back(*std::move(reference));
  }
  return references;
}

}  // namespace tavik::platform::atspi
