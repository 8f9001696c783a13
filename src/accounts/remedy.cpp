#include "accounts/remedy.h"

#include <algorithm>
#include <iterator>

#include "base/translation.h"

namespace orlocal::accounts {
namespace {

constexpr struct {
  Trouble trouble;
  const char* remedy;
} kRemedies[] = {
    {Trouble::kUnreachable, translatable("Check the network and the address.")},
    {Trouble::kUntrusted,
     translatable("Check the address; where the server has a certificate of its own authority, give that with "
                  "--ca-file.")},
    {Trouble::kUnauthorized,
     translatable("Check user and password; some servers want a password made for programs. orlocal account "
                  "set gives an account another one.")},
    {Trouble::kForbidden, translatable("Ask whoever runs the server for the right to it.")},
    {Trouble::kNotFound, translatable("Check the address.")},
    {Trouble::kTooLarge, translatable("Make it smaller, or ask whoever runs the server.")},
    {Trouble::kFull, translatable("Make room on the server.")},
    {Trouble::kLater, translatable("Try again later.")},
    {Trouble::kServerError, translatable("Try again later; if that lasts, tell whoever runs the server.")},
    {Trouble::kNonsense, translatable("Check the address.")},
    {Trouble::kUnsupported, translatable("Check the address: the server there cannot do what is needed.")},
    {Trouble::kNoSecret, translatable("Check the command or file that has the password.")},
};

}  // namespace

std::string remedyFor(Trouble trouble) {
  const auto* found =
      std::find_if(std::begin(kRemedies), std::end(kRemedies), [&](const auto& row) { return row.trouble == trouble; });
  return found != std::end(kRemedies) ? translated(found->remedy) : std::string();
}

}  // namespace orlocal::accounts
