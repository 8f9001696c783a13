#include <cstdlib>
#include <filesystem>
#include <string>

#include "platform/eventkit_alarms_contract.h"
#include "platform/eventkit_calendars_contract.h"
#include "platform/eventkit_events_contract.h"
#include "platform/eventkit_recurrence_contract.h"
#include "platform/eventkit_reminders_contract.h"
#include "platform/eventkit_unopened_contract.h"
#include "platform/platform.h"
#include "platform/run_loop.h"
#include "store/calendar_store.h"
#include "store/edits/item_writer.h"
#include "store/time/zone.h"

namespace orlocal::contract {
namespace {

/// The system's platform over a store in a folder of its own; the calendar application is another user of that file.
class StoreEventKitSubject final : public EventKitSubject {
 public:
  StoreEventKitSubject() {
    std::string pattern = (std::filesystem::temp_directory_path() / "orlocal-XXXXXX").string();
    m_folder = ::mkdtemp(pattern.data());
    ::setenv("ORLOCAL_STORE", (m_folder / "calendar.db").c_str(), 1);
    m_platform = makeSystemPlatform();
    setPlatform(m_platform);
  }
  ~StoreEventKitSubject() override {
    setPlatform(nullptr);
    m_platform.reset();
    ::unsetenv("ORLOCAL_STORE");
    std::error_code ignored;
    std::filesystem::remove_all(m_folder, ignored);
  }

  EventKit& eventKit() override { return m_platform->eventKit(); }

  void makeReadOnly(const std::string& calendarIdentifier) override {
    const auto store = application();
    auto calendar = store->calendar(calendarIdentifier).value().value();
    calendar.readOnly = true;
    EXPECT_TRUE(store->saveCalendar(calendar));
  }

  void invite(const std::string& eventIdentifier, const std::string& name, const std::string& email) override {
    const auto store = application();
    store::Item event = *store->event(eventIdentifier).value();
    store::Attendee guest;
    guest.address = "mailto:" + email;
    guest.name = name;
    guest.status = store::Attendee::Status::kPending;
    event.attendees.push_back(guest);
    auto writer = std::move(store->startWriting()).value();
    std::vector<store::Item> changed;
    EXPECT_TRUE(writer->put(event.calendar, event, changed));
    EXPECT_TRUE(writer->commit());
  }

  void keepFromOpening() override { std::filesystem::create_directory(m_folder / "calendar.db"); }
  void turnRunLoop() override { m_platform->currentRunLoop().turn(); }
  Date now() override { return store::now(); }

 private:
  std::unique_ptr<store::CalendarStore> application() {
    store::StoreOptions options;
    options.file = m_folder / "calendar.db";
    options.viewer = store::Zone::ofUser();
    return std::move(store::CalendarStore::open(std::move(options))).value();
  }

  std::filesystem::path m_folder;
  std::shared_ptr<Platform> m_platform;
};

INSTANTIATE_TEST_SUITE_P(Store, EventKitContract, testing::Values([]() -> std::unique_ptr<EventKitSubject> {
                           return std::make_unique<StoreEventKitSubject>();
                         }));

}  // namespace
}  // namespace orlocal::contract
