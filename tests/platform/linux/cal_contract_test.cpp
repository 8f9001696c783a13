#include <cstdlib>
#include <filesystem>

#include "platform/cal_alarms_contract.h"
#include "platform/cal_calendars_contract.h"
#include "platform/cal_events_contract.h"
#include "platform/cal_recurrence_contract.h"
#include "platform/cal_refusals_contract.h"
#include "platform/cal_tasks_contract.h"
#include "platform/cal_unopened_contract.h"
#include "platform/linux/store_fixture.h"
#include "platform/platform.h"
#include "store/calendar_store.h"
#include "store/time/zone.h"

namespace orlocal::contract {
namespace {

/// The system's platform over a new store in a folder of its own.
class LinuxSubject : public CalSubject {
 public:
  LinuxSubject() {
    std::string pattern = (std::filesystem::temp_directory_path() / "orlocal-XXXXXX").string();
    m_folder = ::mkdtemp(pattern.data());
    ::setenv("ORLOCAL_STORE", (m_folder / "calendar.db").c_str(), 1);
    m_platform = makeSystemPlatform();
  }
  ~LinuxSubject() override {
    m_platform.reset();
    ::unsetenv("ORLOCAL_STORE");
    std::error_code ignored;
    std::filesystem::remove_all(m_folder, ignored);
  }

  CalFramework& framework() override { return m_platform->calFramework(); }
  std::shared_ptr<CalCalendar> eventCalendar() override { return calendarTitled("Calendar"); }
  std::shared_ptr<CalCalendar> taskCalendar() override { return calendarTitled("Reminders"); }
  void makeReadOnly(const std::string& calendarUid) override {
    store::StoreOptions options;
    options.file = m_folder / "calendar.db";
    options.viewer = store::Zone::ofUser();
    const auto other = store::CalendarStore::open(std::move(options)).value();
    auto calendar = other->calendar(calendarUid).value().value();
    calendar.readOnly = true;
    ASSERT_TRUE(other->saveCalendar(calendar));
  }
  void keepFromOpening() override { std::filesystem::create_directory(m_folder / "calendar.db"); }
  Date now() override { return store::now(); }

 private:
  std::shared_ptr<CalCalendar> calendarTitled(std::string_view title) {
    for (const auto& calendar : framework().defaultCalendarStore()->calendars()) {
      if (calendar->title() == OptionalText(title)) { return calendar; }
    }
    return nullptr;
  }

  std::filesystem::path m_folder;
  std::shared_ptr<Platform> m_platform;
};

INSTANTIATE_TEST_SUITE_P(Linux, CalContract, testing::Values([]() -> std::unique_ptr<CalSubject> {
                           return std::make_unique<LinuxSubject>();
                         }));

}  // namespace
}  // namespace orlocal::contract
