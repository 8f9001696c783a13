#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "platform/eventkit_items.h"
#include "platform/linux/eventkit_alarm.h"
#include "platform/linux/eventkit_calendar.h"
#include "platform/linux/store_access.h"
#include "platform/linux/url_text.h"
#include "store/edits/item_edit.h"
#include "store/model/model.h"

namespace orlocal {

/// What event and reminder objects have in common. `Interface` is `EKEvent` or `EKReminder`.
///
/// The object shares the store's row until the first change and then has a copy of its own: a walk over a long fetch
/// makes many of these and changes none.
template <class Interface>
class ItemObject : public Interface {
 public:
  ItemObject(std::shared_ptr<StoreAccess> access, std::shared_ptr<const store::Item> item)
      : m_access(std::move(access)), m_item(std::move(item)) {}

  std::shared_ptr<EKCalendar> calendar() const override;
  void setCalendar(std::shared_ptr<EKCalendar> calendar) override;
  OptionalText title() const override { return shown().title; }
  void setTitle(const OptionalText& title) override { edit(store::ItemField::kTitle).title = title; }
  OptionalText notes() const override { return shown().notes; }
  void setNotes(const OptionalText& notes) override { edit(store::ItemField::kNotes).notes = notes; }
  OptionalText url() const override { return urlText(shown().url); }
  void setUrl(const OptionalText& url) override { edit(store::ItemField::kUrl).url = url; }
  OptionalText calendarItemIdentifier() const override;
  OptionalText calendarItemExternalIdentifier() const override;
  std::optional<Date> lastModifiedDate() const override { return orStamp(shown().modified); }
  std::optional<Date> creationDate() const override { return orStamp(shown().created); }
  bool hasAlarms() const override;
  std::vector<std::shared_ptr<EKAlarm>> alarms() const override;
  void addAlarm(std::shared_ptr<EKAlarm> alarm) override;
  void removeAlarm(const std::shared_ptr<EKAlarm>& alarm) override;

  /// The row as the store has it; without an id when it was never saved.
  const store::Item& original() const { return *m_item; }

 protected:
  const store::Item& shown() const { return m_edited ? *m_edited : *m_item; }
  std::optional<Date> orStamp(const std::optional<Date>& told) const { return told ? told : shown().stamped; }
  /// The object's own copy, in which `field` is about to be set.
  store::Item& edit(store::ItemField field);
  /// What callers set since the item was opened.
  store::ItemEdit edited() const;
  /// What a save made of it; alarms that callers hold stay those of this object.
  void adoptItem(store::Item saved);

  std::shared_ptr<StoreAccess> m_access;

 private:
  using Alarms = std::vector<std::shared_ptr<AlarmObject>>;
  Alarms& ownAlarms() const;

  std::shared_ptr<const store::Item> m_item;
  std::unique_ptr<store::Item> m_edited;
  store::ItemFields m_set;
  mutable std::shared_ptr<CalendarObject> m_calendar;
  /// Made when somebody asks for alarms; from then on they are the truth, as callers change them in place.
  mutable std::unique_ptr<Alarms> m_alarms;
};

extern template class ItemObject<EKEvent>;
extern template class ItemObject<EKReminder>;

/// Text that is empty in a row is not there.
inline OptionalText presentText(const std::string& text) { return text.empty() ? std::nullopt : OptionalText(text); }

}  // namespace orlocal
