#pragma once

#include <string>
#include <vector>

namespace orlocal {

/// The languages that the environment asks for, the most wanted first: LANGUAGE (a list separated by colons), else the
/// first of LC_ALL, LC_MESSAGES and LANG that is set. "de_CH.UTF-8" asks for "de_CH", then "de". English ends the list;
/// "C" and "POSIX" are English, and LANGUAGE does not count beside them; "C.UTF-8" is English where LANGUAGE is not
/// set.
std::vector<std::string> preferredLanguages();

}  // namespace orlocal
