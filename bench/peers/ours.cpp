#include <stdexcept>

#include "store/calendar_store.h"
#include "store/import.h"
#include "tasks.h"

namespace peers {
namespace {

namespace store = orlocal::store;
using store::Moment;

template <class Value>
Value checked(orlocal::Result<Value> result) {
  if (!result) { throw std::runtime_error(result.error().message); }
  return *std::move(result);
}

Moment moment(std::int64_t seconds) { return Moment(std::chrono::seconds(seconds)); }
std::int64_t number(Moment moment) {
  return std::chrono::duration_cast<std::chrono::seconds>(moment.time_since_epoch()).count();
}

/// Our store without the plug-in above it.
class OurStore : public Library {
 public:
  explicit OurStore(const std::filesystem::path& folder) {
    store::StoreOptions options;
    options.file = folder / "calendars.db";
    options.viewer = store::Zone::ofUser();
    m_store = checked(store::CalendarStore::open(std::move(options)));
  }

  void import(const std::filesystem::path& file) override { checked(store::importCalendarFile(*m_store, file)); }

  void open() override {
    for (const auto& calendar : checked(m_store->calendars(store::CalendarKind::kEvents))) {
      m_calendars.push_back(calendar.id);
    }
  }

  std::vector<Entry> between(std::int64_t from, std::int64_t to) override {
    std::vector<Entry> entries;
    for (const auto& each : checked(m_store->occurrences({moment(from), moment(to), m_calendars}))) {
      const auto item = checked(m_store->item(each.item));
      entries.push_back({number(each.start), number(each.end), item->title.value_or("")});
    }
    return entries;
  }

  void add(const std::string& uid, std::int64_t start) override {
    const auto utc = [](std::int64_t seconds) {
      return store::CalendarTime{store::CalendarTime::Kind::kUtc, store::Zone().toLocal(moment(seconds)), ""};
    };
    store::ItemEdit edit;
    edit.values.calendar = m_calendars.front();
    edit.values.uid = uid;
    edit.values.title = "Added";
    edit.values.start = utc(start);
    edit.values.end = utc(start + 3600);
    checked(m_store->saveEvent(edit, std::nullopt, store::Span::kThis));
  }

 private:
  std::unique_ptr<store::CalendarStore> m_store;
  std::vector<store::CalendarId> m_calendars;
};

}  // namespace

std::unique_ptr<Library> makeLibrary(const std::filesystem::path& folder) { return std::make_unique<OurStore>(folder); }

}  // namespace peers
