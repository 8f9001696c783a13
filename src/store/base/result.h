#pragma once

#include <string>
#include <utility>

#include <tl/expected.hpp>

namespace orlocal::store {

enum class ErrorCode {
  kNotFound,      ///< the thing named is not in the store
  kInvalid,       ///< what was asked makes no sense, whatever the store holds
  kReadOnly,      ///< the calendar may not be changed
  kNotPermitted,  ///< the file or its folder may not be read or changed by this user
  kRefused,       ///< a rule of calendars forbids it: attendees, the last calendar, …
  kTooLarge,      ///< the item has more text, or comes more often, than can be kept and shown
  kUnsupported,   ///< well formed, and nothing that this program can follow
  kBusy,          ///< another process kept the store locked past the bound
  kFull,          ///< no room on the disk
  kCorrupt,       ///< the file is damaged or is no calendar store
  kNewerFormat,   ///< the file was written by a newer program
  kBudget,        ///< the answer would need more steps or occurrences than allowed
  kInterrupted,   ///< stopped on request; nothing was written
  kIo,            ///< any other failure of the file or the system
};

/// A failure: what kind it is, and a sentence that names the thing and the remedy.
struct Error {
  ErrorCode code = ErrorCode::kIo;
  std::string message;
};

template <class T>
using Result = tl::expected<T, Error>;
using Status = Result<void>;

inline tl::unexpected<Error> failure(ErrorCode code, std::string message) {
  return tl::unexpected<Error>(Error{code, std::move(message)});
}

}  // namespace orlocal::store
