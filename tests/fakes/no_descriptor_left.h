#pragma once

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace orlocal::fakes {

/// Under the sanitizers a call of a virtual function may look at memory through a pipe, and takes a sound object for a
/// broken one where it gets none: only narrow code can run there.
#if defined(__SANITIZE_ADDRESS__)
inline constexpr bool kSanitizersNeedDescriptors = true;
#elif defined(__clang__)
inline constexpr bool kSanitizersNeedDescriptors = __has_feature(address_sanitizer);
#else
inline constexpr bool kSanitizersNeedDescriptors = false;
#endif

/// A process that may open so many more files and no other, as long as this is there.
class NoDescriptorLeft {
 public:
  explicit NoDescriptorLeft(rlim_t left = 0) {
    ::getrlimit(RLIMIT_NOFILE, &m_before);
    // The lowest number that is free is the next to be given away.
    const int next = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    ::close(next);
    const rlimit none{.rlim_cur = static_cast<rlim_t>(next) + left, .rlim_max = m_before.rlim_max};
    ::setrlimit(RLIMIT_NOFILE, &none);
  }
  ~NoDescriptorLeft() { ::setrlimit(RLIMIT_NOFILE, &m_before); }
  NoDescriptorLeft(const NoDescriptorLeft&) = delete;
  NoDescriptorLeft& operator=(const NoDescriptorLeft&) = delete;

 private:
  rlimit m_before{};
};

}  // namespace orlocal::fakes
