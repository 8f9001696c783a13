#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "base/translation.h"
#include "base/try.h"
#include "host/commands/choosing/item_choice.h"
#include "host/commands/command_line/command.h"
#include "host/commands/command_line/json_text.h"
#include "host/commands/command_line/output_file.h"
#include "host/commands/command_line/own_addresses.h"
#include "host/commands/command_line/store_session.h"
#include "host/commands/command_line/terminal_text.h"
#include "host/commands/invitations/invitation_commands.h"
#include "host/commands/words/day_range.h"
#include "host/commands/words/day_words.h"
#include "store/edits/item_writer.h"
#include "store/invitations/own_answer.h"
#include "store/invitations/people.h"
#include "store/time/clock.h"

namespace orlocal::host {
namespace {

using store::Attendee;

struct ReplyWords {
  std::string what, comment, occurrence;
  std::string file = "-";
  std::vector<std::string> calendars;
  bool accept = false, decline = false, tentative = false;
};

/// The answer that was chosen; none when none was.
std::optional<Attendee::Status> chosenAnswer(const ReplyWords& words) {
  if (words.accept) { return Attendee::Status::kAccepted; }
  if (words.decline) { return Attendee::Status::kDeclined; }
  if (words.tentative) { return Attendee::Status::kTentative; }
  return std::nullopt;
}

Result<std::vector<std::string>> knownAddresses() {
  auto addresses = ownAddresses();
  if (!addresses.empty()) { return addresses; }
  return failure(ErrorCode::kNotFound,
                 tr("Nobody knows who you are: write your mail addresses into the settings, as \"addresses = "
                    "you@example.org\" below [person]; `orlocal settings` shows where."));
}

/// An invitation that nobody has answered yet.
struct Waiting {
  std::shared_ptr<const store::Item> item;  ///< the event or series, or a changed occurrence alone
  store::Calendar calendar;
  std::optional<store::Moment> starts;  ///< when it comes next; of reminders when it is due
  bool allDay = false;
};

/// When it comes next; none when it is over.
Result<std::optional<Waiting>> waitingOf(store::CalendarStore& store, const store::Item& item,
                                         const store::Calendar& calendar, const store::Zone& viewer) {
  Waiting waiting{std::make_shared<const store::Item>(item), calendar, std::nullopt, item.allDay()};
  const auto& times = item.start ? item.start : item.due;
  if (times) { waiting.starts = store::momentOf(*times, viewer); }
  if (item.kind == store::ItemKind::kReminder) { return item.completed ? std::nullopt : std::optional(waiting); }
  const store::Moment now = store::now();
  if (item.recurrence.empty()) {
    const bool over = item.end && store::momentOf(*item.end, viewer) < now;
    return over ? std::nullopt : std::optional(waiting);
  }
  ORLOCAL_TRY(const auto occurrences, store.occurrences({now, std::nullopt, {calendar.id}, item.id}));
  if (occurrences.size() == 0) { return std::nullopt; }
  waiting.starts = occurrences[0].start;
  return waiting;
}

Result<std::vector<Waiting>> waitingInvitations(store::CalendarStore& store, const ReplyWords& words,
                                                const std::vector<std::string>& addresses, const store::Zone& viewer) {
  std::vector<Waiting> found;
  ORLOCAL_TRY(const auto calendars, calendarsTitled(store, words.calendars));
  for (const store::Calendar& calendar : calendars) {
    if (calendar.readOnly) { continue; }
    std::vector<store::Item> unanswered;
    ORLOCAL_CHECK(store.forEachItem(calendar.id, [&](const store::Item& main, const auto& changed) -> Status {
      const auto waits = [&](const store::Item& item) {
        const auto address = store::invitedUnder(item, addresses);
        return address && store::waitsForAnswer(item, *address);
      };
      if (waits(main)) {
        unanswered.push_back(main);
      } else {
        std::ranges::copy_if(changed, std::back_inserter(unanswered), waits);
      }
      return {};
    }));
    for (const store::Item& item : unanswered) {
      ORLOCAL_TRY(auto waiting, waitingOf(store, item, calendar, viewer));
      if (waiting) { found.push_back(*std::move(waiting)); }
    }
  }
  std::ranges::stable_sort(found, {}, &Waiting::starts);
  return found;
}

std::string organizerName(const store::Item& item) {
  const Attendee* organizer = store::organizerOf(item);
  if (organizer == nullptr) { return ""; }
  return organizer->name && !organizer->name->empty() ? *organizer->name
                                                      : std::string(store::withoutMailto(organizer->address));
}

std::string dayAndTime(const Waiting& waiting, const store::Zone& viewer) {
  if (!waiting.starts) { return tr("no date"); }
  const store::LocalTime local = viewer.toLocal(*waiting.starts);
  const std::string day = shortDay(store::LocalDay(local));
  return waiting.allDay ? day : day + " " + clockTime(local);
}

Result<ExitStatus> listWaiting(const ReplyWords& words, CommandContext& context) {
  ORLOCAL_TRY(const auto addresses, knownAddresses());
  ORLOCAL_TRY(const auto store, openUserStore());
  const store::Zone viewer = store::Zone::ofUser();
  ORLOCAL_TRY(const auto waiting, waitingInvitations(*store, words, addresses, viewer));
  std::ostream& out = context.streams.out;
  if (context.options.json) {
    nlohmann::json list = nlohmann::json::array();
    for (const Waiting& each : waiting) {
      const Attendee* organizer = store::organizerOf(*each.item);
      list.push_back({{"identifier", each.item->itemIdentifier},
                      {"uid", each.item->uid},
                      {"title", jsonText(each.item->title)},
                      {"calendar", each.calendar.title},
                      {"calendarIdentifier", each.calendar.identifier},
                      {"start", each.starts ? nlohmann::json(isoMoment(*each.starts, viewer)) : nlohmann::json()},
                      {"allDay", each.allDay},
                      {"location", jsonText(each.item->location)},
                      {"organizer", organizer->address},
                      {"repeats", !each.item->recurrence.empty()}});
    }
    printJson(list, out);
    return ExitStatus::kDone;
  }
  if (waiting.empty()) { out << tr("No invitation waits for an answer.\n"); }
  for (const Waiting& each : waiting) {
    out << tr("{}  {}  {}, from {}\n", shortIdentifier(*each.item), dayAndTime(each, viewer),
              printable(each.item->title.value_or(tr("(no title)"))), printable(organizerName(*each.item)));
  }
  return ExitStatus::kDone;
}

/// The original start of the occurrence that was chosen, as calendar files name it.
Result<std::optional<store::CalendarTime>> originalOf(store::CalendarStore& store, const ChosenItem& chosen) {
  if (!chosen.occurrence || chosen.item->recurrence.empty()) { return std::nullopt; }
  if (chosen.occurrence->item != chosen.item->id) {
    ORLOCAL_TRY(const auto changed, store.item(chosen.occurrence->item));
    if (changed != nullptr && changed->recurrenceId) { return *changed->recurrenceId; }
  }
  return store::recurrenceIdOf(*chosen.item, chosen.occurrence->originalStart, store::Zone::ofUser());
}

Result<ExitStatus> runAnswer(const ReplyWords& words, Attendee::Status status, CommandContext& context) {
  ORLOCAL_TRY(const auto addresses, knownAddresses());
  ORLOCAL_TRY(const auto store, openUserStore());
  const store::Zone viewer = store::Zone::ofUser();
  ItemWords choice{.what = words.what, .calendars = words.calendars};
  if (!words.occurrence.empty()) {
    const auto days = daysFromWords(words.occurrence, store::LocalDay(viewer.toLocal(store::now())));
    if (days) { choice.day = days->first; }
  }
  ORLOCAL_TRY(const ChosenItem chosen, chooseItem(*store, viewer, choice));
  ORLOCAL_TRY(const auto original, originalOf(*store, chosen));
  const auto address = store::invitedUnder(*chosen.item, addresses);
  if (!address) {
    const std::string own =
        addresses.size() == 1 ? addresses.front() : tr("{} or your other addresses", addresses.front());
    return failure(ErrorCode::kRefused,
                   tr("\"{}\" does not invite {}; `orlocal reply` lists what waits for your answer.",
                      chosen.item->title.value_or(""), own));
  }
  store::OwnAnswer answer{*address, status, std::nullopt};
  if (!words.comment.empty()) { answer.comment = words.comment; }
  ORLOCAL_TRY(const auto writer, store->startWriting());
  ORLOCAL_CHECK(store::answerInvitation(*writer, *chosen.item, original, answer, [&](const std::string& message) {
    return writeOutput(words.file, message, context.streams.out);
  }));
  if (words.file != "-") {
    context.streams.out << printable(tr("{}: send it to {}", words.file, organizerName(*chosen.item))) << '\n';
  }
  return ExitStatus::kDone;
}

Result<ExitStatus> runReply(const ReplyWords& words, CommandContext& context) {
  const auto answer = chosenAnswer(words);
  if (answer && !words.what.empty()) { return runAnswer(words, *answer, context); }
  if (!answer && words.what.empty()) { return listWaiting(words, context); }
  context.streams.err << (answer ? tr("orlocal: what is answered? `orlocal reply` lists what waits for an answer\n")
                                 : tr("orlocal: what is the answer? --accept, --decline or --tentative\n"));
  return ExitStatus::kUsage;
}

}  // namespace

void registerReplyCommand(CommandLine& line) {
  auto words = std::make_shared<ReplyWords>();
  CLI::App& command = line.add("reply", "Answer an invitation; without words, list those that wait for an answer.",
                               [words](CommandContext& context) { return runReply(*words, context); });
  command.footer(tr("The answer is kept in the store, and written as a calendar file for the organiser. Calendars of "
                    "accounts send\nit at the next sync; then the server tells the organiser.\n") +
                 "  orlocal reply\n  orlocal reply \"Quarterly review\" --accept -o answer.ics");
  command.add_option("item", words->what, "The event or reminder: identifier, end of one, or title")
      ->type_name("ID|TITLE");
  CLI::Option* accept = command.add_flag("--accept", words->accept, "Come");
  CLI::Option* decline = command.add_flag("--decline", words->decline, "Do not come");
  CLI::Option* tentative = command.add_flag("--tentative", words->tentative, "Come perhaps");
  accept->excludes(decline, tentative);
  decline->excludes(tentative);
  command.add_option("--comment", words->comment, "A word to the organiser")->type_name("WORDS");
  command.add_option("--occurrence", words->occurrence, "Answer for this day of a series alone")
      ->type_name("DAY")
      ->check(objectionToDay);
  command.add_option("--calendar", words->calendars, "Look in this calendar or list only; may be repeated")
      ->type_name("TITLE")
      ->allow_extra_args(false);
  command
      .add_option("-o,--output", words->file,
                  "The file to write the answer to; - is the standard output, as without it")
      ->type_name("FILE");
}

}  // namespace orlocal::host
