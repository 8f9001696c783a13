#pragma once

#include <optional>
#include <string>
#include <vector>

#include "accounts/account_book.h"
#include "accounts/sync/clock.h"
#include "accounts/transport/secret.h"
#include "base/result.h"
#include "host/commands/command_line/command.h"

namespace orlocal::host {

/// The clock that everything here goes by.
class SystemClock final : public accounts::Clock {
 public:
  store::Moment now() const override;
};

Result<accounts::SecretsFile> userSecrets();

bool isSubscription(const accounts::Account& account);
/// "active", "paused" or "failing"; translatable.
const char* stateOf(const accounts::Account& account);
/// The address without what nobody needs to see.
std::string addressOf(const accounts::Account& account);
/// "2026-11-02 09:00", on the user's clock.
std::string minuteText(store::Moment moment);

/// Says what is wrong with the words of a command.
ExitStatus wordsAreOff(Streams& streams, const std::string& sentence);

/// Rows in columns, the first one dim on a terminal.
void printColumns(const std::vector<std::vector<std::string>>& rows, Streams& streams);

}  // namespace orlocal::host
