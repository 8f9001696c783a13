#include "store/import.h"

#include <algorithm>
#include <map>
#include <unordered_set>

#include <fmt/core.h>

namespace orlocal::store {

namespace {

constexpr std::size_t kProgressStep = 256;

class Importer {
 public:
  Importer(CalendarReader& reader, ItemWriter& writer, const ImportOptions& options)
      : m_reader(reader), m_writer(writer), m_options(options) {}

  Result<ImportReport> run() {
    for (std::size_t i = 0; i < m_reader.size(); ++i) {
      if (i % kProgressStep == 0) {
        if (m_options.stop != nullptr && m_options.stop->load())
          return failure(ErrorCode::kInterrupted, "the import was stopped; nothing was written");
        if (m_options.progress) m_options.progress(i, m_reader.size());
      }
      ItemGroup group = m_reader.read(i, m_problems);
      if (auto status = write(group); !status) return tl::unexpected(status.error());
    }
    if (auto status = m_writer.commit(); !status) return tl::unexpected(status.error());
    if (m_options.progress) m_options.progress(m_reader.size(), m_reader.size());
    return report();
  }

 private:
  Status write(ItemGroup& group) {
    const std::size_t count = (group.main ? 1U : 0U) + group.changed.size();
    if (count == 0) return {};
    const ItemKind kind = group.main ? group.main->kind : group.changed.front().kind;
    const auto target = targetOf(kind, group.calendar);
    if (!target) return tl::unexpected(target.error());
    if (auto status = keepZones(); !status) return status;
    if (group.main) {
      if (auto status = put(*target, group.line, *group.main, group.changed, group.series.get()); !status)
        return status;
      for (ItemGroup& later : group.later)
        if (auto status = put(*target, later.line, *later.main, later.changed, later.series.get()); !status)
          return status;
      return {};
    }
    for (Item& stray : group.changed) {
      std::vector<Item> none;
      if (auto status = put(*target, group.line, stray, none, nullptr); !status) return status;
    }
    return {};
  }

  Status put(CalendarId calendar, int line, Item& main, std::vector<Item>& changed, const Series* compiled) {
    // Two calendars of the file may be led to one; there a UID counts once.
    const std::string occurrence = main.recurrenceId ? fmt::format("{}", main.recurrenceId->local - LocalTime()) : "";
    if (!m_seen.insert(fmt::format("{}:{}:{}", calendar, occurrence, main.uid)).second) {
      m_problems.refused.push_back({line, main.uid, "its UID came before in this file; this one was not imported"});
      return {};
    }
    const std::string uid = main.uid;
    const auto outcome = m_writer.put(calendar, main, changed, compiled);
    if (!outcome) {
      const auto code = outcome.error().code;
      if (code != ErrorCode::kInvalid && code != ErrorCode::kRefused) return tl::unexpected(outcome.error());
      m_problems.refused.push_back({line, uid, outcome.error().message});
      return {};
    }
    switch (*outcome) {
      case PutOutcome::kNew:
        ++m_report.added;
        break;
      case PutOutcome::kUpdated:
        ++m_report.updated;
        break;
      case PutOutcome::kUnchanged:
        ++m_report.unchanged;
        break;
    }
    return {};
  }

  /// Zones before the items that name them.
  Status keepZones() {
    if (m_reader.privateZones().size() == m_zonesKept) return {};
    for (const auto& [name, text] : m_reader.privateZones())
      if (auto status = m_writer.putZone(name, text); !status) return status;
    m_zonesKept = m_reader.privateZones().size();
    return {};
  }

  Result<CalendarId> targetOf(ItemKind itemKind, std::size_t index) {
    const CalendarKind kind = itemKind == ItemKind::kEvent ? CalendarKind::kEvents : CalendarKind::kReminders;
    const CalendarHead& head = m_reader.calendars()[index];
    const auto& wanted = kind == CalendarKind::kEvents ? m_options.calendarTitle : m_options.listTitle;
    const std::string title = wanted.value_or(head.name);
    const auto key = std::pair(kind, title);
    if (const auto known = m_targets.find(key); known != m_targets.end()) return known->second;

    const bool protects = m_options.readOnly || m_options.subscription;
    auto found = title.empty() ? m_writer.defaultCalendar(kind) : m_writer.calendarTitled(kind, title);
    if (!found) return tl::unexpected(found.error());
    if (*found && (*found)->readOnly && !protects)
      return failure(
          ErrorCode::kReadOnly,
          fmt::format(
              "\"{}\" allows no changes; import with --read-only or --subscription to refresh it, or name another one",
              (*found)->title));
    Calendar calendar;
    if (*found) {
      calendar = **found;
    } else {
      calendar.kind = kind;
      calendar.title = !title.empty() ? title : kind == CalendarKind::kEvents ? "Calendar" : "Reminders";
      calendar.color = head.color;
      calendar.readOnly = protects;
      calendar.subscribed = m_options.subscription;
      if (auto status = make(calendar); !status) return tl::unexpected(status.error());
    }
    return m_targets[key] = calendar.id;
  }

  /// A subscription is where its calendar comes from; others come from this machine.
  Status make(Calendar& calendar) {
    if (calendar.subscribed) {
      Source source;
      source.type = Source::Type::kSubscription;
      source.title = calendar.title;
      if (auto status = m_writer.makeSource(source); !status) return status;
      calendar.source = source.id;
    }
    return m_writer.makeCalendar(calendar);
  }

  ImportReport report() {
    m_report.problems = m_reader.problems().refused;
    m_report.warnings = m_reader.problems().warnings;
    const auto append = [](std::vector<Problem>& to, std::vector<Problem>& from) {
      to.insert(to.end(), std::make_move_iterator(from.begin()), std::make_move_iterator(from.end()));
      std::stable_sort(to.begin(), to.end(), [](const Problem& a, const Problem& b) { return a.line < b.line; });
    };
    append(m_report.problems, m_problems.refused);
    append(m_report.warnings, m_problems.warnings);
    m_report.refused = m_report.problems.size();
    return std::move(m_report);
  }

  CalendarReader& m_reader;
  ItemWriter& m_writer;
  const ImportOptions& m_options;
  ImportReport m_report;
  ReadProblems m_problems;
  std::map<std::pair<CalendarKind, std::string>, CalendarId> m_targets;
  std::unordered_set<std::string> m_seen;
  std::size_t m_zonesKept = 0;
};

Result<ImportReport> import(CalendarStore& store, Result<CalendarReader> reader, const ImportOptions& options) {
  if (!reader) return tl::unexpected(reader.error());
  auto writer = store.startWriting();
  if (!writer) return tl::unexpected(writer.error());
  return Importer(*reader, **writer, options).run();
}

}  // namespace

Result<ImportReport> importCalendarFile(CalendarStore& store, const std::filesystem::path& file,
                                        const ImportOptions& options) {
  return import(store, CalendarReader::open(file), options);
}

Result<ImportReport> importCalendarText(CalendarStore& store, std::string text, const std::string& name,
                                        const ImportOptions& options) {
  return import(store, CalendarReader::ofText(std::move(text), name), options);
}

}  // namespace orlocal::store
