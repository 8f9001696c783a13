#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "platform/linux/eventkit_item.h"
#include "store/calendar_store.h"
#include "store/edits/event_times.h"

namespace orlocal {

/// A new event, a single one, or one occurrence of a series.
class EventObject final : public ItemObject<EKEvent> {
 public:
  /// Without an occurrence: a new event, or a series whose rule and exceptions leave none.
  EventObject(std::shared_ptr<StoreAccess> access, std::shared_ptr<const store::Item> item,
              std::optional<store::Occurrence> occurrence)
      : ItemObject(std::move(access), std::move(item)), m_occurrence(occurrence) {}

  std::optional<Date> startDate() const override { return times().start; }
  void setStartDate(std::optional<Date> date) override { editTimes(store::ItemField::kStart).start = date; }
  std::optional<Date> endDate() const override { return times().end; }
  void setEndDate(std::optional<Date> date) override { editTimes(store::ItemField::kEnd).end = date; }
  bool isAllDay() const override { return m_times ? m_times->allDay : original().allDay(); }
  void setAllDay(bool allDay) override { editTimes(store::ItemField::kAllDay).allDay = allDay; }
  OptionalText location() const override { return shown().location; }
  void setLocation(const OptionalText& location) override { edit(store::ItemField::kLocation).location = location; }
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

  /// What callers set since the event was opened; for an occurrence of a series its own start and end.
  store::ItemEdit edited() const;
  /// The occurrence that was opened; none for an event that is new.
  const std::optional<store::Occurrence>& occurrence() const { return m_occurrence; }
  /// What a save made of it, and the occurrence that it is now.
  void adopt(store::Item saved, std::optional<store::Occurrence> occurrence);

 private:
  store::ShownTimes times() const;
  store::ShownTimes storedTimes() const { return store::shownTimes(original(), m_occurrence, m_access->viewer()); }
  store::ShownTimes& editTimes(store::ItemField field);
  /// A changed occurrence shows the rules of its series.
  store::Recurrence shownRecurrence() const;
  store::Recurrence& editRecurrence();

  std::optional<store::Occurrence> m_occurrence;
  /// As callers set them; there once one of them was set.
  std::unique_ptr<store::ShownTimes> m_times;
  bool m_rulesChanged = false;
};

}  // namespace orlocal
