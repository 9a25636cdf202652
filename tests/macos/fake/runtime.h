#pragma once

#import <Foundation/Foundation.h>
#include <any>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// Objects of the fake frameworks, Objective-C's and Core Foundation's alike: an address, a type, a count of references
/// and a value. The ledger keeps the dead ones too, so that whoever still uses one is told what it was. What the
/// platform would punish with a crash, or not at all, ends the process here with a line on standard error.
namespace tavik::fake {

void require(bool condition, const std::string& what);

/// A new object with one reference, which is the caller's; of a type of its own if `type` names one.
id make(Class kind, const std::any& value, const std::string& type = "");
/// The same for a type of Core Foundation, which answers no messages.
template <class Ref>
Ref create(const std::string& type, const std::any& value) {
  return reinterpret_cast<Ref>(make([NSObject class], value, type));
}
/// The only object of this class, which nobody owns.
id shared(Class kind);
CFTypeID typeNamed(const std::string& type);

/// The value of a living object. Any thread but the one that runs it waits for the end of a delivery.
std::any& anyOf(const void* object);
template <class Value>
Value& valueOf(const void* object) {
  auto* const value = std::any_cast<Value>(&anyOf(object));
  require(value != nullptr, "an object of another class is expected");
  return *value;
}

/// One reference, or none, for as long as this or a copy exists.
using Held = std::shared_ptr<const void>;
/// Takes over the reference that it is given.
Held hold(const void* object);
inline id objectOf(const Held& held) { return static_cast<id>(const_cast<void*>(held.get())); }
using List = std::vector<Held>;                  ///< the value of an array
using Dictionary = std::map<std::string, Held>;  ///< the value of a dictionary

/// A string of the pool's, or nil.
id temporaryText(const std::optional<std::string>& value);
/// An array of the pool's, of new objects of one class.
template <class Value>
id temporaryList(Class kind, const std::vector<Value>& values) {
  List list;
  for (const auto& value : values) list.push_back(hold(make(kind, value)));
  return [make([NSArray class], list) autorelease];
}

/// Runs `handle` on a thread of its own, with a pool, while every other thread that touches an object waits: what the
/// handler was lent is gone before anybody can use it.
void deliver(std::function<void()> handle);

/// True when the world says that this operation fails.
bool fails(const std::string& operation);

/// A screenshot: it has no pixels, and tells how it came about.
const void* makePicture(std::size_t width, std::size_t height, const std::string& story);

}  // namespace tavik::fake

extern "C" {
void* _Block_copy(const void* block);
void _Block_release(const void* block);
}

/// A method that does no more than to answer.
#define TAVIK_ANSWER(signature, ...) \
  signature { return __VA_ARGS__; }
