#include "host/commands/care/removal.h"

#include <map>

#include <fmt/format.h>

#include "base/translation.h"
#include "base/try.h"
#include "host/commands/command_line/terminal_text.h"
#include "host/commands/words/listed_words.h"
#include "store/edits/item_writer.h"

namespace orlocal::host {

Result<std::vector<bool>> removeUnchanged(store::CalendarStore& store,
                                          const std::vector<const store::WholeItem*>& items) {
  std::vector<bool> removed(items.size(), false);
  if (items.empty()) { return removed; }
  ORLOCAL_TRY(const auto writer, store.startWriting());
  for (std::size_t i = 0; i < items.size(); ++i) {
    const store::ItemId id = items[i]->main.id;
    ORLOCAL_TRY(const auto now, writer->read(id));
    ORLOCAL_TRY(const auto calendar, writer->calendarWith(items[i]->main.calendar));
    // Somebody else may have changed it, or what its calendar allows, while the question stood.
    if (!now || *now != *items[i] || !calendar || !allowsChanges(*calendar)) { continue; }
    ORLOCAL_CHECK(writer->remove(id));
    removed[i] = true;
  }
  ORLOCAL_CHECK(writer->commit());
  return removed;
}

std::string serversInWords(const std::vector<const store::WholeItem*>& items, const CalendarNames& names) {
  std::map<std::string, std::size_t> counts;
  for (const store::WholeItem* item : items) {
    const store::Calendar* calendar = names.calendar(item->main.calendar);
    if (calendar == nullptr || calendar->type != store::Source::Type::kCalDav) { continue; }
    ++counts[names.account(*calendar).value_or("")];
  }
  if (counts.empty()) { return {}; }
  std::size_t all = 0;
  std::vector<std::string> accounts;
  for (const auto& [account, count] : counts) {
    all += count;
    accounts.push_back('"' + printable(account) + '"');
  }
  const std::string where = listed(accounts);
  if (all < items.size()) {
    return trn(" {} of them is removed from the server of {}, too.",
               " {} of them are removed from the server of {}, too.", all, all, where);
  }
  return all == 1 ? tr(" It is removed from the server of {}, too.", where)
                  : tr(" They are removed from the server of {}, too.", where);
}

std::string countedInWords(std::size_t events, std::size_t reminders) {
  std::vector<std::string> parts;
  if (events > 0) { parts.push_back(trn("{} event", "{} events", events, events)); }
  if (reminders > 0) { parts.push_back(trn("{} reminder", "{} reminders", reminders, reminders)); }
  return parts.empty() ? tr("nothing") : listed(parts);
}

}  // namespace orlocal::host
