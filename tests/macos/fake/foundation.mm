#import <Foundation/Foundation.h>
#include <algorithm>
#include <cstring>
#include <filesystem>

#include "runtime.h"
#include "text/utf8.h"
#include "world.h"

namespace tavik::fake {

World& world() {
  static auto& theOne = *new World;
  return theOne;
}

id temporaryText(const std::optional<std::string>& value) {
  return value ? [make([NSString class], *value) autorelease] : nil;
}

Maker text(std::string value) {
  return [=] { return make([NSString class], value); };
}
Maker number(double value) {
  return [=] { return make([NSNumber class], value); };
}
Maker boolean(bool value) {
  return [=] { return make([NSNumber class], value, "CFBoolean"); };
}
Maker null() {
  return [] { return create<CFTypeRef>("CFNull", {}); };
}
Maker list(std::vector<Maker> makers) {
  return [=] {
    List values;
    for (const auto& maker : makers) values.push_back(hold(maker()));
    return make([NSArray class], values);
  };
}

}  // namespace tavik::fake

using namespace tavik::fake;

const CFAllocatorRef kCFAllocatorDefault = nullptr;
struct CFArrayCallBacks {
} const kCFTypeArrayCallBacks;
struct CFDictionaryKeyCallBacks {
} const kCFTypeDictionaryKeyCallBacks;
struct CFDictionaryValueCallBacks {
} const kCFTypeDictionaryValueCallBacks;

CFTypeID CFNullGetTypeID() { return typeNamed("CFNull"); }
CFTypeID CFStringGetTypeID() { return typeNamed("NSString"); }
CFTypeID CFBooleanGetTypeID() { return typeNamed("CFBoolean"); }
CFTypeID CFNumberGetTypeID() { return typeNamed("NSNumber"); }
CFTypeID CFArrayGetTypeID() { return typeNamed("NSArray"); }

CFStringRef CFStringCreateWithBytes(CFAllocatorRef, const UInt8* bytes, CFIndex count, CFStringEncoding encoding,
                                    Boolean isExternal) {
  require(encoding == kCFStringEncodingUTF8 && isExternal == 0, "UTF-8 without a byte-order mark");
  const std::string value(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(count));
  return tavik::text::isValidUTF8(value) ? create<CFStringRef>("NSString", value) : nullptr;
}

CFIndex CFStringGetLength(CFStringRef string) {
  CFIndex units = 0;
  for (const char byte : valueOf<std::string>(string)) {
    units += (byte & 0xC0) != 0x80 ? 1 : 0;  // no continuation
    units += (byte & 0xF8) == 0xF0 ? 1 : 0;  // a surrogate pair
  }
  return units;
}

CFIndex CFStringGetBytes(CFStringRef string, CFRange range, CFStringEncoding encoding, UInt8 lossByte,
                         Boolean isExternal, UInt8* buffer, CFIndex size, CFIndex* used) {
  require(range.location == 0 && range.length == CFStringGetLength(string), "the range is the whole string");
  require(encoding == kCFStringEncodingUTF8 && isExternal == 0, "UTF-8 without a byte-order mark");
  auto bytes = valueOf<std::string>(string);
  if (lossByte == 0) bytes.resize(std::min(bytes.size(), bytes.find(kUnpairedSurrogate)));
  std::ranges::replace(bytes, kUnpairedSurrogate, static_cast<char>(lossByte));
  require(buffer == nullptr || std::ssize(bytes) <= size, "the string fits");
  if (buffer != nullptr) std::memcpy(buffer, bytes.data(), bytes.size());
  *used = std::ssize(bytes);
  return range.length;
}

Boolean CFBooleanGetValue(CFBooleanRef boolean) { return valueOf<bool>(boolean); }

Boolean CFNumberGetValue(CFNumberRef number, CFNumberType type, void* value) {
  require(type == kCFNumberDoubleType, "numbers are double");
  *static_cast<double*>(value) = valueOf<double>(number);
  return 1;
}
CFNumberRef CFNumberCreate(CFAllocatorRef, CFNumberType type, const void* value) {
  require(type == kCFNumberDoubleType, "numbers are double");
  return static_cast<CFNumberRef>(number(*static_cast<const double*>(value))());
}

CFArrayRef CFArrayCreate(CFAllocatorRef, const void** values, CFIndex count, const CFArrayCallBacks* callBacks) {
  require(callBacks == &kCFTypeArrayCallBacks, "an array owns its values");
  List list;
  for (CFIndex i = 0; i < count; ++i) list.push_back(hold(CFRetain(values[i])));
  return create<CFArrayRef>("NSArray", list);
}
CFIndex CFArrayGetCount(CFArrayRef array) { return std::ssize(valueOf<List>(array)); }
const void* CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index) {
  require(index >= 0 && index < CFArrayGetCount(array), "the index is in the array");
  return valueOf<List>(array)[static_cast<std::size_t>(index)].get();
}

CFDictionaryRef CFDictionaryCreate(CFAllocatorRef, const void** keys, const void** values, CFIndex count,
                                   const CFDictionaryKeyCallBacks* ofKeys, const CFDictionaryValueCallBacks* ofValues) {
  require(ofKeys == &kCFTypeDictionaryKeyCallBacks && ofValues == &kCFTypeDictionaryValueCallBacks,
          "a dictionary owns its keys and values");
  Dictionary dictionary;
  for (CFIndex i = 0; i < count; ++i) dictionary[valueOf<std::string>(keys[i])] = hold(CFRetain(values[i]));
  return create<CFDictionaryRef>("NSDictionary", dictionary);
}

CFMutableDataRef CFDataCreateMutable(CFAllocatorRef, CFIndex capacity) {
  require(capacity == 0, "data of any length");
  return create<CFMutableDataRef>("CFData", std::string());
}
CFIndex CFDataGetLength(CFDataRef data) { return std::ssize(valueOf<std::string>(data)); }
const UInt8* CFDataGetBytePtr(CFDataRef data) {
  return reinterpret_cast<const UInt8*>(valueOf<std::string>(data).data());
}

@implementation NSString
- (instancetype)initWithBytes:(const void*)bytes length:(NSUInteger)length encoding:(NSStringEncoding)encoding {
  require(encoding == NSUTF8StringEncoding, "UTF-8");
  std::string value(static_cast<const char*>(bytes), length);
  if (tavik::text::isValidUTF8(value)) return anyOf(self) = std::move(value), self;
  [self release];
  return nil;
}
@end

@implementation NSConstantString
@end

@implementation NSNumber
TAVIK_ANSWER(-(double)doubleValue, valueOf<double>(self))
@end

@implementation NSArray
TAVIK_ANSWER(+(instancetype)arrayWithObject : (id)element, [make(self, List{hold(CFRetain(element))}) autorelease])
TAVIK_ANSWER(-(instancetype)init, (anyOf(self) = List{}, self))
TAVIK_ANSWER(-(id)objectAtIndex : (NSUInteger)index, objectOf(valueOf<List>(self).at(index)))
TAVIK_ANSWER(-(NSUInteger)count, valueOf<List>(self).size())
@end

@implementation NSDictionary
- (id)objectForKey:(id)key {
  const auto& dictionary = valueOf<Dictionary>(self);
  const auto found = dictionary.find(valueOf<std::string>(key));
  return found != dictionary.end() ? objectOf(found->second) : nil;
}
@end

@implementation NSError
TAVIK_ANSWER(-(NSString*)localizedDescription, temporaryText("denied"))
@end

@implementation NSBundle
TAVIK_ANSWER(+(NSBundle*)mainBundle, shared(self))
- (NSString*)pathForResource:(NSString*)name ofType:(NSString*)type {
  const auto file = valueOf<std::string>(name) + "." + valueOf<std::string>(type);
  return temporaryText(file == "perception-sensitive-apps.yaml" ? world().resource : std::nullopt);
}
@end

@implementation NSFileManager
TAVIK_ANSWER(+(NSFileManager*)defaultManager, shared(self))
TAVIK_ANSWER(-(BOOL)fileExistsAtPath : (NSString*)path, std::filesystem::exists(valueOf<std::string>(path)))
@end

@implementation NSProcessInfo
TAVIK_ANSWER(+(NSProcessInfo*)processInfo, shared(self))
- (NSDictionary<NSString*, NSString*>*)environment {
  Dictionary variables;
  for (const auto& [name, value] : world().environment) variables[name] = hold(text(value)());
  return [make([NSDictionary class], variables) autorelease];
}
@end

NSString* NSUserName() { return temporaryText("ada"); }
