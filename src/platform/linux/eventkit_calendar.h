#pragma once

#include <memory>
#include <vector>

#include "platform/eventkit.h"
#include "platform/linux/store_access.h"
#include "store/edits/calendar_edit.h"
#include "store/model/model.h"

namespace orlocal {

class SourceObject final : public EKSource {
 public:
  explicit SourceObject(store::Source source) : m_source(std::move(source)) {}
  std::string title() const override { return m_source.title; }
  const store::Source& source() const { return m_source; }

 private:
  store::Source m_source;
};

/// An edited copy of a calendar of the store.
class CalendarObject final : public EKCalendar {
 public:
  CalendarObject(std::shared_ptr<StoreAccess> access, store::Calendar calendar)
      : m_access(std::move(access)), m_calendar(std::move(calendar)) {}

  OptionalText title() const override;
  void setTitle(const OptionalText& title) override;
  OptionalText notes() const override { return m_calendar.notes; }
  void setNotes(const OptionalText& notes) override;
  int type() const override { return static_cast<int>(m_calendar.type); }
  OptionalText calendarIdentifier() const override;
  bool isImmutable() const override { return m_calendar.readOnly || m_calendar.subscribed || m_calendar.immutable; }
  bool isSubscribed() const override { return m_calendar.subscribed; }
  bool allowsContentModifications() const override { return !m_calendar.readOnly; }
  std::optional<Color> color() const override;
  void setColor(const Color& color) override;
  std::shared_ptr<EKSource> source() const override;
  void setSource(std::shared_ptr<EKSource> source) override;

  const store::Calendar& stored() const { return m_calendar; }
  /// What callers set since the calendar was opened.
  store::CalendarFields set() const { return m_set; }
  /// What a save made of it.
  void adopt(store::Calendar saved);

 private:
  std::shared_ptr<StoreAccess> m_access;
  store::Calendar m_calendar;
  store::CalendarFields m_set;
};

/// The row numbers of calendars of this platform. Those that were never saved have none and are left out.
std::vector<store::CalendarId> calendarIds(const EKCalendarArray& calendars);

}  // namespace orlocal
