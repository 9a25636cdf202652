#import <Foundation/Foundation.h>
#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <unistd.h>

#include "runtime.h"
#include "text/utf8.h"

extern "C" int __CFConstantStringClassReference[32];
int __CFConstantStringClassReference[32];

namespace tavik::fake {
namespace {

struct Object {
  Class kind;
  std::any value;
  std::atomic<long> references = 1;
};

Object& at(const void* object) { return *static_cast<Object*>(const_cast<void*>(object)); }

Class classFor(const std::any& value) {
  if (value.type() == typeid(std::string)) return [NSString class];
  if (value.type() == typeid(double)) return [NSNumber class];
  if (value.type() == typeid(List)) return [NSArray class];
  return value.type() == typeid(Dictionary) ? [NSDictionary class] : [NSObject class];
}

thread_local std::vector<List> pools;

}  // namespace

World& world() {
  static World theOne;
  return theOne;
}

bool fails(const std::string& operation) { return world().failing.contains(operation); }

bool isMainThread() { return ::gettid() == ::getpid(); }

void require(bool condition, const char* what) {
  if (condition) return;
  std::fprintf(stderr, "misuse: %s\n", what);
  std::abort();
}

Held object(const std::any& value, Class kind) { return {new Object{kind, value}, CFRelease}; }
Held object(const std::any& value) { return object(value, classFor(value)); }

Held retain(const void* object) { return {CFRetain(object), CFRelease}; }

id lend(const Held& held) {
  require(!pools.empty(), "there is a pool to take what is lent");
  pools.back().push_back(held);
  return as<id>(held);
}

/// A string constant consists of a class, for one of Core Foundation a word of flags, and the bytes.
std::any& anyOf(const void* object) {
  const auto* const words = static_cast<const char* const*>(object);
  const bool isCore = words[0] == reinterpret_cast<const char*>(&__CFConstantStringClassReference);
  if (!isCore && at(object).kind != [NSConstantString class]) return at(object).value;
  static std::map<const void*, std::any> constants;
  return constants.try_emplace(object, std::string(words[isCore ? 2 : 1])).first->second;
}

}  // namespace tavik::fake

using namespace tavik::fake;

/// LeakSanitizer: what the Objective-C runtime allocates while it loads classes is never freed.
extern "C" const char* __lsan_default_suppressions() { return "leak:objc_malloc\n"; }
extern "C" const char* __lsan_default_options() { return "print_suppressions=0"; }

CFTypeRef CFRetain(CFTypeRef object) { return ++at(object).references, object; }
void CFRelease(CFTypeRef object) {
  if (--at(object).references == 0) delete &at(object);
}
Boolean CFEqual(CFTypeRef left, CFTypeRef right) { return left == right; }
CFTypeID CFGetTypeID(CFTypeRef object) { return anyOf(object).type().hash_code(); }

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

/// The length in UTF-16: a continuation byte counts for nothing, the first byte of four for a surrogate pair.
static CFIndex unitsIn(const std::string& bytes) {
  CFIndex units = 0;
  for (const char byte : bytes) units += (byte & 0xC0) == 0x80 ? 0 : (byte & 0xF8) == 0xF0 ? 2 : 1;
  return units;
}

CFIndex CFStringGetLength(CFStringRef string) { return unitsIn(valueOf<std::string>(string)); }

CFIndex CFStringGetBytes(CFStringRef string, CFRange range, CFStringEncoding encoding, UInt8 lossByte,
                         Boolean isExternal, UInt8* buffer, CFIndex size, CFIndex* used) {
  require(range.location + range.length == CFStringGetLength(string), "the range ends with the string");
  require(encoding == kCFStringEncodingUTF8 && isExternal == 0, "UTF-8 without a byte-order mark");
  auto bytes = valueOf<std::string>(string);
  while (unitsIn(bytes) > range.length || (!bytes.empty() && tavik::text::isContinuationByte(bytes[0])))
    bytes.erase(0, 1);
  // The loss byte counts only where the string does not have all of its characters in one place.
  if (lossByte == 0 || !fails("characters in one place"))
    bytes.resize(std::min(bytes.size(), bytes.find(kUnpairedSurrogate)));
  std::ranges::replace(bytes, kUnpairedSurrogate, static_cast<char>(lossByte));
  require(buffer == nullptr || std::ssize(bytes) <= size, "the string fits");
  if (buffer != nullptr) std::memcpy(buffer, bytes.data(), bytes.size());
  *used = std::ssize(bytes);
  return unitsIn(bytes);
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

@implementation NSObject
TAVIK_ANSWER(+(instancetype)alloc, give<id>(object({}, self)))
TAVIK_ANSWER(+(instancetype) new, [[self alloc] init])
TAVIK_ANSWER(+(Class) class, self)
TAVIK_ANSWER(-(instancetype)init, self)
TAVIK_ANSWER(-(BOOL)isKindOfClass : (Class)kind, at(self).kind == kind)
TAVIK_ANSWER(-(instancetype)retain, (CFRetain(self), self))
TAVIK_ANSWER(-(void)release, CFRelease(self))
@end

@implementation NSAutoreleasePool
TAVIK_ANSWER(-(instancetype)init, (pools.emplace_back(), self))
TAVIK_ANSWER(-(void)drain, (pools.pop_back(), CFRelease(self)))
@end

@implementation NSString
- (instancetype)initWithBytes:(const void*)bytes length:(NSUInteger)length encoding:(NSStringEncoding)encoding {
  require(encoding == NSUTF8StringEncoding, "UTF-8");
  const std::string value(static_cast<const char*>(bytes), length);
  if (tavik::text::isValidUTF8(value)) return anyOf(self) = value, self;
  return [self release], nil;
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
  const auto found = valueOf<Dictionary>(self).find(valueOf<std::string>(key));
  return found != valueOf<Dictionary>(self).end() ? as<id>(found->second) : nil;
}
@end

@implementation NSError
TAVIK_ANSWER(-(NSString*)localizedDescription, lend(text("denied")))
@end

@implementation NSBundle
TAVIK_ANSWER(+(NSBundle*)mainBundle, lend(object({}, self)))
- (NSString*)pathForResource:(NSString*)name ofType:(NSString*)type {
  const auto file = valueOf<std::string>(name) + "." + valueOf<std::string>(type);
  return lend(file == "perception-sensitive-apps.yaml" ? world().resource : std::nullopt, [NSString class]);
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
