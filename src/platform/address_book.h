#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace orlocal {

/// The user's address book. Asked for one thing: the card of an event's participant.
///
/// Main thread only. Arguments are borrowed for the call.
class AddressBook {
 public:
  virtual ~AddressBook() = default;

  /// The address of the person whose e-mail address is `email`, compared without case.
  /// Absent when there is no such person, the card has no address, or the book cannot be read.
  virtual std::optional<std::string> addressOf(std::string_view email) const = 0;
};

}  // namespace orlocal
