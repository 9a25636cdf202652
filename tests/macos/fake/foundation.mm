#import <Foundation/Foundation.h>
#include <algorithm>
#include <cstring>
#include <filesystem>

#include "runtime.h"
#include "text/utf8.h"

using namespace tavik::fake;

const CFAllocatorRef kCFAllocatorDefault = nullptr;
const CFArrayCallBacks kCFTypeArrayCallBacks = {};
const CFDictionaryKeyCallBacks kCFTypeDictionaryKeyCallBacks = {};
const CFDictionaryValueCallBacks kCFTypeDictionaryValueCallBacks = {};

CFTypeID CFNullGetTypeID() { return typeOf<std::nullptr_t>(); }
CFTypeID CFStringGetTypeID() { return typeOf<std::string>(); }
CFTypeID CFBooleanGetTypeID() { return typeOf<bool>(); }
CFTypeID CFNumberGetTypeID() { return typeOf<double>(); }
CFTypeID CFArrayGetTypeID() { return typeOf<List>(); }

CFStringRef CFStringCreateWithBytes(CFAllocatorRef, const UInt8* bytes, CFIndex count, CFStringEncoding encoding,
                                    Boolean isExternal) {
  require(encoding == kCFStringEncodingUTF8 && isExternal == 0, "UTF-8 without a byte-order mark");
  const std::string value(bytes, bytes + count);
  return tavik::text::isValidUTF8(value) ? give<CFStringRef>(text(value)) : nullptr;
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
  return give<CFNumberRef>(object(*static_cast<const double*>(value)));
}

CFArrayRef CFArrayCreate(CFAllocatorRef, const void** values, CFIndex count, const CFArrayCallBacks* callBacks) {
  require(callBacks == &kCFTypeArrayCallBacks, "an array owns its values");
  List objects;
  std::transform(values, values + count, std::back_inserter(objects), retain);
  return give<CFArrayRef>(list(objects));
}
CFIndex CFArrayGetCount(CFArrayRef array) { return std::ssize(valueOf<List>(array)); }
const void* CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index) {
  return valueOf<List>(array).at(static_cast<std::size_t>(index)).get();
}

CFDictionaryRef CFDictionaryCreate(CFAllocatorRef, const void** keys, const void** values, CFIndex count,
                                   const CFDictionaryKeyCallBacks* ofKeys, const CFDictionaryValueCallBacks* ofValues) {
  require(ofKeys == &kCFTypeDictionaryKeyCallBacks && ofValues == &kCFTypeDictionaryValueCallBacks,
          "a dictionary owns its keys and values");
  Dictionary dictionary;
  for (CFIndex i = 0; i < count; ++i) dictionary[valueOf<std::string>(keys[i])] = retain(values[i]);
  return give<CFDictionaryRef>(object(dictionary));
}

CFMutableDataRef CFDataCreateMutable(CFAllocatorRef, CFIndex capacity) {
  require(capacity == 0, "data of any length");
  return give<CFMutableDataRef>(text(""));
}
CFIndex CFDataGetLength(CFDataRef data) { return std::ssize(valueOf<std::string>(data)); }
const UInt8* CFDataGetBytePtr(CFDataRef data) {
  return reinterpret_cast<const UInt8*>(valueOf<std::string>(data).data());
}

@implementation NSString
- (instancetype)initWithBytes:(const void*)bytes length:(NSUInteger)length encoding:(NSStringEncoding)encoding {
  require(encoding == NSUTF8StringEncoding, "UTF-8");
  const std::string value(static_cast<const char*>(bytes), length);
  if (tavik::text::isValidUTF8(value)) return anyOf(self) = value, self;
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
TAVIK_ANSWER(+(instancetype)arrayWithObject : (id)element, lend(list({retain(element)})))
TAVIK_ANSWER(-(instancetype)init, (anyOf(self) = List{}, self))
TAVIK_ANSWER(-(id)objectAtIndex : (NSUInteger)index, as<id>(valueOf<List>(self).at(index)))
TAVIK_ANSWER(-(NSUInteger)count, valueOf<List>(self).size())
@end

@implementation NSDictionary
- (id)objectForKey:(id)key {
  const auto& dictionary = valueOf<Dictionary>(self);
  const auto found = dictionary.find(valueOf<std::string>(key));
  return found != dictionary.end() ? as<id>(found->second) : nil;
}
@end

@implementation NSError
TAVIK_ANSWER(-(NSString*)localizedDescription, lend(text("denied")))
@end

@implementation NSBundle
TAVIK_ANSWER(+(NSBundle*)mainBundle, lend(object({}, self)))
- (NSString*)pathForResource:(NSString*)name ofType:(NSString*)type {
  const auto file = valueOf<std::string>(name) + "." + valueOf<std::string>(type);
  return lend(file == "perception-sensitive-apps.yaml" ? world().resource : std::nullopt);
}
@end

@implementation NSFileManager
TAVIK_ANSWER(+(NSFileManager*)defaultManager, lend(object({}, self)))
TAVIK_ANSWER(-(BOOL)fileExistsAtPath : (NSString*)path, std::filesystem::exists(valueOf<std::string>(path)))
@end

@implementation NSProcessInfo
TAVIK_ANSWER(+(NSProcessInfo*)processInfo, lend(object({}, self)))
TAVIK_ANSWER(-(NSDictionary*)environment, lend(object(world().environment)))
@end

NSString* NSUserName() { return lend(text("ada")); }
