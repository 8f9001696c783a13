#include <algorithm>
#include <memory>
#include <optional>
#include <ostream>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "base/translation.h"
#include "base/try.h"
#include "host/commands/alarms/alarm_commands.h"
#include "host/commands/alarms/alarm_list.h"
#include "host/commands/alarms/alarm_text.h"
#include "host/commands/choosing/common_options.h"
#include "host/commands/choosing/item_choice.h"
#include "host/commands/command_line/json_text.h"
#include "host/commands/command_line/store_session.h"
#include "host/commands/command_line/terminal_text.h"
#include "host/commands/command_line/trouble.h"
#include "host/commands/describing/format_option.h"
#include "host/commands/words/day_words.h"
#include "host/commands/words/time_words.h"
#include "store/alarm_book.h"
#include "store/time/clock.h"

namespace orlocal::host {
namespace {

using store::LocalDay;
using store::Moment;

/// Which alarms are looked at.
struct AlarmsWords {
  std::string next = "1 day";
  CalendarChoice calendars;
  FormatOption format{RowKind::kAlarm};
};

struct AnswerWords {
  std::vector<std::string> what;
  std::string length = "10m";
  bool all = false;
};

/// The store with its alarms, as one command sees them.
struct AlarmDesk {
  std::unique_ptr<store::CalendarStore> store;
  store::Zone viewer = store::Zone::ofUser();
  Moment now = store::now();
  Moment until = now;  ///< so far ahead is looked

  static Result<AlarmDesk> open() {
    AlarmDesk desk;
    ORLOCAL_TRY(desk.store, openUserStore());
    return desk;
  }
  /// Days are those of the wall clock.
  Moment after(const Length& length) const {
    const store::LocalTime local = viewer.toLocal(now);
    const auto exact = now - viewer.toMoment(local);
    return viewer.toMoment(local + std::int64_t{86'400} * length.days) + exact + length.minutes;
  }
  /// "Mon 2 Nov 2026 09:45".
  std::string inWords(Moment moment) const {
    const store::LocalTime local = viewer.toLocal(moment);
    return shortDay(LocalDay(local)) + " " + clockTime(local);
  }
  Result<std::vector<AlarmNews>> list(const CalendarChoice& calendars) {
    ORLOCAL_TRY(const auto named, calendarsChosen(*store, calendars));
    store::AlarmTimetable timetable(*store, viewer);
    return listAlarms(*store, timetable, named, now, until);
  }
  WordsSetting setting() const { return settingOfUser(viewer.toLocal(now)); }
};

/// None where it was told that it is none.
std::optional<Length> lengthOf(const std::string& text, const AlarmDesk& desk, CommandContext& context) {
  const auto length = readLength(text, desk.setting());
  if (length && (length->days > 0 || length->minutes.count() > 0)) { return *length; }
  tellTrouble(context.streams.err,
              length ? tr("\"{}\" is no time at all; write 10m, 1h or 2 days", text) : length.error().message);
  return std::nullopt;
}

nlohmann::json alarmsJson(const std::vector<AlarmNews>& list, const AlarmDesk& desk) {
  nlohmann::json json = {{"timeZone", desk.viewer.name()}, {"alarms", nlohmann::json::array()}};
  for (const AlarmNews& news : list) { json["alarms"].push_back(alarmNewsJson(news, desk.viewer)); }
  return json;
}

/// What the words ask for; none where it was told why they make no sense.
Result<std::optional<std::vector<AlarmNews>>> alarmsWanted(const AlarmsWords& words, AlarmDesk& desk,
                                                           CommandContext& context) {
  const auto length = lengthOf(words.next, desk, context);
  if (!length) { return std::nullopt; }
  desk.until = desk.after(*length);
  return desk.list(words.calendars);
}

Result<ExitStatus> showAlarms(const AlarmsWords& words, CommandContext& context) {
  ORLOCAL_TRY(AlarmDesk desk, AlarmDesk::open());
  ORLOCAL_TRY(const auto wanted, alarmsWanted(words, desk, context));
  if (!wanted) { return ExitStatus::kUsage; }
  const std::vector<AlarmNews>& list = *wanted;
  if (context.options.json) {
    nlohmann::json json = alarmsJson(list, desk);
    json["from"] = isoMoment(desk.now, desk.viewer);
    json["to"] = isoMoment(desk.until, desk.viewer);
    printJson(json, context.streams.out);
  } else if (words.format.isGiven()) {
    words.format.print(alarmsJson(list, desk)["alarms"], context.streams.out);
  } else if (list.empty()) {
    context.streams.out << tr("No alarm rings until {}.\n", desk.inWords(desk.until));
  } else {
    printAlarms(list, desk.viewer, desk.now, context.streams.colors, context.streams.out);
  }
  return ExitStatus::kDone;
}

bool isOpen(const AlarmNews& news) { return news.state != AlarmState::kComing; }

/// The alarms of the one event, series or reminder that fits best.
Result<std::vector<AlarmNews>> alarmsNamed(const std::string& what, const std::vector<AlarmNews>& list,
                                           const AlarmDesk& desk) {
  std::optional<int> best;
  std::vector<AlarmNews> fitting;
  for (const AlarmNews& news : list) {
    const auto fit = news.identifier() == what ? std::optional(0) : fitOf(what, *news.item);
    if (!fit || (best && *fit > *best)) { continue; }
    if (!best || *fit < *best) { fitting.clear(); }
    best = fit;
    fitting.push_back(news);
  }
  std::set<store::ItemId> items;
  std::string lines;
  for (const AlarmNews& news : fitting) {
    if (!items.insert(news.ring.key.item).second) { continue; }
    lines += fmt::format("\n  {}  {}", shortIdentifier(*news.item), alarmNewsInWords(news, desk.viewer));
  }
  if (items.size() > 1) {
    return failure(ErrorCode::kRefused,
                   tr("\"{}\" may be {} things; name one by its identifier:{}", printable(what), items.size(), lines));
  }
  if (!fitting.empty()) {
    // What has rung is meant before what will ring, and of that the next.
    const bool anyOpen = std::any_of(fitting.begin(), fitting.end(), isOpen);
    const Moment next = fitting.front().rings;
    std::erase_if(fitting, [&](const AlarmNews& news) { return anyOpen ? !isOpen(news) : news.rings != next; });
    return fitting;
  }
  // Says so when there is no such thing at all.
  ORLOCAL_TRY(const ChosenItem chosen, chooseItem(*desk.store, desk.viewer, {.what = what}));
  return failure(ErrorCode::kNotFound,
                 tr("No alarm of \"{}\" has rung, and none rings until {}; --next looks further ahead.",
                    printable(chosen.item->title.value_or("")), desk.inWords(desk.until)));
}

Result<std::vector<AlarmNews>> openAlarms(const AnswerWords& words, const std::vector<AlarmNews>& list,
                                          const AlarmDesk& desk) {
  std::vector<AlarmNews> taken;
  if (words.all) { std::copy_if(list.begin(), list.end(), std::back_inserter(taken), isOpen); }
  for (const std::string& what : words.what) {
    ORLOCAL_TRY(const auto named, alarmsNamed(what, list, desk));
    taken.insert(taken.end(), named.begin(), named.end());
  }
  return taken;
}

/// What the same words name is taken once.
std::vector<store::AlarmKey> keysOf(const std::vector<AlarmNews>& list) {
  std::set<store::AlarmKey> keys;
  for (const AlarmNews& news : list) { keys.insert(news.ring.key); }
  return {keys.begin(), keys.end()};
}

/// Takes out what rang earlier of the same event, series or reminder: nobody wants to be told of it twice at once.
std::vector<AlarmNews> allButTheLatest(std::vector<AlarmNews>& list) {
  std::vector<AlarmNews> latest, earlier;
  for (AlarmNews& news : list) {
    const auto same = std::find_if(latest.begin(), latest.end(),
                                   [&](const AlarmNews& each) { return each.ring.key.item == news.ring.key.item; });
    if (same == latest.end()) {
      latest.push_back(std::move(news));
    } else {
      if (news.ring.key > same->ring.key) { std::swap(news, *same); }
      if (news.ring.key != same->ring.key) { earlier.push_back(std::move(news)); }
    }
  }
  list = std::move(latest);
  return earlier;
}

Result<ExitStatus> snooze(const AlarmsWords& which, const AnswerWords& words, CommandContext& context) {
  ORLOCAL_TRY(AlarmDesk desk, AlarmDesk::open());
  const auto length = lengthOf(words.length, desk, context);
  if (!length) { return ExitStatus::kUsage; }
  ORLOCAL_TRY(const auto list, alarmsWanted(which, desk, context));
  if (!list) { return ExitStatus::kUsage; }
  ORLOCAL_TRY(auto taken, openAlarms(words, *list, desk));
  for (const AlarmNews& news : taken) {
    if (isOpen(news)) { continue; }
    return failure(ErrorCode::kRefused,
                   tr("The alarm of \"{}\" has not rung yet; it rings {}. `orlocal edit` moves it.",
                      printable(news.item->title.value_or("")), desk.inWords(news.rings)));
  }
  const Moment until = desk.after(*length);
  const std::vector<AlarmNews> earlier = allButTheLatest(taken);
  store::AlarmBook book(*desk.store);
  ORLOCAL_CHECK(book.snooze(keysOf(taken), until));
  ORLOCAL_CHECK(book.acknowledge(keysOf(earlier), desk.now));
  const store::LocalTime local = desk.viewer.toLocal(until);
  for (AlarmNews& news : taken) {
    news.state = AlarmState::kSnoozed;
    news.rings = until;
    if (!context.options.json) {
      context.streams.out << tr(
          "Rings again at {}{}: {}\n",
          LocalDay(local) == LocalDay(desk.viewer.toLocal(desk.now)) ? "" : shortDay(store::LocalDay(local)) + " ",
          clockTime(local), alarmNewsInWords(news, desk.viewer));
    }
  }
  if (context.options.json) { printJson(alarmsJson(taken, desk), context.streams.out); }
  return ExitStatus::kDone;
}

Result<ExitStatus> dismiss(const AlarmsWords& which, const AnswerWords& words, CommandContext& context) {
  if (words.what.empty() == !words.all) {
    tellTrouble(context.streams.err, tr("Name the alarms to dismiss, or write --all for all that have rung."));
    return ExitStatus::kUsage;
  }
  ORLOCAL_TRY(AlarmDesk desk, AlarmDesk::open());
  ORLOCAL_TRY(const auto list, alarmsWanted(which, desk, context));
  if (!list) { return ExitStatus::kUsage; }
  ORLOCAL_TRY(const auto taken, openAlarms(words, *list, desk));
  ORLOCAL_CHECK(store::AlarmBook(*desk.store).acknowledge(keysOf(taken), desk.now));
  if (context.options.json) {
    printJson(alarmsJson(taken, desk), context.streams.out);
    return ExitStatus::kDone;
  }
  if (taken.empty()) { context.streams.out << tr("No alarm has rung that was not dismissed.\n"); }
  for (const AlarmNews& news : taken) {
    context.streams.out << (isOpen(news) ? tr("Dismissed: {}", alarmNewsInWords(news, desk.viewer))
                                         : tr("Will not ring: {}", alarmNewsInWords(news, desk.viewer)))
                        << '\n';
  }
  return ExitStatus::kDone;
}

}  // namespace

void registerAlarmCommands(CommandLine& line) {
  const auto words = std::make_shared<AlarmsWords>();
  CLI::App& alarms =
      line.add("alarms",
               "Show the alarms that will ring, and those that have rung and were not dismissed. They ring in\n"
               "`orlocal watch --alarms`.",
               [words](CommandContext& context) { return showAlarms(*words, context); });
  alarms.add_option("--next", words->next, "How far ahead to look: 1h, 2 days")
      ->type_name("LENGTH")
      ->capture_default_str();
  addCalendarOptions(alarms, words->calendars);
  words->format.addTo(alarms);

  const auto snoozed = std::make_shared<AnswerWords>();
  CLI::App& snoozing =
      line.addUnder(alarms, "snooze", "Let an alarm that has rung ring again later.",
                    [words, snoozed](CommandContext& context) { return snooze(*words, *snoozed, context); });
  snoozing.footer("  orlocal alarms snooze standup\n  orlocal alarms snooze standup --for 1h");
  snoozing.add_option("what", snoozed->what, "The title of what it is about, words of it, or an identifier or its end")
      ->type_name("WHAT")
      ->required();
  snoozing.add_option("--for", snoozed->length, "When it rings again, from now on: 5m, 1h, 1 day")
      ->type_name("LENGTH")
      ->capture_default_str();

  const auto dismissed = std::make_shared<AnswerWords>();
  CLI::App& dismissing =
      line.addUnder(alarms, "dismiss", "Let alarms ring no more: those that have rung, else the next one.",
                    [words, dismissed](CommandContext& context) { return dismiss(*words, *dismissed, context); });
  dismissing.footer("  orlocal alarms dismiss standup\n  orlocal alarms dismiss --all");
  dismissing
      .add_option("what", dismissed->what, "The title of what it is about, words of it, or an identifier or its end")
      ->type_name("WHAT");
  dismissing.add_flag("--all", dismissed->all, "All that have rung or are snoozed");
  // Last: words that are added take on what there is.
  alarms.footer("  orlocal alarms\n  orlocal alarms --next '3 days' --calendar Work");
}

}  // namespace orlocal::host
