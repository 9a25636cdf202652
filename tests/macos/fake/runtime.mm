#include "runtime.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <thread>
#include <utility>

#include "world.h"

extern "C" {
id class_createInstance(Class kind, std::size_t extraBytes);
const char* class_getName(Class kind);
int __CFConstantStringClassReference[32];
void* _NSConcreteStackBlock[32];
}

namespace tavik::fake {
namespace {

constexpr long kForever = 1L << 40;

struct Entry {
  std::string type;
  long references;
  std::any value;
};

struct Ledger {
  std::recursive_mutex mutex;
  std::map<const void*, Entry> objects;
  std::vector<std::thread> deliveries;
};

Ledger& ledger() {
  static auto& theOne = *new Ledger;
  return theOne;
}

/// A string constant: a class, for one of CoreFoundation a word of flags, and the bytes.
std::string literalOf(const void* object) {
  const auto* const words = static_cast<const char* const*>(object);
  if (words[0] == reinterpret_cast<const char*>(&__CFConstantStringClassReference)) return words[2];
  require(words[0] == reinterpret_cast<const char*>([NSConstantString class]), "not an object");
  return words[1];
}

/// The entry of a living object. A string constant enters the ledger when it is first met.
Entry& entryOf(const void* object) {
  require(object != nullptr, "null is no object");
  auto found = ledger().objects.find(object);
  if (found == ledger().objects.end()) {
    found = ledger().objects.emplace(object, Entry{"NSString", kForever, literalOf(object)}).first;
  }
  require(found->second.references > 0, found->second.type + " is used after its last release");
  return found->second;
}

thread_local std::vector<List> pools;

}  // namespace

void require(bool condition, const std::string& what) {
  if (condition) return;
  std::fprintf(stderr, "misuse: %s\n", what.c_str());
  std::abort();
}

id make(Class kind, const std::any& value, const std::string& type) {
  const std::lock_guard lock(ledger().mutex);
  id object = class_createInstance(kind, 0);
  ledger().objects.emplace(object, Entry{type.empty() ? class_getName(kind) : type, 1, value});
  return object;
}

id shared(Class kind) {
  static auto& objects = *new std::map<Class, id>;
  const std::lock_guard lock(ledger().mutex);
  id& object = objects[kind];
  if (object == nil) object = make(kind, {});
  entryOf(object).references = kForever;
  return object;
}

Held hold(const void* object) {
  return {object, [](const void* held) { held != nullptr ? CFRelease(held) : void(); }};
}

CFTypeID typeNamed(const std::string& type) { return std::hash<std::string>{}(type); }

std::any& anyOf(const void* object) {
  const std::lock_guard lock(ledger().mutex);
  return entryOf(object).value;
}

void deliver(std::function<void()> handle) {
  const std::lock_guard lock(ledger().mutex);
  ledger().deliveries.emplace_back([handle = std::move(handle)]() mutable {
    const std::lock_guard whole(ledger().mutex);
    @autoreleasepool {
      handle();
      handle = nullptr;
    }
  });
}

std::string liveObjects() {
  for (auto& delivery : std::exchange(ledger().deliveries, {})) delivery.join();
  std::string names;
  for (const auto& [object, entry] : ledger().objects) {
    if (entry.references > 0 && entry.references < kForever / 2) names += entry.type + " is still alive\n";
  }
  return names;
}

bool fails(const std::string& operation) { return world().failing.contains(operation); }

}  // namespace tavik::fake

using namespace tavik::fake;

/// LeakSanitizer: what the Objective-C runtime allocates while it loads classes is never freed.
extern "C" const char* __lsan_default_suppressions() { return "leak:objc_malloc\n"; }
extern "C" const char* __lsan_default_options() { return "print_suppressions=0"; }

CFTypeRef CFRetain(CFTypeRef object) {
  const std::lock_guard lock(ledger().mutex);
  ++entryOf(object).references;
  return object;
}

void CFRelease(CFTypeRef object) {
  const std::lock_guard lock(ledger().mutex);
  auto& entry = entryOf(object);
  if (--entry.references == 0) entry.value.reset();
}

CFTypeID CFGetTypeID(CFTypeRef object) {
  const std::lock_guard lock(ledger().mutex);
  return typeNamed(entryOf(object).type);
}

/// A block as the compiler lays it out (clang.llvm.org/docs/Block-ABI-Apple.html), one that captures C++ objects.
struct Block {
  struct Descriptor {
    unsigned long reserved, size;
    void (*copy)(void* to, const void* from);
    void (*dispose)(const void* block);
  };
  const void* isa;
  int flags, reserved;
  void (*invoke)();
  const Descriptor* descriptor;
};

void* _Block_copy(const void* source) {
  const auto* const block = static_cast<const Block*>(source);
  require(block != nullptr && block->isa == _NSConcreteStackBlock, "a handler is a block on the stack");
  void* const copy = std::malloc(block->descriptor->size);
  std::memcpy(copy, source, block->descriptor->size);
  block->descriptor->copy(copy, source);
  return copy;
}

void _Block_release(const void* copy) {
  static_cast<const Block*>(copy)->descriptor->dispose(copy);
  std::free(const_cast<void*>(copy));
}

@implementation NSObject
TAVIK_ANSWER(+(instancetype)alloc, make(self, {}))
TAVIK_ANSWER(+(instancetype) new, [[self alloc] init])
TAVIK_ANSWER(+(Class) class, self)
TAVIK_ANSWER(-(instancetype)init, self)
TAVIK_ANSWER(-(BOOL)isKindOfClass : (Class)kind, itsClass == kind)
TAVIK_ANSWER(-(void)release, CFRelease(self))
- (instancetype)retain {
  CFRetain(self);
  return self;
}
- (instancetype)autorelease {
  require(!pools.empty(), std::string("autoreleased without a pool: ") + class_getName(itsClass));
  pools.back().push_back(hold(self));
  return self;
}
@end

@implementation NSAutoreleasePool
- (instancetype)init {
  pools.emplace_back();
  return self;
}
- (void)drain {
  pools.pop_back();
  [self release];
}
@end
