#include <QTimeZone>
#include <stdexcept>

#include <KCalendarCore/FileStorage>
#include <KCalendarCore/ICalFormat>
#include <KCalendarCore/MemoryCalendar>
#include <KCalendarCore/OccurrenceIterator>

#include "tasks.h"

namespace peers {
namespace {

using namespace KCalendarCore;

constexpr std::int64_t kLongestEvent = 3 * 86400;

/// A calendar in memory that is read from a file as a whole and written to it likewise.
class KdeCalendar : public Library {
 public:
  explicit KdeCalendar(const std::filesystem::path& folder)
      : m_file(folder / "calendar.ics"),
        m_zone("Europe/Berlin"),
        m_calendar(new MemoryCalendar(m_zone)),
        m_storage(m_calendar, QString::fromStdString(m_file.string()), new ICalFormat) {}

  void import(const std::filesystem::path& file) override {
    std::filesystem::copy_file(file, m_file);
    open();
  }

  void open() override {
    if (!m_storage.load()) { throw std::runtime_error("the file cannot be loaded"); }
  }

  std::vector<Entry> between(std::int64_t from, std::int64_t to) override {
    std::vector<Entry> entries;
    // It answers by the starts of series.
    OccurrenceIterator each(*m_calendar, moment(from - kLongestEvent), moment(to));
    while (each.hasNext()) {
      each.next();
      const std::int64_t start = each.occurrenceStartDate().toSecsSinceEpoch();
      const auto event = each.incidence().staticCast<Event>();
      // The last day of a whole-day event is its end.
      const QDateTime last = each.occurrenceEndDate();
      const std::int64_t end = (event->allDay() ? last.addDays(1) : last).toSecsSinceEpoch();
      if (start < to && end > from) { entries.push_back({start, end, event->summary().toStdString()}); }
    }
    return entries;
  }

  void add(const std::string& uid, std::int64_t start) override {
    Event::Ptr event(new Event);
    event->setUid(QString::fromStdString(uid));
    event->setSummary(QStringLiteral("Added"));
    event->setDtStart(QDateTime::fromSecsSinceEpoch(start, Qt::UTC));
    event->setDtEnd(QDateTime::fromSecsSinceEpoch(start + 3600, Qt::UTC));
    if (!m_calendar->addEvent(event) || !m_storage.save()) { throw std::runtime_error("the file cannot be saved"); }
  }

 private:
  QDateTime moment(std::int64_t seconds) const { return QDateTime::fromSecsSinceEpoch(seconds, m_zone); }

  std::filesystem::path m_file;
  QTimeZone m_zone;
  MemoryCalendar::Ptr m_calendar;
  FileStorage m_storage;
};

}  // namespace

std::unique_ptr<Library> makeLibrary(const std::filesystem::path& folder) {
  return std::make_unique<KdeCalendar>(folder);
}

}  // namespace peers
