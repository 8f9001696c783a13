#pragma once

#include <exception>
#include <new>
#include <type_traits>

#include "platform/host/fm_api.h"

namespace orlocal {

inline void throwIfFailed(const fmx::Exception& x) {
  if (x.code == 0) [[likely]] { return; }
  if (x.code == 1) { throw std::bad_alloc(); }
  if (x.code == 2) { throw std::exception(); }
}

/// Calls a function of the host's interface with an exception record of its own. The host's "out of memory" becomes
/// `std::bad_alloc`, any other failure of it `std::exception`; nothing in the plug-in catches them.
template <auto Function, class... Arguments>
inline auto hostCall(Arguments... arguments) {
  fmx::Exception x;
  using Result = decltype(Function(arguments..., &x));
  if constexpr (std::is_void_v<Result>) {
    Function(arguments..., &x);
    throwIfFailed(x);
  } else {
    const Result result = Function(arguments..., &x);
    throwIfFailed(x);
    return result;
  }
}

/// An object of the host's library that we made and that ends with us. Its end is a call like any other, whose failure
/// leaves the scope that it stood in; in a scope that an exception leaves already, that exception is the one to tell.
template <class Object, auto Delete>
class HostOwned {
 public:
  HostOwned(const HostOwned&) = delete;
  HostOwned& operator=(const HostOwned&) = delete;

  Object* get() const { return m_object; }

 protected:
  explicit HostOwned(Object* object) : m_object(object) {}
  ~HostOwned() noexcept(false) {
    fmx::Exception x;
    Delete(m_object, &x);
    if (x.code != 0 && std::uncaught_exceptions() == m_leavingWhenMade) { throwIfFailed(x); }
  }

 private:
  Object* m_object;
  int m_leavingWhenMade = std::uncaught_exceptions();
};

}  // namespace orlocal
