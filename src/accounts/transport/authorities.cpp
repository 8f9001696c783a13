#include "accounts/transport/authorities.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace orlocal::accounts {
namespace {

/// An empty folder of certificates vouches for nobody.
bool hasSome(const char* path) {
  std::error_code error;
  return path != nullptr && std::filesystem::exists(path, error) && !std::filesystem::is_empty(path, error) && !error;
}

}  // namespace

std::span<const char* const> placesOfAuthorities() {
  static constexpr const char* kPlaces[] = {
      "/etc/ssl/certs/ca-certificates.crt",                 // Debian, Ubuntu, Arch, Alpine
      "/etc/pki/ca-trust/extracted/pem/tls-ca-bundle.pem",  // Fedora, Red Hat
      "/etc/pki/tls/certs/ca-bundle.crt",                   // the same, older
      "/etc/ssl/ca-bundle.pem",                             // openSUSE
      "/etc/ssl/cert.pem",
  };
  return kPlaces;
}

std::optional<std::string> otherAuthorities(std::span<const char* const> built, std::span<const char* const> places) {
  if (std::any_of(built.begin(), built.end(), hasSome)) { return std::nullopt; }
  const auto found = std::find_if(places.begin(), places.end(), hasSome);
  return found == places.end() ? std::nullopt : std::optional<std::string>(*found);
}

}  // namespace orlocal::accounts
