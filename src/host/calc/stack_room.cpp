#include "host/calc/stack_room.h"

#include <algorithm>
#include <cstdint>

#include <pthread.h>

namespace orlocal::host::calc {

namespace {

constexpr std::size_t kLargestReserve = std::size_t{256} * 1024;

/// The address below which a recursion does not go; 0 where the system does not tell.
std::size_t measureLimit() {
  pthread_attr_t attributes;
  if (::pthread_getattr_np(::pthread_self(), &attributes) != 0) { return 0; }
  void* lowest = nullptr;
  std::size_t size = 0;
  std::size_t guard = 0;
  const bool known = ::pthread_attr_getstack(&attributes, &lowest, &size) == 0;
  if (::pthread_attr_getguardsize(&attributes, &guard) != 0) { guard = 0; }
  ::pthread_attr_destroy(&attributes);
  if (!known) { return 0; }
  return reinterpret_cast<std::uintptr_t>(lowest) + guard + std::min(size / 3, kLargestReserve);
}

}  // namespace

// The frame's own address, not that of a local: an instrumented build keeps locals elsewhere.
std::size_t stackPlace() { return reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0)); }

std::size_t stackRoom() {
  thread_local const std::size_t limit = measureLimit();
  const std::size_t place = stackPlace();
  return place > limit ? place - limit : 0;
}

}  // namespace orlocal::host::calc
