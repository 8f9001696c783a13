#pragma once

#include <optional>
#include <span>
#include <string>

namespace orlocal::accounts {

/// Where distributions keep the certificates of authorities, as one file.
std::span<const char* const> placesOfAuthorities();

/// The file of authorities to use in place of those in which the library looks by itself (`built`: files and folders,
/// null for none): the first of `places`. None where one of the library's own is there, or where nothing is. A library
/// that was carried here from another distribution looks where that one has them.
std::optional<std::string> otherAuthorities(std::span<const char* const> built,
                                            std::span<const char* const> places = placesOfAuthorities());

}  // namespace orlocal::accounts
