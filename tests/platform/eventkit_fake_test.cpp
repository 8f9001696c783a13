#include "fakes/fake_event_store.h"
#include "fakes/fake_platform.h"
#include "platform/eventkit_alarms_contract.h"
#include "platform/eventkit_calendars_contract.h"
#include "platform/eventkit_events_contract.h"
#include "platform/eventkit_recurrence_contract.h"
#include "platform/eventkit_reminders_contract.h"
#include "platform/eventkit_unopened_contract.h"

namespace orlocal::contract {
namespace {

class FakeEventKitSubject : public EventKitSubject {
 public:
  FakeEventKitSubject() {
    m_platform->m_defaultTimeZone = std::make_shared<fakes::FakeTimeZone>(fakes::FakeTimeZone::berlin());
    setPlatform(m_platform);
    m_kit.m_store->m_runLoop = m_loop;
  }
  ~FakeEventKitSubject() override { setPlatform(nullptr); }

  EventKit& eventKit() override { return m_kit; }
  void makeReadOnly(const std::string& calendarIdentifier) override {
    for (const auto& calendar : m_kit.m_store->m_calendars) {
      if (calendar->m_identifier != calendarIdentifier) { continue; }
      calendar->m_allowsContentModifications = false;
      calendar->m_immutable = true;
    }
  }
  void invite(const std::string& eventIdentifier, const std::string& name, const std::string& email) override {
    auto participant = std::make_shared<fakes::FakeParticipant>();
    participant->m_name = name;
    participant->m_url = "mailto:" + email;
    participant->m_emailAddresses = {email};
    for (const auto& event : m_kit.m_store->m_events) {
      if (event->m_eventIdentifier == eventIdentifier) { event->m_attendees = {participant}; }
    }
  }
  void keepFromOpening() override { m_kit.m_store->m_answers = false; }
  void turnRunLoop() override { m_loop->turn(); }
  Date now() override { return m_kit.m_store->m_now; }

 private:
  std::shared_ptr<fakes::FakePlatform> m_platform = std::make_shared<fakes::FakePlatform>();
  std::shared_ptr<fakes::FakeRunLoop> m_loop = std::make_shared<fakes::FakeRunLoop>();
  fakes::FakeEventKit m_kit;
};

INSTANTIATE_TEST_SUITE_P(Fake, EventKitContract, testing::Values([]() -> std::unique_ptr<EventKitSubject> {
                           return std::make_unique<FakeEventKitSubject>();
                         }));

}  // namespace
}  // namespace orlocal::contract
