// The part of CoreFoundation that the backend uses, declared anew so that it compiles where there is no Apple SDK.
#pragma once

#include <cstddef>
#include <cstdint>

using Boolean = unsigned char;
using UInt8 = unsigned char;
using CFIndex = long;
using CFTypeID = unsigned long;
using CFStringEncoding = std::uint32_t;
using CFAllocatorRef = const struct __CFAllocator*;
using CFTypeRef = const void*;
using CFStringRef = const struct __CFString*;
using CFNumberRef = const struct __CFNumber*;
using CFBooleanRef = const struct __CFBoolean*;
using CFArrayRef = const struct __CFArray*;
using CFDictionaryRef = const struct __CFDictionary*;
using CFDataRef = const struct __CFData*;
using CFMutableDataRef = struct __CFData*;

struct CFRange {
  CFIndex location, length;
};
inline CFRange CFRangeMake(CFIndex location, CFIndex length) { return {location, length}; }

struct CFArrayCallBacks {};
struct CFDictionaryKeyCallBacks {};
struct CFDictionaryValueCallBacks {};

enum : CFStringEncoding { kCFStringEncodingUTF8 = 0x08000100 };
enum CFNumberType : CFIndex { kCFNumberDoubleType = 13 };

#define CFSTR(text) reinterpret_cast<CFStringRef>(__builtin___CFStringMakeConstantString(text))

extern "C" {
extern const CFAllocatorRef kCFAllocatorDefault;
extern const CFArrayCallBacks kCFTypeArrayCallBacks;
extern const CFDictionaryKeyCallBacks kCFTypeDictionaryKeyCallBacks;
extern const CFDictionaryValueCallBacks kCFTypeDictionaryValueCallBacks;

Boolean CFEqual(CFTypeRef left, CFTypeRef right);
CFTypeRef CFRetain(CFTypeRef object);
void CFRelease(CFTypeRef object);
CFTypeID CFGetTypeID(CFTypeRef object);
CFTypeID CFNullGetTypeID();
CFTypeID CFStringGetTypeID();
CFTypeID CFBooleanGetTypeID();
CFTypeID CFNumberGetTypeID();
CFTypeID CFArrayGetTypeID();

CFStringRef CFStringCreateWithBytes(CFAllocatorRef allocator, const UInt8* bytes, CFIndex count,
                                    CFStringEncoding encoding, Boolean isExternal);
CFIndex CFStringGetLength(CFStringRef string);
CFIndex CFStringGetBytes(CFStringRef string, CFRange range, CFStringEncoding encoding, UInt8 lossByte,
                         Boolean isExternal, UInt8* buffer, CFIndex size, CFIndex* used);

Boolean CFBooleanGetValue(CFBooleanRef boolean);
CFNumberRef CFNumberCreate(CFAllocatorRef allocator, CFNumberType type, const void* value);
Boolean CFNumberGetValue(CFNumberRef number, CFNumberType type, void* value);

CFArrayRef CFArrayCreate(CFAllocatorRef allocator, const void** values, CFIndex count,
                         const CFArrayCallBacks* callBacks);
CFIndex CFArrayGetCount(CFArrayRef array);
const void* CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index);

CFDictionaryRef CFDictionaryCreate(CFAllocatorRef allocator, const void** keys, const void** values, CFIndex count,
                                   const CFDictionaryKeyCallBacks* keyCallBacks,
                                   const CFDictionaryValueCallBacks* valueCallBacks);

CFMutableDataRef CFDataCreateMutable(CFAllocatorRef allocator, CFIndex capacity);
CFIndex CFDataGetLength(CFDataRef data);
const UInt8* CFDataGetBytePtr(CFDataRef data);

void CFRunLoopRun();
}
