#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "base/result.h"
#include "host/commands/choosing/item_choice.h"
#include "host/commands/command_line/command.h"
#include "host/commands/command_line/store_session.h"
#include "host/commands/words/terms.h"
#include "store/calendar_store.h"

namespace CLI {
class App;
}

namespace orlocal::host {

/// What every command that changes something has: the store, who asks, and the words' setting.
class ChangeRun {
 public:
  /// `dryRun`: what is saved is not written.
  static Result<ChangeRun> begin(CommandContext& context, bool dryRun, NoStore noStore = NoStore::kIsAFailure);

  store::CalendarStore& store() { return *m_store; }
  const store::Zone& viewer() const { return m_viewer; }
  const WordsSetting& setting() const { return m_setting; }
  CommandContext& context() { return m_context; }
  bool dryRun() const { return m_dryRun; }

  /// Says that what is written from now on is this command: `edit "Lunch"`.
  void beginCommand(std::string words);
  /// Who asks, as the journal names people.
  static std::string person();

  /// Whether the person wants it: true without a question where `yes`. Where nobody can be asked, none; the remedy,
  /// `--yes`, is told.
  Result<std::optional<bool>> agreed(const std::string& question, bool yes);
  /// The answer to a question, in small letters; none where nobody can be asked.
  std::optional<std::string> answer(const std::string& question);

 private:
  ChangeRun(CommandContext& context, std::shared_ptr<store::CalendarStore> store, bool dryRun);

  CommandContext& m_context;
  std::shared_ptr<store::CalendarStore> m_store;
  store::Zone m_viewer;
  WordsSetting m_setting;
  bool m_dryRun;
};

/// Tells why words of the command line make no sense; the status for that.
ExitStatus tellUsage(CommandContext& context, std::string_view sentence);
/// The same of a failure to read `text`, with the place that was not understood.
ExitStatus tellMisread(CommandContext& context, const Failure& why, std::string_view text);

/// What names an item on the command line, and which part of a series is meant.
struct TargetWords {
  std::string what;
  std::vector<std::string> calendars;
  std::string occurrence;
  bool thisOne = false, future = false, all = false;
};
void addTargetOptions(CLI::App& command, TargetWords& words);

/// What is to be changed: the row to open, and how much of its series. What the words leave open is asked.
struct Target {
  ChosenItem chosen;
  std::shared_ptr<const store::Item> row;  ///< of a changed occurrence that is meant, its own
  std::optional<store::Occurrence> occurrence;
  store::Span span = store::Span::kAll;
};
/// None where a usage error was told already. `question` is what is asked where a series is meant and nobody said how
/// much of it; translatable.
Result<std::optional<Target>> chooseTarget(ChangeRun& run, const TargetWords& words, const char* question,
                                           std::optional<store::ItemKind> kind = std::nullopt);

}  // namespace orlocal::host
