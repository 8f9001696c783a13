#include "accounts/sync/merge.h"

#include <algorithm>
#include <optional>
#include <set>
#include <string_view>
#include <utility>

#include "accounts/sync/field_lines.h"
#include "accounts/sync/item_fields.h"
#include "accounts/sync/resource_text.h"
#include "accounts/sync/series_end.h"
#include "store/icalendar/item_text.h"
#include "store/model/model.h"
#include "store/time/time_text.h"

namespace orlocal::accounts {
namespace {

using store::Item;
using store::WholeItem;

/// What of one component came from where.
struct Choice {
  std::vector<std::string> mine;       ///< fields that are ours
  std::vector<std::string> conflicts;  ///< fields that stay the server's
};

bool names(const std::vector<std::string>& list, std::string_view name) {
  return std::find(list.begin(), list.end(), name) != list.end();
}

Choice choose(const Fields& base, const Fields& theirs, const Fields& mine, const std::optional<Fields>& sent,
              bool hasBase) {
  std::set<std::string, std::less<>> all;
  for (const Fields* fields : {&base, &theirs, &mine}) {
    for (const auto& [field, lines] : *fields) { all.insert(field); }
  }
  Choice choice;
  for (const std::string& field : all) {
    const auto& ours = linesOf(mine, field);
    const auto& server = linesOf(theirs, field);
    const auto& before = linesOf(base, field);
    const bool asSent = sent && server == linesOf(*sent, field);
    if (ours == server || (hasBase && !asSent && ours == before)) { continue; }
    const bool onlyOurs = asSent || (hasBase ? server == before : server.empty());
    (onlyOurs ? choice.mine : choice.conflicts).push_back(field);
  }
  return choice;
}

/// Exceptions are single dates, and each counts for itself.
std::vector<std::string> mergedLines(const Fields& base, const Fields& theirs, const Fields& mine,
                                     std::string_view field) {
  std::vector<std::string> lines;
  const auto& before = linesOf(base, field);
  const auto& server = linesOf(theirs, field);
  for (const std::string& line : linesOf(mine, field)) {
    if (names(server, line) || !names(before, line)) { lines.push_back(line); }
  }
  for (const std::string& line : server) {
    if (!names(before, line) && !names(lines, line)) { lines.push_back(line); }
  }
  std::sort(lines.begin(), lines.end());
  return lines;
}

class Merge {
 public:
  Merge(const ItemState* base, const ItemState& theirs, const WholeItem& mine, const WholeItem* sent)
      : m_hasBase(base != nullptr),
        m_base(partsOf(base != nullptr ? &base->item : nullptr)),
        m_theirs(partsOf(&theirs.item)),
        m_mine(partsOf(&mine)),
        m_sent(partsOf(sent)),
        m_baseWhole(base != nullptr ? &base->item : nullptr),
        m_theirsWhole(theirs.item),
        m_mineWhole(mine),
        m_text(takenApart(theirs.text)) {}

  /// Nothing but these fields changes; none are all.
  void takeOnly(const std::vector<std::string>& fields) { m_only = fields; }

  MergedItem run() {
    settleTimes();
    std::set<std::string> keys;
    for (const auto* parts : {&m_base, &m_theirs, &m_mine}) {
      for (const auto& [key, part] : *parts) { keys.insert(key); }
    }
    for (const std::string& key : keys) { mergePart(key); }
    if (m_result.differs) { addZones(); }
    m_result.text = putTogether(m_text);
    return std::move(m_result);
  }

 private:
  /// Whether one side's times make those of the other meaningless.
  void settleTimes() {
    const Fields base = fieldsOf(partOf(m_base, ""));
    const Fields theirs = fieldsOf(partOf(m_theirs, ""));
    const Fields mine = fieldsOf(partOf(m_mine, ""));
    if (!m_hasBase) { return; }
    const auto changed = [&](const Fields& side, std::initializer_list<std::string_view> fields) {
      return std::any_of(fields.begin(), fields.end(),
                         [&](std::string_view field) { return linesOf(side, field) != linesOf(base, field); });
    };
    const auto same = [&](std::initializer_list<std::string_view> fields) {
      return std::all_of(fields.begin(), fields.end(),
                         [&](std::string_view field) { return linesOf(mine, field) == linesOf(theirs, field); });
    };
    const bool repeats = !linesOf(base, kRepetitionField).empty() || !linesOf(theirs, kRepetitionField).empty() ||
                         !linesOf(mine, kRepetitionField).empty();
    if (!repeats || same({kTimeField, kRepetitionField})) { return; }
    const bool mineMoved = changed(mine, {kTimeField, kRepetitionField});
    const bool theirsMoved = changed(theirs, {kTimeField, kRepetitionField});
    if (mineMoved != theirsMoved && isOnlyEnded(mineMoved)) { return; }
    const bool mineHangs = changed(mine, {kExceptionsField}) || occurrencesDiffer(m_mine);
    const bool theirsHangs = changed(theirs, {kExceptionsField}) || occurrencesDiffer(m_theirs);
    m_timesClash = (mineMoved && (theirsMoved || theirsHangs)) || (theirsMoved && mineHangs);
    m_oursMoved = mineMoved && !m_timesClash;
    if (m_timesClash) { addConflict(kTimeField, ""); }
  }

  /// Whether one side ended the series sooner, and the other changed nothing but what comes before that: then both
  /// changes are what they would be alone.
  bool isOnlyEnded(bool byMine) const {
    const WholeItem& ended = byMine ? m_mineWhole : m_theirsWhole;
    const auto end = endedSooner(*m_baseWhole, ended);
    return end && differOnlyUpTo(*end, *m_baseWhole, byMine ? m_theirsWhole : m_mineWhole);
  }

  bool occurrencesDiffer(const Parts& side) const {
    const auto isSame = [](const auto& a, const auto& b) {
      return a.first == b.first && (a.first.empty() || fieldsOf(a.second) == fieldsOf(b.second));
    };
    return !std::equal(side.begin(), side.end(), m_base.begin(), m_base.end(), isSame);
  }

  void mergePart(const std::string& key) {
    const Item* base = partOf(m_base, key);
    const Item* theirs = partOf(m_theirs, key);
    const Item* mine = partOf(m_mine, key);
    // Where the times are the server's, so are the occurrences that hang on them.
    if (!key.empty() && m_timesClash) { return; }
    if (mine == nullptr) {
      removePart(key, base, theirs);
      return;
    }
    if (theirs == nullptr) {
      addPart(key, base, *mine);
      return;
    }
    const Fields before = fieldsOf(base), server = fieldsOf(theirs), ours = fieldsOf(mine);
    const Item* sentPart = partOf(m_sent, key);
    const auto sent = sentPart != nullptr ? std::optional(fieldsOf(sentPart)) : std::nullopt;
    Choice choice = choose(before, server, ours, sent, base != nullptr);
    std::erase_if(choice.mine, [&](const std::string& field) { return !mayTake(field, key); });
    if (m_timesClash) {
      for (const std::string_view field : {kTimeField, kRepetitionField, kExceptionsField}) {
        std::erase(choice.mine, field);
        std::erase(choice.conflicts, field);
      }
    } else if (names(choice.conflicts, kExceptionsField) && m_hasBase) {
      std::erase(choice.conflicts, kExceptionsField);
      replace(key, kExceptionsField, mergedLines(before, server, ours, kExceptionsField));
    }
    for (const std::string& field : choice.mine) { replace(key, field, linesOf(ours, field)); }
    for (const std::string& field : choice.conflicts) { addConflict(field, key); }
    if (!choice.mine.empty()) { stamp(key, *mine); }
  }

  void removePart(const std::string& key, const Item* base, const Item* theirs) {
    // What is new on the server stays, and so does what it changed since.
    if (theirs == nullptr || base == nullptr || !mayTake(kRemoved, key)) { return; }
    if (fieldsOf(base) != fieldsOf(theirs) && !m_oursMoved) {
      addConflict(kRemoved, key);
      return;
    }
    std::erase_if(m_text.inner, [&](const TextComponent& component) { return isPart(component, key, *theirs); });
    m_result.differs = true;
  }

  void addPart(const std::string& key, const Item* base, const Item& mine) {
    // The server has taken out what we did not touch, or changed: the change is ours to keep.
    if (base != nullptr && fieldsOf(base) == fieldsOf(&mine)) { return; }
    if (!mayTake(kRemoved, key)) { return; }
    if (base != nullptr && m_hasBase) {
      addConflict(kRemoved, key);
      return;
    }
    TextComponent made = takenApart(store::itemComponents({mine, {}})).inner.front();
    if (const TextLine* uid = uidLine()) {
      for (TextLine& line : made.lines) {
        if (line.name == "UID") { line = *uid; }
      }
    }
    m_text.inner.push_back(std::move(made));
    m_result.differs = true;
  }

  const TextLine* uidLine() const {
    for (const TextComponent& component : m_text.inner) {
      if (const TextLine* uid = component.line("UID")) { return uid; }
    }
    return nullptr;
  }

  /// The server's component for that item.
  static bool isPart(const TextComponent& component, const std::string& key, const Item& item) {
    const char* name = item.kind == store::ItemKind::kEvent ? "VEVENT" : "VTODO";
    if (component.name != name) { return false; }
    const TextLine* original = component.line("RECURRENCE-ID");
    if (key.empty() || original == nullptr) { return key.empty() && original == nullptr; }
    return item.recurrenceId && original->text.ends_with(":" + store::timeText(*item.recurrenceId));
  }

  TextComponent* component(const std::string& key) {
    const Item* theirs = partOf(m_theirs, key);
    const auto found = std::find_if(m_text.inner.begin(), m_text.inner.end(), [&](const TextComponent& each) {
      return theirs != nullptr && isPart(each, key, *theirs);
    });
    return found != m_text.inner.end() ? &*found : nullptr;
  }

  /// Puts these lines (or alarms) in the place of the field's.
  void replace(const std::string& key, std::string_view field, const std::vector<std::string>& lines) {
    TextComponent* part = component(key);
    if (part == nullptr) { return; }
    std::vector<std::string> added = lines;
    const auto goes = [&](const auto& each) {
      if (fieldNameOf(each) != field) { return false; }
      // What did not change keeps the server's spelling, as that of the other attendees beside an answer.
      const auto ours = inOurSpelling(part->name, each, field);
      const auto stays = ours ? std::find(added.begin(), added.end(), *ours) : added.end();
      if (stays == added.end()) { return true; }
      added.erase(stays);
      return false;
    };
    std::erase_if(part->lines, goes);
    std::erase_if(part->inner, goes);
    for (const std::string& line : added) {
      const TextComponent made = takenApart(line);
      part->lines.insert(part->lines.end(), made.lines.begin(), made.lines.end());
      part->inner.insert(part->inner.end(), made.inner.begin(), made.inner.end());
    }
    m_result.differs = true;
  }

  static std::string_view fieldNameOf(const TextLine& line) {
    return isBookkeeping(line.name) ? std::string_view() : fieldOf(line.name);
  }
  static std::string_view fieldNameOf(const TextComponent& inner) {
    return inner.name == "VALARM" ? kAlarmsField : std::string_view(inner.name);
  }

  /// When it was changed, and how often, is then what this program says.
  void stamp(const std::string& key, const Item& mine) {
    TextComponent* part = component(key);
    if (part == nullptr) { return; }
    const TextComponent ours = takenApart(store::itemComponents({mine, {}})).inner.front();
    for (const char* name : {"DTSTAMP", "LAST-MODIFIED"}) {
      if (const TextLine* line = ours.line(name)) { put(*part, *line); }
    }
    const Item* theirs = partOf(m_theirs, key);
    if (theirs != nullptr && mine.sequence > theirs->sequence) {
      if (const TextLine* line = ours.line("SEQUENCE")) { put(*part, *line); }
    }
  }

  static void put(TextComponent& part, const TextLine& line) {
    std::erase_if(part.lines, [&](const TextLine& each) { return each.name == line.name; });
    part.lines.push_back(line);
  }

  /// What our lines name must be explained, as clients read no zone names.
  void addZones() {
    std::set<std::string> known;
    for (const TextComponent& component : m_text.inner) {
      if (const TextLine* id = component.line("TZID"); id != nullptr && component.name == "VTIMEZONE") {
        known.insert(id->text);
      }
    }
    std::vector<TextComponent> added;
    for (TextComponent& zone : takenApart(store::itemZones(m_mineWhole)).inner) {
      const TextLine* id = zone.line("TZID");
      if (id != nullptr && !known.contains(id->text)) { added.push_back(std::move(zone)); }
    }
    m_text.inner.insert(m_text.inner.begin(), std::make_move_iterator(added.begin()),
                        std::make_move_iterator(added.end()));
  }

  bool mayTake(std::string_view field, const std::string& key) const {
    if (m_only.empty() || names(m_only, nameOf(field, key))) { return true; }
    const bool ofTimes = field == kRepetitionField || field == kExceptionsField || !key.empty();
    return ofTimes && names(m_only, kTimeField);
  }

  void addConflict(std::string_view field, const std::string& key) {
    std::string name = nameOf(field, key);
    if (!names(m_result.conflicts, name)) { m_result.conflicts.push_back(std::move(name)); }
  }

  std::string nameOf(std::string_view field, const std::string& key) const {
    std::string name(field);
    for (const auto* parts : {&m_mine, &m_theirs}) {
      const Item* part = key.empty() ? nullptr : partOf(*parts, key);
      if (part == nullptr) { continue; }
      name += " of " + store::timeText(*part->recurrenceId);
      break;
    }
    return name;
  }

  bool m_hasBase;
  Parts m_base, m_theirs, m_mine, m_sent;
  const WholeItem* m_baseWhole;
  const WholeItem& m_theirsWhole;
  const WholeItem& m_mineWhole;
  TextComponent m_text;
  bool m_timesClash = false;
  std::vector<std::string> m_only;
  bool m_oursMoved = false;  ///< our times stand, and what hangs on the old ones goes
  MergedItem m_result;
};

}  // namespace

MergedItem merged(const ItemState* base, const ItemState& theirs, const store::WholeItem& mine,
                  const store::WholeItem* sent) {
  return Merge(base, theirs, mine, sent).run();
}

std::string withFields(const ItemState& current, const store::WholeItem& other,
                       const std::vector<std::string>& fields) {
  Merge merge(&current, current, other, nullptr);
  const bool whole = std::any_of(fields.begin(), fields.end(), [](const std::string& field) {
    return std::find(std::begin(kWholeItem), std::end(kWholeItem), field) != std::end(kWholeItem);
  });
  if (!whole) { merge.takeOnly(fields); }
  return merge.run().text;
}

}  // namespace orlocal::accounts
