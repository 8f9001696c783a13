#include "accounts/remedy.h"

#include <algorithm>
#include <iterator>

namespace orlocal::accounts {
namespace {

constexpr struct {
  Trouble trouble;
  std::string_view remedy;
} kRemedies[] = {
    {Trouble::kUnreachable, "Check the network and the address."},
    {Trouble::kUntrusted,
     "Check the address; where the server has a certificate of its own authority, give that with "
     "--ca-file."},
    {Trouble::kUnauthorized,
     "Check user and password; some servers want a password made for programs. orlocal account "
     "set gives an account another one."},
    {Trouble::kForbidden, "Ask whoever runs the server for the right to it."},
    {Trouble::kNotFound, "Check the address."},
    {Trouble::kTooLarge, "Make it smaller, or ask whoever runs the server."},
    {Trouble::kFull, "Make room on the server."},
    {Trouble::kLater, "Try again later."},
    {Trouble::kServerError, "Try again later; if that lasts, tell whoever runs the server."},
    {Trouble::kNonsense, "Check the address."},
    {Trouble::kUnsupported, "Check the address: the server there cannot do what is needed."},
    {Trouble::kNoSecret, "Check the command or file that has the password."},
};

}  // namespace

std::string_view remedyFor(Trouble trouble) {
  const auto* found =
      std::find_if(std::begin(kRemedies), std::end(kRemedies), [&](const auto& row) { return row.trouble == trouble; });
  return found != std::end(kRemedies) ? found->remedy : std::string_view();
}

}  // namespace orlocal::accounts
