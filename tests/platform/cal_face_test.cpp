#include "fakes/fake_event_store.h"
#include "fakes/fake_platform.h"
#include "platform/cal_alarms_contract.h"
#include "platform/cal_calendars_contract.h"
#include "platform/cal_events_contract.h"
#include "platform/cal_recurrence_contract.h"
#include "platform/cal_refusals_contract.h"
#include "platform/cal_tasks_contract.h"
#include "platform/cal_unopened_contract.h"
#include "platform/legacy/cal_framework_face.h"
#include "platform/legacy/calendar_face.h"
#include "platform/legacy/faces.h"

namespace orlocal::contract {
namespace {

/// The older platform over the fake of the current one, which delivers reminders from its run loop.
class FaceSubject : public CalSubject {
 public:
  FaceSubject() {
    m_platform->m_eventKit = m_kit;
    m_platform->m_runLoop = m_kit->m_store->m_runLoop = std::make_shared<fakes::FakeRunLoop>();
    setPlatform(m_platform);
  }
  ~FaceSubject() override { setPlatform(nullptr); }

  CalFramework& framework() override { return *m_framework; }
  std::shared_ptr<CalCalendar> eventCalendar() override {
    return faceOf<CalendarFace>(m_kit->m_store->defaultCalendarForNewEvents());
  }
  std::shared_ptr<CalCalendar> taskCalendar() override {
    return faceOf<CalendarFace>(m_kit->m_store->defaultCalendarForNewReminders());
  }
  void makeReadOnly(const std::string& calendarUid) override {
    for (const auto& calendar : m_kit->m_store->m_calendars) {
      if (calendar->m_identifier == calendarUid) { calendar->m_allowsContentModifications = false; }
    }
  }
  void keepFromOpening() override { m_kit->m_store->m_answers = false; }
  Date now() override { return fakes::fakeNow(); }

 private:
  std::shared_ptr<fakes::FakePlatform> m_platform = std::make_shared<fakes::FakePlatform>();
  std::shared_ptr<fakes::FakeEventKit> m_kit = std::make_shared<fakes::FakeEventKit>();
  std::unique_ptr<CalFramework> m_framework = makeCalFramework(*m_platform, fakes::fakeNow);
};

INSTANTIATE_TEST_SUITE_P(FaceOfTheFake, CalContract, testing::Values([]() -> std::unique_ptr<CalSubject> {
                           return std::make_unique<FaceSubject>();
                         }));

}  // namespace
}  // namespace orlocal::contract
