#include "accounts/sync/server_text.h"

#include <utility>

#include <fmt/format.h>

#include "base/hash.h"
#include "base/translation.h"
#include "base/try.h"
#include "store/icalendar/item_text.h"

namespace orlocal::accounts {
namespace {

/// A text that holds changed occurrences alone is those: the first stands for all.
store::WholeItem wholeOf(const store::ItemGroup& group) {
  if (group.main) { return {*group.main, group.changed}; }
  return {group.changed.front(), std::vector<store::Item>(group.changed.begin() + 1, group.changed.end())};
}

}  // namespace

ServerText ServerText::read(const std::string& text, const std::string& name) {
  ServerText made;
  auto reader = store::CalendarReader::ofText(text, name);
  if (!reader) {
    made.m_trouble = reader.error().message;
    return made;
  }
  store::ReadProblems problems = reader->problems();
  for (std::size_t i = 0; i < reader->size(); ++i) {
    store::ItemGroup group = reader->read(i, problems);
    if (group.main || !group.changed.empty()) { made.m_groups.push_back(std::move(group)); }
  }
  made.m_zones = reader->privateZones();
  if (!problems.refused.empty()) { made.m_trouble = problems.refused.front().message; }
  if (made.m_groups.empty()) { return made; }
  if (made.m_groups.size() > 1) {
    made.m_trouble = tr("the server keeps {} items in one text; the first was taken", made.m_groups.size());
    made.m_groups.resize(1);
  }
  made.m_item = wholeOf(made.m_groups.front());
  made.m_uid = made.m_item->main.uid;
  return made;
}

bool ServerText::isCut() const { return !m_groups.empty() && !m_groups.front().later.empty(); }

Result<ServerText::Put> ServerText::putInto(store::ItemWriter& writer, store::CalendarId calendar,
                                            const std::optional<std::string>& uid) const {
  Put put;
  for (const auto& [name, text] : m_zones) { ORLOCAL_CHECK(writer.putZone(name, text)); }
  const auto one = [&](store::Item main, std::vector<store::Item> changed) -> Status {
    if (uid) { main.uid = *uid; }
    ORLOCAL_TRY(const store::PutOutcome outcome, writer.put(calendar, main, changed));
    if (outcome != store::PutOutcome::kUnchanged) { put.changed = true; }
    if (put.main == 0) {
      put.main = main.id;
    } else {
      put.parts.push_back(main.id);
    }
    return {};
  };
  const store::ItemGroup& group = m_groups.front();
  if (!group.main) {
    for (const store::Item& stray : group.changed) { ORLOCAL_CHECK(one(stray, {})); }
    return put;
  }
  ORLOCAL_CHECK(one(*group.main, group.changed));
  for (const store::ItemGroup& later : group.later) { ORLOCAL_CHECK(one(*later.main, later.changed)); }
  return put;
}

std::uint64_t Standing::digest() const {
  std::string text = store::itemComponents(item);
  for (const store::WholeItem& series : cutOff) { text += store::itemComponents(series); }
  return contentHash(text);
}

Result<std::optional<Standing>> standing(store::ItemWriter& writer, store::ItemId main,
                                         const std::vector<store::ItemId>& parts) {
  ORLOCAL_TRY(auto whole, writer.read(main));
  if (!whole) { return std::nullopt; }
  Standing made{std::move(*whole), {}};
  for (const store::ItemId part : parts) {
    ORLOCAL_TRY(auto further, writer.read(part));
    if (!further) { continue; }
    if (further->main.recurrenceId) {
      made.item.changed.push_back(std::move(further->main));
    } else {
      made.cutOff.push_back(std::move(*further));
    }
  }
  return made;
}

}  // namespace orlocal::accounts
