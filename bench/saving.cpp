#include <cstdlib>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "dataset.h"
#include "floors.h"
#include "measurements.h"
#include "solution.h"

namespace orlocal::bench {
namespace {

std::u16string wide(const std::string& ascii) { return {ascii.begin(), ascii.end()}; }

void set(std::u16string_view property, std::u16string_view value) {
  Call(u"Orlo_SetProperty", {u"event", property, value}).checked();
}

void newEvent(int number) {
  Call(u"Orlo_NewItem", {u"event"}).checked();
  set(u"title", wide(fmt::format("Saved {}", number)));
  set(u"calendartitle", u"Calendar");
  set(u"startdate", u"2026-11-05 09:00:00");
  set(u"enddate", u"2026-11-05 10:00:00");
}

void save(std::u16string_view span) { Call(u"Orlo_SaveItem", {u"event", span}).checked(); }

std::u16string identifier() {
  Call read(u"Orlo_GetProperty", {u"event", u"uid"});
  read.checked();
  return read.text();
}

/// Seconds for `steps` runs of the measured step in a process of its own, after `prepare` and one step that warms up.
double timed(const Setting& setting, int steps, const std::function<std::function<void(int)>()>& prepare) {
  return inChild([&] {
    const auto plugin = startPlugin(setting.plugin);
    const auto step = prepare();
    step(0);
    return seconds([&] {
      for (int i = 1; i <= steps; ++i) { step(i); }
    });
  });
}

double floorInserts(const Setting& setting, int inserts) {
  InsertFloor floor(setting.folder / "inserts.floor");
  const FloorRow row{1793865600, 1793869200, "Saved 1", "Room 12", "", "0000@measured.example"};
  floor.insert(row);
  return seconds([&] {
    for (int i = 0; i < inserts; ++i) { floor.insert(row); }
  });
}

}  // namespace

void measureSaving(Report& report, const Setting& setting) {
  const int steps = setting.sizes.size() > 1 ? 200 : 20;
  for (const std::size_t events : setting.sizes) {
    setenv("ORLOCAL_STORE", (setting.folder / fmt::format("{}.db", events)).c_str(), 1);
    const auto row = [&](const std::string& name, double aim, int count, const std::function<double()>& subject) {
      Row measured = compare(name, setting.rounds, subject, [&] { return floorInserts(setting, count); });
      measured.events = events;
      measured.rows = static_cast<std::size_t>(count);
      measured.aim = aim;
      report.add(std::move(measured));
    };
    row("save a new event", 1.5, steps, [&] {
      return timed(setting, steps, [] {
        return [](int i) {
          newEvent(i);
          save(u"this");
        };
      });
    });
    row("update an event", 0, steps, [&] {
      return timed(setting, steps, [] {
        newEvent(0);
        save(u"this");
        return [](int i) {
          set(u"title", wide(fmt::format("Changed {}", i)));
          save(u"this");
        };
      });
    });
    row("remove an event", 0, steps, [&] {
      return timed(setting, steps, [&] {
        auto uids = std::make_shared<std::vector<std::u16string>>();
        for (int i = 0; i <= steps; ++i) {
          newEvent(i);
          save(u"this");
          uids->push_back(identifier());
        }
        return [uids](int i) {
          Call(u"Orlo_RemoveItem", {u"event", (*uids)[static_cast<std::size_t>(i)], u"", u"this"}).checked();
        };
      });
    });
    const int splits = steps / 10;
    row("split a series of 1,000", 0, splits, [&] {
      return timed(setting, splits, [&] {
        auto uids = std::make_shared<std::vector<std::u16string>>();
        Call(u"Orlo_NewItem", {u"calendar"}).checked();
        Call(u"Orlo_SetProperty", {u"calendar", u"title", u"Split"}).checked();
        Call(u"Orlo_SaveItem", {u"calendar"}).checked();
        for (int i = 0; i <= splits; ++i) {
          newEvent(i);
          set(u"calendartitle", u"Split");
          set(u"startdate", wide(fmt::format("2026-11-05 09:{:02}:00", i)));
          set(u"enddate", wide(fmt::format("2026-11-05 10:{:02}:00", i)));
          Call(u"Orlo_AddRecurrence", {u"daily", u"1", u"", u"", u"", u"", u"1000"}).checked();
          save(u"this");
        }
        // A minute apart, so that the i-th occurrence of a day belongs to the i-th series before and after its split.
        Call(u"Orlo_EventsFetch", {u"2028-03-19 00:00:00", u"2028-03-20 00:00:00", u"Split", u""}).checked();
        return [](int i) {
          Call openAt(u"Orlo_OpenItemAt", {u"event", u"1"});
          openAt.setLast(i + 1);
          openAt.checked();
          save(u"future");
        };
      });
    });
  }
}

}  // namespace orlocal::bench
