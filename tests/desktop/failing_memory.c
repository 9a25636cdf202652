// Preloaded before the C library: the allocation with the number $FAILING_ALLOCATION fails, and with $FAILING_FOR_GOOD
// all after it. Without the first variable, the number of allocations goes to
// the descriptor $ALLOCATION_COUNT when it ends.
#define _GNU_SOURCE
#include <errno.h>
#include <stdatomic.h>
#include <stddef.h>
#include <stdio.h>
#include <stdlib.h>

void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* block, size_t size);
void* __libc_memalign(size_t alignment, size_t size);

static atomic_long allocations;
static long failing = -1, fails_for_good;

__attribute__((constructor)) static void begin(void) {
  const char* number = getenv("FAILING_ALLOCATION");
  fails_for_good = getenv("FAILING_FOR_GOOD") != NULL;
  failing = number ? atol(number) : 0;
}

static int fails(void) {
  if (failing < 0) return 0;  // the loader's own
  const long number = ++allocations;
  const int is_failing = failing && (number == failing || (fails_for_good && number > failing));
  if (is_failing) errno = ENOMEM;
  return is_failing;
}

void* malloc(size_t size) { return fails() ? NULL : __libc_malloc(size); }
void* calloc(size_t count, size_t size) { return fails() ? NULL : __libc_calloc(count, size); }
void* realloc(void* block, size_t size) { return fails() ? NULL : __libc_realloc(block, size); }
void* memalign(size_t alignment, size_t size) { return fails() ? NULL : __libc_memalign(alignment, size); }
void* aligned_alloc(size_t alignment, size_t size) { return memalign(alignment, size); }
int posix_memalign(void** block, size_t alignment, size_t size) {
  void* made = memalign(alignment, size);
  if (made) *block = made;
  return made ? 0 : ENOMEM;
}

__attribute__((destructor)) static void end(void) {
  const char* descriptor = getenv("ALLOCATION_COUNT");
  if (descriptor) dprintf(atoi(descriptor), "%ld", (long)allocations);
}
