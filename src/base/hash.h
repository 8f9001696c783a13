#pragma once

#include <cstdint>
#include <string_view>

namespace orlocal {

/// FNV-1a, 64 bits: names things by their content, the same everywhere and for ever.
constexpr std::uint64_t contentHash(std::string_view text) {
  std::uint64_t hash = 14695981039346656037U;
  for (const char c : text) { hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211U; }
  return hash;
}

}  // namespace orlocal
