#pragma once

#include <memory>
#include <utility>

#include "platform/cal_items.h"
#include "platform/eventkit_items.h"

namespace orlocal {

/// The current platform derives what an alarm does from what was set last; the older one keeps what was named.
class AlarmFace : public CalAlarm {
 public:
  /// A new alarm has no action until one is named; the current platform's alarms always have a type.
  AlarmFace(std::shared_ptr<EKAlarm> alarm, bool isNew) : m_alarm(std::move(alarm)), m_hasAction(!isNew) {}
  std::optional<Date> absoluteTrigger() const override { return m_alarm->absoluteDate(); }
  void setAbsoluteTrigger(std::optional<Date> date) override { m_alarm->setAbsoluteDate(date); }
  OptionalText action() const override;
  void setAction(const OptionalText& action) override;
  OptionalText emailAddress() const override { return m_alarm->emailAddress(); }
  void setEmailAddress(const OptionalText& address) override;
  double relativeTrigger() const override { return m_alarm->relativeOffset(); }
  void setRelativeTrigger(double seconds) override { m_alarm->setRelativeOffset(seconds); }
  OptionalText sound() const override { return m_alarm->soundName(); }
  void setSound(const OptionalText& name) override;
  OptionalText url() const override { return m_alarm->url(); }
  void setUrl(const OptionalText& url) override;

  const std::shared_ptr<EKAlarm>& object() const { return m_alarm; }

 private:
  std::shared_ptr<EKAlarm> m_alarm;
  bool m_hasAction;
};

}  // namespace orlocal
