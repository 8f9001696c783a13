#pragma once

#include <array>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/translation.h"
#include "store/icalendar/item_reader.h"
#include "store/time/time_text.h"

namespace orlocal::store {

/// An item while its component is read: what its lines said so far. Only `readItem` makes one.
class ItemDraft {
 public:
  ItemDraft(const ItemSpan& span, Tzids& zones, RuleBudget& rules, ReadProblems& problems)
      : m_span(span), m_zones(zones), m_rules(rules), m_problems(problems) {
    m_item.kind = span.kind;
    m_item.uid = span.uid;
  }

  std::optional<ReadItem> read(std::string_view text);

 private:
  static constexpr const char* kRuleOfChanged =
      translatable("a changed occurrence cannot repeat itself; its rule was passed over");

  using Handler = void (ItemDraft::*)(const ContentLine&);
  struct Property {
    std::string_view name;
    Handler read;
  };
  static const std::array<Property, 24> kProperties;

  std::optional<ReadItem> refuse(int line, std::string_view reason);
  void warn(int line, std::string message);
  /// The first reason to refuse the item counts.
  void fail(int line, std::string reason);

  /// Components within the item are kept as they are, except for alarms.
  void component(const ContentLine& line);
  void beginInner(const ContentLine& line);
  void endInner(const ContentLine& line);
  void innerDone(int line);

  void property(const ContentLine& line);

  void keep(const ContentLine& line);
  /// Parameters of a property that a field holds, but those that the field speaks for.
  void keepParameters(const ContentLine& line, std::string parameters);

  void text(std::optional<std::string>& field, const ContentLine& line, bool escaped);
  void uid(const ContentLine&);  // known from the layout
  void stamp(const ContentLine& line);
  void summary(const ContentLine& line);
  void description(const ContentLine& line);
  void location(const ContentLine& line);
  void url(const ContentLine& line);

  /// What the parameters of a line say: about the times in it, and what no field speaks for.
  struct LineParameters {
    int line = 0;
    bool isDate = false;
    std::string tzid;
    std::string others;                                ///< as written
    const std::optional<std::string>* zone = nullptr;  ///< what `tzid` means, once that was asked
  };
  static LineParameters parametersOf(const ContentLine& line);
  /// None when the value is no time.
  std::optional<CalendarTime> time(LineParameters& parameters, std::string_view value);
  std::optional<Moment> instant(const ContentLine& line);
  void moment(std::optional<CalendarTime>& field, const ContentLine& line);
  void start(const ContentLine& line);
  void end(const ContentLine& line);
  void duration(const ContentLine& line);
  void recurrenceId(const ContentLine& line);
  bool mayHaveAnotherRule(const ContentLine& line);
  void rule(const ContentLine& line);
  void exceptionRule(const ContentLine& line);
  /// Fails also when the rule cannot be followed.
  static Result<RecurrenceRule> readRule(const ContentLine& line);
  void added(const ContentLine& line);
  void excluded(const ContentLine& line);
  void dates(const ContentLine& line, std::vector<CalendarTime>& list, bool periods);
  std::optional<CalendarTime> periodEnd(LineParameters& parameters, const CalendarTime& begin, std::string_view text);
  void sequence(const ContentLine& line);
  void priority(const ContentLine& line);
  void created(const ContentLine& line);
  void modified(const ContentLine& line);
  void completed(const ContentLine& line);
  void status(const ContentLine& line);
  void percent(const ContentLine& line);
  void attendee(const ContentLine& line);

  /// Days run on the calendar, the rest is exact.
  static CalendarTime after(CalendarTime begin, const Duration& length);

  std::optional<ReadItem> finish(std::string_view bytes);
  bool settleEnd();
  void settleCompletion();
  std::optional<ReadItem> settleRecurrence();
  /// The item compiled; none when it was refused.
  std::shared_ptr<const Series> compile();
  /// Added occurrences with a length of their own; false when the item was refused.
  bool addPeriods(ReadItem& made);

  const ItemSpan& m_span;
  Tzids& m_zones;
  RuleBudget& m_rules;
  ReadProblems& m_problems;
  Item m_item;
  bool m_begun = false;
  std::vector<std::string> m_open;   ///< names of the components within the item that are open, outermost first
  std::vector<std::string> m_inner;  ///< lines of the outermost of them
  bool m_innerBroken = false;        ///< one of them is not closed as it should be
  int m_innerLine = 0;               ///< where the outermost begins
  std::map<std::string, std::string> m_parameters;  ///< by property: those that no field speaks for
  std::string m_components;
  std::optional<Duration> m_duration;
  std::vector<std::pair<CalendarTime, std::optional<CalendarTime>>> m_periods;
  std::optional<Moment> m_stamp;
  bool m_isDone = false, m_isFull = false, m_andFuture = false;
  std::string m_percent;
  int m_endLine = 0, m_ruleLine = 0, m_recurrenceIdLine = 0, m_failureLine = 0;
  std::string m_failure;
};

}  // namespace orlocal::store
