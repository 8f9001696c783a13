#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "files.h"
#include "floors.h"
#include "new_event.h"
#include "parts.h"
#include "processes.h"
#include "solution.h"

namespace orlocal::bench {
namespace {

std::u16string identifier() {
  Call read(u"Orlo_GetProperty", {u"event", u"uid"});
  read.checked();
  return read.text();
}

/// A change that is measured: prepared in the process that makes it, then made with the numbers 0, 1, 2 …
using Change = std::function<void(int)>;
using Prepare = std::function<Change(int count)>;

Change savingNew(int) {
  return [](int i) {
    fillNewEvent(i);
    saveEvent(u"this");
  };
}

Change updating(int) {
  savingNew(0)(0);
  return [](int i) {
    setEvent(u"title", fmt::format("Changed {}", i));
    saveEvent(u"this");
  };
}

Change removing(int count) {
  auto uids = std::make_shared<std::vector<std::u16string>>();
  for (int i = 0; i < count; ++i) {
    savingNew(0)(i);
    uids->push_back(identifier());
  }
  return [uids](int i) {
    Call(u"Orlo_RemoveItem", {u"event", (*uids)[static_cast<std::size_t>(i)], u"", u"this"}).checked();
  };
}

Change splitting(int count) {
  Call(u"Orlo_NewItem", {u"calendar"}).checked();
  Call(u"Orlo_SetProperty", {u"calendar", u"title", u"Split"}).checked();
  Call(u"Orlo_SaveItem", {u"calendar"}).checked();
  for (int i = 0; i < count; ++i) {
    fillNewEvent(i);
    setEvent(u"calendartitle", "Split");
    setEvent(u"startdate", fmt::format("2026-11-05 09:{:02}:00", i));
    setEvent(u"enddate", fmt::format("2026-11-05 10:{:02}:00", i));
    Call(u"Orlo_AddRecurrence", {u"daily", u"1", u"", u"", u"", u"", u"1000"}).checked();
    saveEvent(u"this");
  }
  // A minute apart, so that the i-th occurrence of a day belongs to the i-th series before and after its split.
  Call(u"Orlo_EventsFetch", {u"2028-03-19 00:00:00", u"2028-03-20 00:00:00", u"Split", u""}).checked();
  return [](int i) {
    Call openAt(u"Orlo_OpenItemAt", {u"event", u"1"});
    openAt.setLast(i + 1);
    openAt.checked();
    saveEvent(u"future");
  };
}

/// After one change that does not count.
double changesMade(const Change& change, int count) {
  change(0);
  return seconds([&] {
    for (int i = 1; i <= count; ++i) { change(i); }
  });
}

}  // namespace

void measureSaving(Report& report, const Setting& setting) {
  const int many = setting.smoke ? 20 : 200;
  const struct {
    const char* name;
    double aim;
    int count;
    Prepare prepare;
  } kinds[] = {{"save a new event", 1.2, many, savingNew},
               {"update an event", 0, many, updating},
               {"remove an event", 0, many, removing},
               {"split a series of 1,000", 1.5, many / 10, splitting}};
  const auto inserts = setting.folder / "inserts.floor";
  for (const std::size_t events : setting.sizes) {
    useStore(copyOfStore(setting, events, "saving"));
    for (const auto& kind : kinds) {
      const auto outcome = [&](double taken) { return Outcome{taken, static_cast<std::size_t>(kind.count)}; };
      const auto made = [&] {
        return inChild([&] {
          const auto plugin = startPlugin(setting.plugin);
          return outcome(changesMade(kind.prepare(kind.count + 1), kind.count));
        });
      };
      const auto inserted = [&] {
        InsertFloor::make(inserts);
        InsertFloor floor(inserts);
        return outcome(changesMade([&](int) { floor.insert(); }, kind.count));
      };
      Row row = compare(setting.roundsFor(events), {"", made}, {{"plain inserts", inserted}});
      row.name = kind.name;
      row.events = events;
      row.aim = kind.aim;
      report.add(std::move(row));
    }
  }
}

}  // namespace orlocal::bench
