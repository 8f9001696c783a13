#pragma once

#include <map>
#include <string>
#include <string_view>

namespace orlocal {

using StringsTable = std::map<std::string, std::u16string, std::less<>>;

/// Reads a strings file: `"key" = "value";` in UTF-8, with comments of both kinds and the escapes \" \\ \n \r \t and
/// \Uxxxx. An entry that is malformed is left out together with the rest of its line; the first of two entries with one
/// key counts.
StringsTable parseStringsTable(std::string_view text);

/// The English table, as it was when the plug-in was built.
std::string_view builtInStrings();

}  // namespace orlocal
