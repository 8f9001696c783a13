#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/text.h"

namespace orlocal {

/// The last failure in words. Filled at the end of a failed function, clear from the start of the next one.
class orlo_PluginError {
 public:
  void clearError();

  /// The message and, after a blank, the extended text. "Success" when clear.
  std::string getError() const;
  /// The code in digits.
  std::string getErrorNumber() const;

  void setError(std::int32_t code, std::int32_t sysError, const OptionalText& extDesc);

 private:
  std::int32_t errorID = 0;
  std::int32_t sysID = 0;
  std::optional<std::string_view> strError;  ///< one of the constant messages
  OptionalText extendedError;
};

/// Clears the process-wide error object.
void ClearError();

}  // namespace orlocal
