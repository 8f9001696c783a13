#include <stdexcept>

#include <libical/ical.h>

#include "tasks.h"

namespace peers {
namespace {

/// libical by itself keeps nothing: the file is the store, the parsed components are what answers.
class Libical : public Library {
 public:
  explicit Libical(const std::filesystem::path& folder) : m_file(folder / "calendar.ics") {}
  ~Libical() override { icalcomponent_free(m_calendar); }

  void import(const std::filesystem::path& file) override {
    std::filesystem::copy_file(file, m_file);
    open();
  }

  void open() override {
    m_calendar = icalparser_parse_string(textOf(m_file).c_str());
    if (m_calendar == nullptr) { throw std::runtime_error("no calendar in the file"); }
    m_viewer = icalcomponent_get_timezone(m_calendar, "Europe/Berlin");
  }

  std::vector<Entry> between(std::int64_t from, std::int64_t to) override {
    std::vector<Entry> entries;
    for (auto* event = icalcomponent_get_first_component(m_calendar, ICAL_VEVENT_COMPONENT); event != nullptr;
         event = icalcomponent_get_next_component(m_calendar, ICAL_VEVENT_COMPONENT)) {
      // What has no zone is expanded as if in UTC: asked for, and put right again, on the viewer's wall clock.
      const icaltimetype start = icalcomponent_get_dtstart(event);
      Task task{entries, event, m_viewer, start.zone == nullptr, start.is_date != 0, from};
      icalcomponent_foreach_recurrence(event, wallClock(task, from), wallClock(task, to), take, &task);
    }
    return entries;
  }

  void add(const std::string& uid, std::int64_t start) override {
    auto* utc = icaltimezone_get_utc_timezone();
    icalcomponent_add_component(
        m_calendar, icalcomponent_vanew(ICAL_VEVENT_COMPONENT, icalproperty_new_uid(uid.c_str()),
                                        icalproperty_new_dtstamp(icaltime_from_timet_with_zone(start, 0, utc)),
                                        icalproperty_new_dtstart(icaltime_from_timet_with_zone(start, 0, utc)),
                                        icalproperty_new_dtend(icaltime_from_timet_with_zone(start + 3600, 0, utc)),
                                        icalproperty_new_summary("Added"), static_cast<void*>(nullptr)));
    char* text = icalcomponent_as_ical_string_r(m_calendar);
    replaceDurably(m_file, text);
    icalmemory_free_buffer(text);
  }

 private:
  struct Task {
    std::vector<Entry>& entries;
    icalcomponent* event;
    icaltimezone* viewer;
    bool floating, wholeDays;
    std::int64_t from;
  };

  /// The viewer's wall clock at a moment, as if it were UTC; the moment itself for what has a zone.
  static icaltimetype wallClock(const Task& task, std::int64_t moment) {
    auto* utc = icaltimezone_get_utc_timezone();
    if (!task.floating) { return icaltime_from_timet_with_zone(moment, 0, utc); }
    icaltimetype time = icaltime_from_timet_with_zone(moment, 0, task.viewer);
    icaltime_set_timezone(&time, utc);
    return time;
  }
  static std::int64_t moment(const Task& task, time_t span) {
    auto* utc = icaltimezone_get_utc_timezone();
    return task.floating ? icaltime_as_timet_with_zone(icaltime_from_timet_with_zone(span, 0, utc), task.viewer) : span;
  }
  static void take(icalcomponent*, icaltime_span* span, void* data) {
    const auto& task = *static_cast<Task*>(data);
    // It takes the end of whole days for their last day, up to its last second; it is the day after (RFC 5545, 3.6.1).
    const std::int64_t end = moment(task, task.wholeDays ? span->end - (86400 - 1) : span->end);
    const char* title = icalcomponent_get_summary(task.event);
    if (end > task.from) { task.entries.push_back({moment(task, span->start), end, title != nullptr ? title : ""}); }
  }

  std::filesystem::path m_file;
  icalcomponent* m_calendar = nullptr;
  icaltimezone* m_viewer = nullptr;
};

}  // namespace

std::unique_ptr<Library> makeLibrary(const std::filesystem::path& folder) { return std::make_unique<Libical>(folder); }

}  // namespace peers
