#include "full_disk.h"

#include <dlfcn.h>
#include <errno.h>
#include <stdbool.h>
#include <stddef.h>
#include <sys/types.h>
#include <unistd.h>

/* The program's own functions of these names stand before the C library's for everything that it loads. */

static bool full;

void fillDisk(void) { full = true; }

static bool refused(int descriptor) {
  if (!full || descriptor <= STDERR_FILENO) { return false;
}
  errno = ENOSPC;
  return true;
}

static void* systems(const char* name) { return dlsym(RTLD_NEXT, name); }

ssize_t write(int descriptor, const void* bytes, size_t count) {
  static ssize_t (*system)(int, const void*, size_t);
  if (system == NULL) { *(void**)&system = systems("write");
}
  return refused(descriptor) ? -1 : system(descriptor, bytes, count);
}

ssize_t pwrite(int descriptor, const void* bytes, size_t count, off_t at) {
  static ssize_t (*system)(int, const void*, size_t, off_t);
  if (system == NULL) { *(void**)&system = systems("pwrite");
}
  return refused(descriptor) ? -1 : system(descriptor, bytes, count, at);
}

ssize_t pwrite64(int descriptor, const void* bytes, size_t count, off_t at) {
  return pwrite(descriptor, bytes, count, at);
}

int posix_fallocate(int descriptor, off_t at, off_t count) {
  static int (*system)(int, off_t, off_t);
  if (system == NULL) { *(void**)&system = systems("posix_fallocate");
}
  return refused(descriptor) ? ENOSPC : system(descriptor, at, count);
}
