#include <array>
#include <random>
#include <sstream>

#include "backend/eventkit/backend_fixture.h"
#include "bridge/function_table.h"
#include "bridge/plugin_error.h"
#include "bridge/state.h"
#include "fakes/host_call.h"

namespace orlocal {
namespace {

using fakes::callWith;

/// What is known of an item: the alarms, attendees and rules that it has.
struct ItemModel {
  int alarms = 0;
  int attendees = 0;
  bool repeats = false;
};

/// The back end as a solution knows it: which slots hold something, and what the open event and reminder have. Each
/// operation answers with the code that it is to leave; 0 is success.
struct Model {
  static constexpr int kCalendars = 2;
  static constexpr int kLists = 1;
  static constexpr int kNew = -1;

  std::array<ItemModel, 3> storedEvents{ItemModel{2, 0, false}, ItemModel{0, 2, false}, ItemModel{0, 0, true}};
  std::array<ItemModel, 2> storedReminders{ItemModel{1, 0, false}, ItemModel{}};

  bool calendar = false, alarm = false, participant = false, rule = false, eventFetch = false, reminderFetch = false;
  std::optional<ItemModel> event, reminder;
  int eventPlace = kNew, reminderPlace = kNew;

  void releaseAll() {
    calendar = alarm = participant = rule = eventFetch = reminderFetch = false;
    event.reset();
    reminder.reset();
  }
  void releaseItemsOfWalk() {
    alarm = participant = rule = false;
    event.reset();
    reminder.reset();
  }

  static bool within(int index, std::size_t count) { return index >= 1 && static_cast<std::size_t>(index) <= count; }

  std::int64_t openAt(const std::string& type, int index) {
    if (type == "calendar" || type == "reminderlist") {
      releaseAll();
      calendar = within(index, type == "calendar" ? kCalendars : kLists);
      return calendar ? 0 : 9002;
    }
    if (type == "event") {
      if (!eventFetch) { return 9077; }
      releaseItemsOfWalk();
      calendar = false;
      if (!within(index, storedEvents.size())) { return 9002; }
      eventPlace = index - 1;
      event = storedEvents[static_cast<std::size_t>(eventPlace)];
      return 0;
    }
    if (type == "reminder" || type == "task") {
      releaseItemsOfWalk();
      if (!reminderFetch || !within(index, storedReminders.size())) { return 9002; }
      reminderPlace = index - 1;
      reminder = storedReminders[static_cast<std::size_t>(reminderPlace)];
      return 0;
    }
    if (type == "attendee") {
      if (!event) { return 9000; }
      participant = within(index, static_cast<std::size_t>(event->attendees));
      return participant ? 0 : 9002;
    }
    if (type == "alarm") {
      const auto& owner = reminder ? reminder : event;
      if (!owner) { return 9000; }
      if (owner->alarms == 0) { return 9008; }
      if (!within(index, static_cast<std::size_t>(owner->alarms))) { return 9002; }
      alarm = true;
      return 0;
    }
    return -4;
  }

  /// What a count gives, or the code that it leaves.
  std::pair<int, std::int64_t> count(const std::string& type) const {
    if (type == "calendar") { return {kCalendars, 0}; }
    if (type == "reminderlist") { return {kLists, 0}; }
    if (type == "event") { return {3, eventFetch ? 0 : 9054}; }
    if (type == "reminder" || type == "task") { return {2, reminderFetch ? 0 : 9055}; }
    if (type == "attendee") { return {event ? event->attendees : 0, event ? 0 : 9056}; }
    if (type == "alarm") {
      const auto& owner = event ? event : reminder;
      return {owner ? owner->alarms : 0, owner ? 0 : 9057};
    }
    return {0, 9042};
  }

  std::int64_t get(const std::string& type) {
    if (type == "event") { return event ? 0 : 9066; }
    if (type == "reminder" || type == "task") { return reminder ? 0 : 9067; }
    if (type == "calendar" || type == "reminderlist") { return calendar ? 0 : 9065; }
    if (type == "alarm") { return alarm ? 9063 : 9064; }
    if (type == "attendee") { return participant ? 9063 : 9062; }
    if (type != "recurrencerule") { return -4; }
    if (!event) { return 9068; }
    rule = rule || event->repeats;
    return 9063;
  }

  std::int64_t set(const std::string& type, bool known) const {
    if (type == "event") { return !event ? 9049 : known ? 0 : 9006; }
    if (type == "reminder" || type == "task") { return !reminder ? 9052 : known ? 0 : 9006; }
    if (type == "alarm") { return !alarm ? 9000 : 9005; }
    if (type == "recurrencerule") { return 0; }
    if (type == "calendar" || type == "reminderlist") { return !calendar ? 9051 : 9005; }
    return -4;
  }

  std::int64_t make(const std::string& type) {
    releaseAll();
    if (type == "event") {
      event = ItemModel{};
      eventPlace = kNew;
    } else if (type == "reminder" || type == "task") {
      reminder = ItemModel{};
      reminderPlace = kNew;
    } else if (type == "calendar" || type == "reminderlist") {
      calendar = true;
    } else {
      return 9042;
    }
    return 0;
  }

  std::int64_t save(const std::string& type, const std::string& span) {
    if (span == "weekly") { return 9053; }
    if (type == "event") {
      if (event && event->attendees > 0) { return 9070; }
      if (!event || eventPlace == kNew) { return 9018; }
      storedEvents[static_cast<std::size_t>(eventPlace)] = *event;
      return 0;
    }
    if (type == "reminder" || type == "task") {
      if (!reminder || reminderPlace == kNew) { return 9019; }
      storedReminders[static_cast<std::size_t>(reminderPlace)] = *reminder;
      return 0;
    }
    return 9005;
  }

  std::int64_t removeUnknown(const std::string& type, const std::string& span) {
    releaseAll();
    if (span == "weekly") { return 9006; }
    if (type == "event") { return 9034; }
    if (type == "reminder" || type == "task") { return 9035; }
    return type == "calendar" || type == "reminderlist" ? 9036 : 9005;
  }

  /// The owner of alarms by its type, or the code that says there is none.
  std::pair<std::optional<ItemModel>*, std::int64_t> owner(const std::string& type, std::int64_t noEvent,
                                                           std::int64_t noReminder) {
    if (type == "event") { return {&event, event ? 0 : noEvent}; }
    if (type == "reminder" || type == "task") { return {&reminder, reminder ? 0 : noReminder}; }
    return {nullptr, 9006};
  }

  std::int64_t addAlarm(const std::string& type, int offset, const std::string& action) {
    if (action.empty()) { return 9032; }
    alarm = false;
    if (offset == 0) { return 9031; }
    const auto [item, code] = owner(type, 9047, 9046);
    if (code != 0) { return code; }
    if (action == "email") { return 9028; }
    if (action == "sound") { return 9030; }
    if (action == "procedure") { return 9029; }
    if (action != "display") { return 9005; }
    ++(*item)->alarms;
    return 0;
  }

  std::int64_t removeAlarm(const std::string& type, int index) {
    const auto [item, code] = owner(type, 9047, 9046);
    if (code != 0) { return code; }
    if ((*item)->alarms == 0) { return 0; }
    if (!within(index, static_cast<std::size_t>((*item)->alarms))) { return 9002; }
    --(*item)->alarms;
    return 0;
  }

  std::int64_t removeAllAlarms(const std::string& type) {
    const auto [item, code] = owner(type, 9000, 9000);
    if (code == 0) { (*item)->alarms = 0; }
    return code;
  }

  std::int64_t addRecurrence(const std::string& type, int interval) {
    if (type == "hourly") { return 9021; }
    if (interval < 1) { return 9024; }
    if (!event) { return 9043; }
    event->repeats = true;
    return 0;
  }

  std::int64_t removeRecurrence() {
    if (!event) { return 9048; }
    event->repeats = false;
    return 0;
  }
};

class RandomSequences : public BackendTest, public testing::WithParamInterface<unsigned> {
 protected:
  RandomSequences() : random(GetParam()) {
    // The model counts events, not occurrences.
    store().m_expandsSeries = false;
    store().addCalendar("Work");
    store().addEvent("Work", "Alarmed", at(11, 2, 9), at(11, 2, 10))->m_alarms = {std::make_shared<fakes::FakeAlarm>(),
                                                                                  std::make_shared<fakes::FakeAlarm>()};
    store().addEvent("Work", "Attended", at(11, 3, 9), at(11, 3, 10))->m_attendees = {
        {std::make_shared<fakes::FakeParticipant>(), std::make_shared<fakes::FakeParticipant>()}};
    store().addEvent("Work", "Repeated", at(11, 4, 9), at(11, 4, 10))->m_rules = {
        {std::make_shared<fakes::FakeRecurrenceRule>()}};
    store().addReminder("Reminders", "Alarmed")->m_alarms = {std::make_shared<fakes::FakeAlarm>()};
    store().addReminder("Reminders", "Plain");
    g_bUseEK = true;
    g_sharedEKFunctions = &backend;
    g_sharedFunctions = nullptr;
    error = &pluginError;
  }
  ~RandomSequences() override {
    g_sharedEKFunctions = nullptr;
    error = nullptr;
  }

  template <std::size_t Size>
  std::string any(const std::array<const char*, Size>& words) {
    return words[random() % Size];
  }
  int upTo(int most) { return static_cast<int>(random() % static_cast<unsigned>(most + 1)); }

  std::string anyType() {
    return any(std::array{"event", "event", "event", "reminder", "task", "calendar", "reminderlist", "attendee",
                          "alarm", "nonsense"});
  }

  /// Calls a function, and holds result and last error against the code that is to be left.
  template <class... Arguments>
  void act(std::int64_t code, const std::string& success, fmx::ExternalFunction function,
           const Arguments&... arguments) {
    std::ostringstream words;
    ((words << arguments << " ; "), ...);
    story.push_back(words.str());
    const std::string result = callWith(function, arguments...);
    if (code != 0) {
      EXPECT_EQ(result, "text !!ERROR!!");
    } else if (!success.empty()) {
      EXPECT_EQ(result, success);
    }
    EXPECT_EQ(callWith(&Orlo_GetLastError, "number"), "number " + std::to_string(code));
  }

  void step() {
    const std::string type = anyType();
    switch (upTo(17)) {
      case 0:
      case 1:
      case 2: {
        const int index = upTo(4);
        act(model.openAt(type, index), "number 0", &Orlo_OpenItemAt, type, index);
        break;
      }
      case 3:
      case 4: {
        const bool known = upTo(5) > 0;
        model.releaseAll();
        model.eventFetch = known;
        act(known ? 0 : 9013, "number 0", &Orlo_EventsFetch, "", "", known ? "Work" : "Nowhere", "");
        break;
      }
      case 5: {
        const bool known = upTo(5) > 0;
        const std::string status = upTo(3) == 0 ? "completed" : "";
        model.releaseAll();
        model.reminderFetch = known && status.empty();
        act(!known           ? 9013
            : status.empty() ? 0
                             : -4,
            "number 0", &Orlo_RemindersFetch, known ? "Reminders" : "Nowhere", status, "");
        break;
      }
      case 6: {
        const auto [number, code] = model.count(type);
        act(code, "number " + std::to_string(number), &Orlo_GetItemCountForType, type);
        break;
      }
      case 7: {
        const std::string asked = upTo(3) == 0 ? "recurrencerule" : type;
        act(model.get(asked), "", &Orlo_GetProperty, asked, "title");
        break;
      }
      case 8: {
        const bool known = upTo(1) == 0;
        act(model.set(type, known), "number 0", &Orlo_SetProperty, type,
            known && type != "calendar" && type != "reminderlist" ? "notes" : "nonsense", "x");
        break;
      }
      case 9:
        act(model.make(type), "number 0", &Orlo_NewItem, type);
        break;
      case 10: {
        // Saved calendars would change what titles and positions mean.
        if (type == "calendar" || type == "reminderlist") { break; }
        const std::string span = any(std::array{"", "this", "future", "all", "weekly"});
        act(model.save(type, span), "number 0", &Orlo_SaveItem, type, span);
        break;
      }
      case 11: {
        const std::string span = any(std::array{"", "this", "all", "weekly"});
        act(model.removeUnknown(type, span), "number 0", &Orlo_RemoveItem, type, "unknown", "", span);
        break;
      }
      case 12: {
        const std::string action =
            any(std::array{"display", "display", "display", "", "email", "sound", "procedure", "shout"});
        const int offset = upTo(3) * -60;
        act(model.addAlarm(type, offset, action), "number 0", &Orlo_AddAlarm, type, "", action, "", offset, "");
        break;
      }
      case 13: {
        const int index = upTo(3);
        act(model.removeAlarm(type, index), "number 0", &Orlo_RemoveAlarm, type, index);
        break;
      }
      case 14:
        act(model.removeAllAlarms(type), "number 0", &Orlo_RemoveAllAlarmsFrom, type);
        break;
      case 15: {
        const std::string kind = any(std::array{"daily", "Weekly", "hourly"});
        const int interval = upTo(2);
        act(model.addRecurrence(kind, interval), "number 0", &Orlo_AddRecurrence, kind, interval, "", "", "", "", 0);
        break;
      }
      case 16:
        act(model.removeRecurrence(), "number 0", &Orlo_RemoveRecurrence);
        break;
      default:
        act(0, "text 3.0.0.1", &Orlo_Version);
        break;
    }
    checkSlots();
  }

  void checkSlots() {
    EXPECT_EQ(backend.m_ekCalendar != nullptr, model.calendar);
    EXPECT_EQ(backend.m_ekEvent != nullptr, model.event.has_value());
    EXPECT_EQ(backend.m_ekReminder != nullptr, model.reminder.has_value());
    EXPECT_EQ(backend.m_ekAlarm != nullptr, model.alarm);
    EXPECT_EQ(backend.m_ekParticipant != nullptr, model.participant);
    EXPECT_EQ(backend.m_ekRecurrenceRule != nullptr, model.rule);
    EXPECT_EQ(backend.m_ekEventPredicate != nullptr, model.eventFetch);
    EXPECT_EQ(backend.m_ekReminderPredicate != nullptr, model.reminderFetch);
    if (model.event && backend.m_ekEvent) {
      EXPECT_EQ(backend.m_ekEvent->alarms().size(), static_cast<std::size_t>(model.event->alarms));
      const auto rules = backend.m_ekEvent->recurrenceRules();
      EXPECT_EQ(rules && !rules->empty(), model.event->repeats);
    }
  }

  std::mt19937 random;
  Model model;
  orlo_PluginError pluginError;
  std::vector<std::string> story;  ///< the arguments of every call so far
};

TEST_P(RandomSequences, LeaveTheSlotsAndCodesThatTheModelExpects) {
  for (int i = 0; i < 400 && !HasFailure(); ++i) { step(); }
  if (HasFailure()) {
    std::string told;
    for (const auto& call : story) { told += "\n  " + call; }
    ADD_FAILURE() << "seed " << GetParam() << ", calls:" << told;
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomSequences, testing::Range(1U, 41U));

}  // namespace
}  // namespace orlocal
