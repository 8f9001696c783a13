#include "store/import.h"

#include <algorithm>
#include <array>
#include <thread>
#include <unordered_set>
#include <utility>

#include <fmt/format.h>

#include "base/translation.h"
#include "base/try.h"
#include "store/edits/item_writer.h"
#include "store/invitations/message_taker.h"
#include "store/prepared_file.h"
#include "store/rows/timeline.h"

namespace orlocal::store {

namespace {

/// Of the calendar that items of this kind go to; empty for the default one.
std::string_view titleFor(CalendarKind kind, const CalendarHead& head, const ImportOptions& options) {
  const auto& wanted = kind == CalendarKind::kEvents ? options.calendarTitle : options.listTitle;
  return wanted ? *wanted : head.name;
}

/// A feed is what its items are, whatever method it names.
bool isMessage(const CalendarHead& head, const ImportOptions& options) {
  return !options.readOnly && !options.subscription && !isNoMessage(methodOf(head.method));
}

/// Points into `file`.
std::vector<AnnouncedItem> announcedItems(PreparedFile& file, const ImportOptions& options) {
  std::vector<AnnouncedItem> all;
  const auto announce = [&](ItemGroup& group, const CalendarHead& head) {
    if (!group.main || isMessage(head, options)) { return; }
    const bool isSeries = !group.main->recurrence.empty() || !group.changed.empty();
    all.push_back({&*group.main, titleFor(calendarKindOf(group.main->kind), head, options), isSeries});
  };
  for (std::vector<ItemGroup>& piece : file.pieces) {
    for (ItemGroup& group : piece) {
      const CalendarHead& head = file.calendars[group.calendar];
      announce(group, head);
      for (ItemGroup& later : group.later) { announce(later, head); }
    }
  }
  return all;
}

class Importer {
 public:
  Importer(PreparedFile file, ItemWriter& writer, const ImportOptions& options)
      : m_file(std::move(file)), m_writer(writer), m_options(options), m_targets(m_file.calendars.size()) {}

  Result<ImportReport> run() {
    for (const auto& [name, text] : m_file.zones) { ORLOCAL_CHECK(m_writer.putZone(name, text)); }
    std::size_t all = 0;
    for (std::vector<ItemGroup>& piece : m_file.pieces) {
      if (isStopped(m_options)) { return importWasStopped(); }
      // Let go of while it is at hand: by the end of the file it would have to be fetched again.
      std::vector<ItemGroup> groups = std::move(piece);
      for (ItemGroup& group : groups) { ORLOCAL_CHECK(write(group)); }
      all += groups.size();
    }
    ORLOCAL_CHECK(noteCalendars());
    ORLOCAL_CHECK(m_writer.commit());
    if (m_options.progress) { m_options.progress(all, all); }
    return report();
  }

 private:
  Status write(ItemGroup& group) {
    const CalendarHead& head = m_file.calendars[group.calendar];
    if (isMessage(head, m_options)) { return takeMessage(methodOf(head.method), group); }
    ORLOCAL_CHECK(writeMain(group));
    if (group.main) { return {}; }
    for (Item& stray : group.changed) { ORLOCAL_CHECK(writeStray(group, stray)); }
    return {};
  }

  Status writeMain(ItemGroup& group) {
    if (!group.main) { return {}; }
    ORLOCAL_TRY(const CalendarId target, targetOf(group.main->kind, group.calendar));
    ORLOCAL_CHECK(put(target, group.line, *group.main, group.changed, group.series.get()));
    for (ItemGroup& later : group.later) {
      ORLOCAL_CHECK(put(target, later.line, *later.main, later.changed, later.series.get()));
    }
    return {};
  }

  Status writeStray(const ItemGroup& group, Item& stray) {
    ORLOCAL_TRY(const CalendarId target, targetOf(stray.kind, group.calendar));
    std::vector<Item> none;
    return put(target, group.line, stray, none, nullptr);
  }

  /// Items of a message are known by what is stored: a REQUEST brings a series whole, every other message is about the
  /// series or about single occurrences of it.
  Status takeMessage(Method method, ItemGroup& group) {
    ORLOCAL_TRY(const auto calendars, calendarsToSearch());
    MessageTaker taker(m_writer, calendars);
    m_report.isMessage = true;
    std::vector<Item> none;
    const bool whole = method == Method::kRequest && group.main;
    if (group.main) {
      ORLOCAL_TRY(const bool imports, take(taker, method, group.line, *group.main, whole ? group.changed : none));
      if (imports) { return writeMain(group); }
    }
    if (whole) { return {}; }
    for (Item& occurrence : group.changed) {
      ORLOCAL_TRY(const bool imports, take(taker, method, group.line, occurrence, none));
      if (imports) { ORLOCAL_CHECK(writeStray(group, occurrence)); }
    }
    return {};
  }

  /// Whether the item is to be imported as any other.
  Result<bool> take(MessageTaker& taker, Method method, int line, Item& given, std::vector<Item>& changed) {
    const auto outcome = taker.take(method, given, changed);
    if (!outcome) {
      ORLOCAL_CHECK(refuseIfOfTheItem(line, given, outcome.error()));
      return false;
    }
    const std::string item = itemInWords(outcome->title, outcome->start);
    switch (outcome->what) {
      case TakenMessage::What::kImport:
        return true;
      case TakenMessage::What::kRefused:
        m_file.problems.refuse(line, given.uid, outcome->words);
        m_file.problems.refused.back().item = item;
        return false;
      case TakenMessage::What::kTold:
      case TakenMessage::What::kDone:
        break;
    }
    count(outcome->outcome, {{}, line, outcome->calendar, outcome->id, given.uid, item});
    if (!outcome->words.empty()) { m_report.notes.push_back({line, given.uid, outcome->words, item}); }
    return false;
  }

  /// Where the items are that messages are about.
  Result<std::vector<Calendar>> calendarsToSearch() {
    std::vector<Calendar> all;
    for (const CalendarKind kind : {CalendarKind::kEvents, CalendarKind::kReminders}) {
      ORLOCAL_TRY(const auto calendars, m_writer.calendars(kind));
      const auto& wanted = kind == CalendarKind::kEvents ? m_options.calendarTitle : m_options.listTitle;
      for (const Calendar& calendar : calendars) {
        if (!calendar.readOnly && (!wanted || calendar.title == *wanted)) { all.push_back(calendar); }
      }
    }
    return all;
  }

  Status put(CalendarId calendar, int line, Item& main, std::vector<Item>& changed, const Series* compiled) {
    if (m_mayMeetAgain && !isNew(calendar, main)) {
      m_file.problems.refuse(line, main.uid, tr("its UID came before in this file; this one was not imported"));
      m_file.problems.refused.back().item = itemInWords(main.title, main.start);
      return {};
    }
    const auto outcome = m_writer.put(calendar, main, changed, compiled);
    if (!outcome) { return refuseIfOfTheItem(line, main, outcome.error()); }
    // A changed occurrence that joined its series stands with it.
    count(*outcome, {{}, line, calendar, main.series.value_or(main.id), main.uid, {}}, &main);
    return {};
  }

  /// Whether it fails because of this item alone, which then is left out.
  Status refuseIfOfTheItem(int line, const Item& item, const Failure& why) {
    const bool ofTheItem =
        why.code == ErrorCode::kInvalid || why.code == ErrorCode::kRefused || why.code == ErrorCode::kTooLarge;
    if (!ofTheItem) { return failure(why); }
    m_file.problems.refuse(line, item.uid, why.message);
    m_file.problems.refused.back().item = itemInWords(item.title, item.start);
    return {};
  }

  void count(PutOutcome outcome, ImportedItem met, const Item* item = nullptr) {
    using Outcome = ImportedItem::Outcome;
    switch (outcome) {
      case PutOutcome::kNew:
        ++m_report.added;
        met.outcome = Outcome::kNew;
        break;
      case PutOutcome::kUpdated:
        ++m_report.updated;
        met.outcome = Outcome::kUpdated;
        break;
      case PutOutcome::kUnchanged:
        ++m_report.unchanged;
        met.outcome = Outcome::kUnchanged;
        break;
    }
    if (!m_options.listItems) { return; }
    if (item != nullptr) { met.item = itemInWords(item->title, item->start ? item->start : item->due); }
    m_report.items.push_back(std::move(met));
  }

  bool protects() const { return m_options.readOnly || m_options.subscription; }

  /// Notes the calendars that the file speaks of.
  Status noteCalendars() {
    for (const CalendarHead& head : m_file.calendars) {
      for (const CalendarKind kind : {CalendarKind::kEvents, CalendarKind::kReminders}) {
        const std::string_view title = titleFor(kind, head, m_options);
        if (title.empty()) { continue; }
        ORLOCAL_TRY(const auto found, m_writer.calendarTitled(kind, title));
        if (found) { m_report.calendars.push_back(found->id); }
      }
    }
    return {};
  }

  /// Two calendars of the file may be led to one; there a UID counts once.
  bool isNew(CalendarId calendar, const Item& main) {
    // The same wall clock in another zone is another occurrence.
    const std::string occurrence = main.recurrenceId ? fmt::format("{}", Timeline::keyOf(*main.recurrenceId)) : "";
    return m_seen.insert(fmt::format("{}:{}:{}", calendar, occurrence, main.uid)).second;
  }

  Result<CalendarId> targetOf(ItemKind itemKind, std::size_t index) {
    const CalendarKind kind = calendarKindOf(itemKind);
    std::optional<CalendarId>& target = m_targets[index][static_cast<std::size_t>(kind)];
    if (!target) { ORLOCAL_TRY(target, findTarget(kind, m_file.calendars[index])); }
    return *target;
  }

  Result<CalendarId> findTarget(CalendarKind kind, const CalendarHead& head) {
    const std::string title(titleFor(kind, head, m_options));
    ORLOCAL_TRY(const auto found,
                title.empty() ? m_writer.defaultCalendar(kind) : m_writer.calendarTitled(kind, title));
    if (found && found->readOnly && !protects()) {
      return failure(
          ErrorCode::kReadOnly,
          tr("\"{}\" allows no changes; import with --read-only or --subscription to refresh it, or name another one",
             found->title));
    }
    Calendar calendar;
    if (found) {
      calendar = *found;
    } else {
      calendar.kind = kind;
      calendar.title = !title.empty() ? title : kind == CalendarKind::kEvents ? "Calendar" : "Reminders";
      calendar.color = head.color;
      calendar.readOnly = protects();
      calendar.subscribed = m_options.subscription;
      ORLOCAL_CHECK(make(calendar));
    }
    return calendar.id;
  }

  /// A subscription is where its calendar comes from; others come from this machine.
  Status make(Calendar& calendar) {
    if (calendar.subscribed) {
      Source source;
      source.type = Source::Type::kSubscription;
      source.title = calendar.title;
      ORLOCAL_CHECK(m_writer.makeSource(source));
      calendar.source = source.id;
    }
    return m_writer.makeCalendar(calendar);
  }

  ImportReport report() {
    m_report.problems = std::move(m_file.problems.refused);
    m_report.warnings = std::move(m_file.problems.warnings);
    m_report.endsEarly = m_file.endsEarly;
    for (auto* list : {&m_report.problems, &m_report.warnings, &m_report.notes}) {
      std::stable_sort(list->begin(), list->end(), [](const Problem& a, const Problem& b) { return a.line < b.line; });
    }
    if (const std::size_t more = m_file.problems.warningsLeftOut; more > 0) {
      m_report.warnings.push_back({m_report.warnings.back().line, "", tr("{} more warnings are not listed", more), {}});
    }
    m_report.refused = m_report.problems.size();
    return std::move(m_report);
  }

  PreparedFile m_file;
  ItemWriter& m_writer;
  const ImportOptions& m_options;
  ImportReport m_report;
  std::vector<std::array<std::optional<CalendarId>, 2>> m_targets;  ///< by calendar of the file and kind
  /// Within one calendar each UID is one group already, unless a series was cut into several.
  bool m_mayMeetAgain = m_file.calendars.size() > 1 || std::ranges::any_of(m_file.pieces, [](const auto& piece) {
                          return std::ranges::any_of(piece,
                                                     [](const ItemGroup& group) { return !group.later.empty(); });
                        });
  std::unordered_set<std::string> m_seen;
};

Result<ImportReport> import(CalendarStore& store, Result<CalendarReader> reader, const ImportOptions& options) {
  ORLOCAL_CHECK(reader);
  ORLOCAL_TRY(PreparedFile prepared, prepareFile(std::move(*reader), options));
  const auto announced = announcedItems(prepared, options);
  ORLOCAL_TRY(const auto writer, store.startWriting({announced, options.stop}));
  return Importer(std::move(prepared), *writer, options).run();
}

}  // namespace

unsigned workersThatPay() {
  // The more of them read, the less it matters beside writing, which one does alone.
  constexpr unsigned kMost = 4;
  return std::clamp(std::thread::hardware_concurrency(), 1U, kMost);
}

Result<ImportReport> importCalendarFile(CalendarStore& store, const std::filesystem::path& file,
                                        const ImportOptions& options) {
  return import(store, CalendarReader::open(file), options);
}

Result<ImportReport> importCalendarText(CalendarStore& store, std::string text, const std::string& name,
                                        const ImportOptions& options) {
  return import(store, CalendarReader::ofText(std::move(text), name), options);
}

}  // namespace orlocal::store
