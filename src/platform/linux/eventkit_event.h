#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "platform/linux/event_times.h"
#include "platform/linux/eventkit_item.h"
#include "store/calendar_store.h"

namespace orlocal {

/// A new event, a single one, or one occurrence of a series.
class EventObject final : public ItemObject<EKEvent> {
 public:
  /// Without an occurrence: a new event, or a series whose rule and exceptions leave none.
  EventObject(std::shared_ptr<StoreAccess> access, std::shared_ptr<const store::Item> item,
              std::optional<store::Occurrence> occurrence)
      : ItemObject(std::move(access), std::move(item)), m_occurrence(occurrence) {}

  std::optional<Date> startDate() const override { return times().start; }
  void setStartDate(std::optional<Date> date) override { editTimes().start = date; }
  std::optional<Date> endDate() const override { return times().end; }
  void setEndDate(std::optional<Date> date) override { editTimes().end = date; }
  bool isAllDay() const override { return m_times ? m_times->allDay : original().allDay(); }
  void setAllDay(bool allDay) override { editTimes().allDay = allDay; }
  OptionalText location() const override { return shown().location; }
  void setLocation(const OptionalText& location) override { edit().location = location; }
  std::shared_ptr<const TimeZone> timeZone() const override;
  OptionalText eventIdentifier() const override { return presentText(shown().identifier); }
  std::optional<Date> occurrenceDate() const override;
  bool isDetached() const override { return shown().series.has_value(); }
  std::optional<std::vector<std::shared_ptr<EKRecurrenceRule>>> recurrenceRules() const override;
  void addRecurrenceRule(std::shared_ptr<EKRecurrenceRule> rule) override;
  void removeRecurrenceRule(const std::shared_ptr<EKRecurrenceRule>& rule) override;
  void setRecurrenceRules(std::optional<std::vector<std::shared_ptr<EKRecurrenceRule>>> rules) override;
  bool hasAttendees() const override;
  std::optional<std::vector<std::shared_ptr<EKParticipant>>> attendees() const override;

  /// The fields as the caller left them; for an occurrence of a series its own start and end.
  store::Item prepared() const;
  /// The occurrence that was opened; none for a single event.
  std::optional<store::Occurrence> occurrenceOfSeries() const;
  /// What a save made of it, and the occurrence that it is now.
  void adopt(store::Item saved, std::optional<store::Occurrence> occurrence);

 private:
  ShownTimes times() const;
  ShownTimes storedTimes() const { return shownTimes(original(), m_occurrence, m_access->viewer()); }
  ShownTimes& editTimes();
  /// A changed occurrence shows the rules of its series.
  store::Recurrence shownRecurrence() const;
  store::Recurrence& editRecurrence();

  std::optional<store::Occurrence> m_occurrence;
  /// As callers set them; there once one of them was set.
  std::unique_ptr<ShownTimes> m_times;
  bool m_rulesChanged = false;
};

}  // namespace orlocal
