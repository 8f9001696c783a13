#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace orlocal {

/// The plug-in's localized strings tables. Main thread only.
class BundleStrings {
 public:
  virtual ~BundleStrings() = default;

  /// The string under `key` in `table`, in the first of the user's languages that has the table; else the built-in one.
  /// Absent when no table has the key. `bundle` is the host's reference to the plug-in, taken as opaque.
  virtual std::optional<std::u16string> localizedString(std::uintptr_t bundle, std::string_view key,
                                                        std::string_view table) = 0;
};

}  // namespace orlocal
