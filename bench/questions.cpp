#include "questions.h"

#include <memory>

#include <fmt/format.h>

#include "files.h"
#include "floors.h"
#include "processes.h"
#include "solution.h"
#include "store/time/zone.h"

namespace orlocal::bench {
namespace {

using store::LocalTime;

Ask floor(const std::filesystem::path& file, std::size_t (Floor::*within)(std::int64_t, std::int64_t)) {
  return [file, within, floor = std::shared_ptr<Floor>()](const Range& range) mutable {
    if (floor == nullptr) { floor = std::make_shared<Floor>(file); }
    return (*floor.*within)(utcSeconds(range.from), utcSeconds(range.to));
  };
}

}  // namespace

Range monthOf2026(int month) { return {LocalTime(2026, month, 1), LocalTime(2026, month + 1, 1)}; }

std::int64_t utcSeconds(LocalTime local) {
  return std::chrono::floor<std::chrono::seconds>(store::Zone::ofUser().toMoment(local)).time_since_epoch().count();
}

std::u16string timestamp(LocalTime local) {
  const std::string plain = fmt::format("{:04}-{:02}-{:02} {:02}:{:02}:{:02}", local.year(), local.month(), local.day(),
                                        local.hour(), local.minute(), local.second());
  return {plain.begin(), plain.end()};
}

Ask askPlugin() {
  struct Calls {
    Call fetch{u"Orlo_EventsFetch", {u"", u"", u"", u""}};
    Call count{u"Orlo_GetItemCountForType", {u"event"}};
  };
  return [calls = std::make_shared<Calls>()](const Range& range) {
    const std::u16string from = timestamp(range.from), to = timestamp(range.to);
    calls->fetch.setTexts({from, to, u"", u""});
    calls->fetch.checked();
    calls->count.checked();
    return static_cast<std::size_t>(calls->count.number());
  };
}

Row compareAnswers(const Setting& setting, std::size_t events, const Asking& asking) {
  const auto file = floorFile(setting, events);
  useStore(storeFile(setting, events));
  const auto besides = [&](const char* name, std::size_t (Floor::*within)(std::int64_t, std::int64_t)) {
    return Contender{name, [&, within] { return inChild([&] { return asking(floor(file, within)); }); }};
  };
  Row row = compare(setting.roundsFor(events),
                    {"",
                     [&] {
                       return inChild([&] {
                         const auto host = startPlugin(setting.plugin);
                         return asking(askPlugin());
                       });
                     }},
                    {besides("plain rows", &Floor::rowsWithin), besides("covering index", &Floor::timesWithin)});
  row.events = events;
  return row;
}

}  // namespace orlocal::bench
