#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/fmwrapper/export.h"

namespace orlocal::host {

/// Finds one text in others, in time that grows with the length of both and never with their product, however alike
/// they are. The text outlives the search.
class ORLOCAL_HOST_API TextSearch {
 public:
  explicit TextSearch(std::u16string_view what);

  /// The first place at or after `from`; `npos` when there is none, and for an empty text.
  std::u16string_view::size_type find(std::u16string_view text, std::u16string_view::size_type from) const;

 private:
  std::u16string_view m_what;
  std::vector<std::uint32_t> m_borders;  ///< of each beginning: the longest shorter beginning that it ends with
};

}  // namespace orlocal::host
