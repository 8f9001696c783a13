#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <utility>

#include <tl/expected.hpp>

namespace orlocal {

enum class ErrorCode {
  kNotFound,      ///< the thing named is not there
  kInvalid,       ///< what was asked makes no sense, whatever the store holds
  kReadOnly,      ///< the calendar may not be changed
  kNotPermitted,  ///< the file or its folder may not be read or changed by this user
  kRefused,       ///< a rule of the thing itself forbids it: attendees, the last calendar, …
  kTooLarge,      ///< the item has more text, or comes more often, than can be kept and shown
  kUnsupported,   ///< well formed, and nothing that this program can follow
  kBusy,          ///< another process kept it locked past the bound
  kFull,          ///< no room on the disk
  kCorrupt,       ///< the file is damaged or is no calendar store
  kNewerFormat,   ///< the file was written by a newer program
  kBudget,        ///< the answer would need more steps or occurrences than allowed
  kInterrupted,   ///< stopped on request; nothing was written
  kIo,            ///< any other failure of the file, the system or a plug-in
};

/// A failure: what kind it is, and a sentence that names the thing and the remedy.
struct Failure {
  ErrorCode code = ErrorCode::kIo;
  std::string message;
  /// Where it is in a text that was read: in a calculation the byte, from 0; in a transcript the line, from 1.
  std::optional<std::size_t> place = std::nullopt;
};

template <class T>
using Result = tl::expected<T, Failure>;
using Status = Result<void>;

/// What a function that gives a `Result` returns when it failed.
using Failed = tl::unexpected<Failure>;
inline Failed failure(Failure why) { return Failed(std::move(why)); }
inline Failed failure(ErrorCode code, std::string message) { return failure(Failure{code, std::move(message)}); }

}  // namespace orlocal
