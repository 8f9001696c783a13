#pragma once

#include <chrono>
#include <memory>

#include "platform/eventkit_items.h"
#include "store/model/model.h"

namespace orlocal {

/// An edited copy of an alarm. Callers count seconds from the item's anchor: an event's start, a reminder's due moment.
class AlarmObject final : public EKAlarm {
 public:
  /// A new alarm: `trigger` is a moment or counts from the anchor.
  AlarmObject(store::Alarm alarm, Date made) : m_alarm(std::move(alarm)), m_made(made), m_fromAnchor(true) {}
  /// An alarm of the store, made when its item was, whose own reference lies `referenceAfterAnchor` behind the item's
  /// anchor.
  AlarmObject(store::Alarm alarm, std::optional<Date> made, std::chrono::seconds referenceAfterAnchor)
      : m_alarm(std::move(alarm)), m_made(made), m_referenceAfterAnchor(referenceAfterAnchor) {}

  std::optional<Date> absoluteDate() const override;
  void setAbsoluteDate(std::optional<Date> date) override;
  double relativeOffset() const override;
  void setRelativeOffset(double seconds) override;
  OptionalText emailAddress() const override { return m_alarm.emailAddress; }
  void setEmailAddress(const OptionalText& address) override;
  OptionalText soundName() const override { return m_alarm.soundName; }
  void setSoundName(const OptionalText& name) override;
  OptionalText url() const override;
  void setUrl(const OptionalText& url) override;
  int type() const override { return static_cast<int>(m_alarm.action); }
  void setType(EKAlarmType type) override { m_alarm.action = static_cast<store::Alarm::Action>(type); }
  std::optional<Date> creationDate() const override { return m_made; }

  /// For the store; `anchorIsEnd` says whether the item's anchor is its end.
  store::Alarm stored(bool anchorIsEnd) const;

 private:
  void deriveAction();
  /// What was attached makes way for what is set now.
  void forgetAttachment();

  store::Alarm m_alarm;
  std::optional<Date> m_made;
  std::chrono::seconds m_referenceAfterAnchor{0};
  bool m_fromAnchor = false;  ///< the trigger was set by a caller and counts from the anchor
};

}  // namespace orlocal
