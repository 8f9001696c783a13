#pragma once

#include <exception>
#include <new>
#include <type_traits>

#include "platform/host/fm_api.h"

namespace orlocal {

/// Calls a function of the host's interface with an exception record of its own. The host's "out of memory" becomes
/// `std::bad_alloc`, any other failure of it `std::exception`; nothing in the plug-in catches them.
template <auto Function, class... Arguments>
inline auto hostCall(Arguments... arguments) {
  fmx::Exception x;
  const auto check = [&x] {
    if (x.code == 0) [[likely]] {
      return;
    }
    if (x.code == 1) throw std::bad_alloc();
    if (x.code == 2) throw std::exception();
  };
  using Result = decltype(Function(arguments..., &x));
  if constexpr (std::is_void_v<Result>) {
    Function(arguments..., &x);
    check();
  } else {
    const Result result = Function(arguments..., &x);
    check();
    return result;
  }
}

/// An object of the host's library that we made and that ends with us.
template <class Object, auto Delete>
class HostOwned {
 public:
  HostOwned(const HostOwned&) = delete;
  HostOwned& operator=(const HostOwned&) = delete;

  Object* get() const { return m_object; }

 protected:
  explicit HostOwned(Object* object) : m_object(object) {}
  ~HostOwned() {
    // Nobody can act on a failed release, and an unwinding call must not throw again.
    fmx::Exception x;
    Delete(m_object, &x);
  }

 private:
  Object* m_object;
};

}  // namespace orlocal
