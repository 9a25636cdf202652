#pragma once

#import <Foundation/Foundation.h>

#include "world.h"

/// Objects of the fake frameworks, Objective-C's and Core Foundation's alike: a class, a count of references and a
/// value. The last release frees them, so that the sanitizers find who uses a dead one and who leaks one. Other misuse,
/// which the platform would punish with a crash or not at all, ends the process with a line on standard error.
namespace tavik::fake {

void require(bool condition, const char* what);

bool isMainThread();

/// A new object of this class.
Held object(const std::any& value, Class kind);
template <class Ref>
Ref as(const Held& held) {
  return static_cast<Ref>(const_cast<void*>(held.get()));
}
/// The object with a reference more, which is the caller's: what Create and Copy functions return.
template <class Ref>
Ref give(const Held& held) {
  if (held) CFRetain(held.get());
  return as<Ref>(held);
}
/// A further reference to the object.
Held retain(const void* object);
/// The object, or nil, which the innermost pool owns from now on.
id lend(const Held& held);
/// A new object of this class, or nil.
template <class Value>
id lend(const std::optional<Value>& value, Class kind) {
  return lend(value ? object(*value, kind) : nullptr);
}
/// An array of new objects of this class.
template <class Value>
id lend(const std::vector<Value>& values, Class kind) {
  List objects;
  for (const auto& value : values) objects.push_back(object(value, kind));
  return lend(list(objects));
}

std::any& anyOf(const void* object);
template <class Value>
Value& valueOf(const void* object) {
  auto* const value = std::any_cast<Value>(&anyOf(object));
  require(value != nullptr, "an object of another class is expected");
  return *value;
}
/// What CFGetTypeID answers for objects with such values.
template <class Value>
CFTypeID typeOf() {
  return typeid(Value).hash_code();
}

/// True when the world says that this operation fails.
bool fails(const std::string& operation);

}  // namespace tavik::fake

/// A method that only answers.
#define TAVIK_ANSWER(signature, ...) \
  signature { return __VA_ARGS__; }
