#include "runtime.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>

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
CFTypeID CFGetTypeID(CFTypeRef object) { return anyOf(object).type().hash_code(); }

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
