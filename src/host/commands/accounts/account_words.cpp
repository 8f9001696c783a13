#include "host/commands/accounts/account_words.h"

#include <algorithm>
#include <ostream>

#include <fmt/format.h>

#include "accounts/transport/url.h"
#include "base/translation.h"
#include "base/try.h"
#include "host/commands/command_line/terminal_text.h"
#include "host/commands/command_line/trouble.h"
#include "host/commands/words/day_words.h"
#include "store/time/clock.h"
#include "store/time/zone.h"

namespace orlocal::host {

store::Moment SystemClock::now() const { return store::now(); }

Result<accounts::SecretsFile> userSecrets() {
  ORLOCAL_TRY(auto file, accounts::SecretsFile::userFile());
  return accounts::SecretsFile(std::move(file));
}

bool isSubscription(const accounts::Account& account) {
  return account.settings.kind == accounts::AccountSettings::Kind::kSubscription;
}

const char* stateOf(const accounts::Account& account) {
  if (account.settings.paused) { return translatable("paused"); }
  return account.state.failures > 0 ? translatable("failing") : translatable("active");
}

std::string addressOf(const accounts::Account& account) {
  const std::string& address = account.settings.address;
  // A local file, or a mail domain.
  return address.find("://") == address.npos ? address : accounts::shownUrl(address);
}

std::string minuteText(store::Moment moment) {
  const store::LocalTime time = store::Zone::ofUser().toLocal(moment);
  return isoDay(store::LocalDay(time)) + " " + clockTime(time);
}

ExitStatus wordsAreOff(Streams& streams, const std::string& sentence) {
  tellTrouble(streams.err, sentence);
  return ExitStatus::kUsage;
}

void printColumns(const std::vector<std::vector<std::string>>& rows, Streams& streams) {
  const Ink ink(streams.colors);
  std::vector<std::size_t> widths(rows.front().size());
  for (const auto& row : rows) {
    for (std::size_t i = 0; i < row.size(); ++i) { widths[i] = std::max(widths[i], displayWidth(printable(row[i]))); }
  }
  for (std::size_t r = 0; r < rows.size(); ++r) {
    std::string text;
    for (std::size_t i = 0; i < rows[r].size(); ++i) { text += padded(printable(rows[r][i]), widths[i]) + "  "; }
    text.erase(text.find_last_not_of(' ') + 1);
    streams.out << (r == 0 ? ink.dim(text) : text) << '\n';
  }
}

}  // namespace orlocal::host
