#include <algorithm>
#include <list>
#include <optional>
#include <random>
#include <sstream>

#include "platform/linux/store_fixture.h"

// Two programs open, change, move, split and remove the occurrences of one series at random. A model knows what is
// left, and what has to be refused.

namespace orlocal {
namespace {

constexpr std::size_t kTexts = 3;  ///< title, notes, location

/// One occurrence as the model knows it.
struct Happening {
  int series = 0;
  Date original, start;
  std::chrono::hours length{1};
  bool changed = false;  ///< has a row of its own
  std::array<std::string, kTexts> texts{"weekly", "-", "-"};
};

/// What a program has open: the object, and what it is to the model.
struct Opened {
  std::shared_ptr<EKEvent> event;
  int series = 0;
  Date original;
  Happening* row = nullptr;  ///< of an occurrence that was changed when it was opened
  std::array<std::optional<std::string>, kTexts> texts;
  std::optional<Date> start;
};

class TwoWritersAtRandom : public StoreFixture, public testing::WithParamInterface<unsigned> {
 protected:
  TwoWritersAtRandom() : random(GetParam()) {
    store::Item item = eventAt("weekly", 2026, 11, 3, 9);
    item.recurrence.rules = {weekly()};
    item.recurrence.rules[0].count = 8;
    put(std::move(item));
    for (int week = 0; week < 8; ++week) {
      Happening happening;
      happening.original = happening.start = firstStart + std::chrono::weeks(week);
      model.push_back(happening);
    }
    for (Program& program : programs) {
      program.system = makeSystemPlatform();
      program.store = program.system->eventKit().eventStoreWithAccessToEntityTypes(EventKit::kMaskEvent);
    }
  }

  struct Program {
    std::shared_ptr<Platform> system;
    std::shared_ptr<EKEventStore> store;
    std::list<Opened> opened;
  };

  int upTo(int most) { return static_cast<int>(random() % static_cast<unsigned>(most + 1)); }

  static std::shared_ptr<const EKEventArray> all(const Program& program) {
    return program.store->eventsMatchingPredicate(
        program.store->predicateForEvents(moment("2026-10-01 00:00:00 +0100"), moment("2027-03-01 00:00:00 +0100"),
                                          program.store->calendarsForEntityType(EKEntityType::kEvent)));
  }
  static std::array<std::string, kTexts> textsOf(const EKEvent& event) {
    return {event.title().value_or("-"), event.notes().value_or("-"), event.location().value_or("-")};
  }

  std::vector<std::string> seen(const Program& program) {
    std::vector<std::string> lines;
    const auto found = all(program);
    for (std::size_t i = 0; i < found->count(); ++i) {
      const auto event = found->objectAtIndex(i);
      lines.push_back(line(*event->startDate(), textsOf(*event)));
    }
    std::sort(lines.begin(), lines.end());
    return lines;
  }
  std::vector<std::string> expected() {
    std::vector<std::string> lines;
    for (const Happening& each : model) { lines.push_back(line(each.start, each.texts)); }
    std::sort(lines.begin(), lines.end());
    return lines;
  }
  static std::string line(Date start, const std::array<std::string, kTexts>& texts) {
    return formatDate(start, 3600) + " " + texts[0] + " " + texts[1] + " " + texts[2];
  }

  void open(Program& program) {
    const auto found = all(program);
    if (found->count() == 0) { return; }
    const auto event = found->objectAtIndex(static_cast<std::size_t>(upTo(static_cast<int>(found->count()) - 1)));
    const auto happening = std::find_if(model.begin(), model.end(), [&](const Happening& each) {
      return each.original == *event->occurrenceDate() && each.start == *event->startDate() &&
             each.texts == textsOf(*event);
    });
    ASSERT_NE(happening, model.end());
    EXPECT_EQ(event->isDetached(), happening->changed);
    program.opened.push_back(
        {event, happening->series, happening->original, happening->changed ? &*happening : nullptr, {}, std::nullopt});
    if (program.opened.size() > 4) { program.opened.pop_front(); }
  }

  void set(Opened& opened) {
    const std::string value = "v" + std::to_string(++values);
    switch (upTo(3)) {
      case 0:
        opened.event->setTitle(value);
        opened.texts[0] = value;
        break;
      case 1:
        opened.event->setNotes(value);
        opened.texts[1] = value;
        break;
      case 2:
        opened.event->setLocation(value);
        opened.texts[2] = value;
        break;
      default: {
        const store::Zone berlin = *store::Zone::named("Europe/Berlin");
        const store::LocalDay day(berlin.toLocal(opened.original));
        opened.start = berlin.toMoment(store::LocalTime(day.year(), day.month(), day.day(), 7 + upTo(12)));
        opened.event->setStartDate(opened.start);
        opened.event->setEndDate(*opened.start + std::chrono::hours(1));
      }
    }
  }

  /// The occurrence as it now is; null when there is none any more.
  Happening* find(const Opened& opened) {
    for (Happening& each : model) {
      if (opened.row != nullptr ? &each == opened.row
                                : each.series == opened.series && each.original == opened.original) {
        return &each;
      }
    }
    return nullptr;
  }
  bool isFirst(const Happening& happening) const {
    return std::none_of(model.begin(), model.end(), [&](const Happening& each) {
      return each.series == happening.series && each.original < happening.original;
    });
  }

  void applyTo(Happening& happening, const Opened& opened) {
    for (std::size_t i = 0; i < kTexts; ++i) {
      if (opened.texts[i]) { happening.texts[i] = *opened.texts[i]; }
    }
  }
  void modelSave(Happening& at, const Opened& opened, bool later) {
    const auto moved = opened.start ? *opened.start - at.start : Date::duration(0);
    if (!later) {
      at.changed = true;
      at.start += moved;
      applyTo(at, opened);
      return;
    }
    const int from = at.series, to = isFirst(at) ? from : ++series;
    const Date original = at.original;
    for (Happening& each : model) {
      if (each.series != from || each.original < original) { continue; }
      each.series = to;
      each.original += moved;
      if (!each.changed || &each == &at) {
        each.start += moved;
        applyTo(each, opened);
      }
    }
  }
  void modelRemove(Happening& at, bool later) {
    const int from = at.series;
    const Date original = at.original;
    std::erase_if(model, [&](const Happening& each) {
      return each.series == from && (later ? each.original >= original : each.original == original);
    });
  }

  void finish(Program& program, bool removes) {
    const bool later = upTo(2) == 0;
    const EKSpan span = later ? EKSpan::kFutureEvents : EKSpan::kThisEvent;
    auto chosen = program.opened.begin();
    std::advance(chosen, upTo(static_cast<int>(program.opened.size()) - 1));
    const Opened opened = std::move(*chosen);
    program.opened.erase(chosen);
    std::optional<Error> error;
    const bool done = removes ? program.store->removeEvent(opened.event, span, true, error)
                              : program.store->saveEvent(opened.event, span, true, error);
    Happening* at = find(opened);
    std::ostringstream told;
    told << (removes ? "remove " : "save ") << formatDate(opened.original, 3600) << (later ? " future" : " this")
         << (opened.start ? " moved to " + formatDate(*opened.start, 3600) : "") << (at != nullptr ? "" : ": refused");
    story.push_back(told.str());
    EXPECT_EQ(done, at != nullptr) << error.value_or(Error{"no reason", {}}).localizedDescription;
    if (!done || at == nullptr) { return; }
    // What others have open of a changed occurrence that goes is gone, too.
    if (removes) {
      modelRemove(*at, later);
    } else {
      modelSave(*at, opened, later);
    }
  }

  void step() {
    Program& program = programs[static_cast<std::size_t>(upTo(1))];
    const int dice = upTo(9);
    if (dice < 4 || program.opened.empty()) { return open(program); }
    if (dice < 7) {
      auto chosen = program.opened.begin();
      std::advance(chosen, upTo(static_cast<int>(program.opened.size()) - 1));
      return set(*chosen);
    }
    finish(program, dice == 9 && upTo(1) == 0);
    for (const Program& each : programs) { EXPECT_EQ(seen(each), expected()); }
  }

  const Date firstStart = moment("2026-11-03 09:00:00 +0100");
  std::mt19937 random;
  std::list<Happening> model;
  std::array<Program, 2> programs;
  int series = 0, values = 0;
  std::vector<std::string> story;
};

TEST_P(TwoWritersAtRandom, LeaveWhatTheModelExpects) {
  for (int i = 0; i < 150 && !HasFailure(); ++i) { step(); }
  if (!HasFailure()) { return; }
  std::string told;
  for (const std::string& line : story) { told += "\n  " + line; }
  ADD_FAILURE() << "seed " << GetParam() << told;
}

INSTANTIATE_TEST_SUITE_P(Seeds, TwoWritersAtRandom, testing::Range(1U, 61U));

}  // namespace
}  // namespace orlocal
