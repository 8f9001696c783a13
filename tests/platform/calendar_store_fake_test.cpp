#include "fakes/fake_calendar_store.h"
#include "fakes/fake_clock.h"
#include "platform/calendar_store_contract.h"

namespace orlocal::contract {
namespace {

class FakeSubject : public CalendarStoreSubject {
 public:
  CalendarStoreFramework& framework() override { return m_framework; }
  std::shared_ptr<CalCalendar> eventCalendar() override { return m_store->calendarWithUID(m_events); }
  std::shared_ptr<CalCalendar> taskCalendar() override { return m_store->calendarWithUID(m_tasks); }
  void makeReadOnly(const std::string& calendarUid) override {
    for (auto& calendar : m_store->m_calendars) {
      if (calendar.m_uid == calendarUid) calendar.m_isEditable = false;
    }
  }
  void keepFromOpening() override { m_store->m_answers = false; }
  Date now() override { return fakes::fakeNow(); }

 private:
  std::shared_ptr<fakes::FakeCalendarStore> m_store = std::make_shared<fakes::FakeCalendarStore>();
  fakes::FakeCalendarStoreFramework m_framework{m_store};
  std::string m_events = m_store->addCalendar("Calendar");
  std::string m_tasks = m_store->addCalendar("Reminders");
};

INSTANTIATE_TEST_SUITE_P(Fake, CalendarStoreContract, testing::Values([]() -> std::unique_ptr<CalendarStoreSubject> {
                           return std::make_unique<FakeSubject>();
                         }));

}  // namespace
}  // namespace orlocal::contract
