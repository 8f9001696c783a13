#include "platform/linux/eventkit_alarm.h"

#include <algorithm>
#include <cmath>
#include <variant>

#include "platform/linux/url_text.h"
#include "store/icalendar/kept_lines.h"

namespace orlocal {
namespace {

/// About 3000 years: far beyond any use, and far from where counting seconds would overflow.
constexpr double kLongestOffset = 1e11;

std::chrono::seconds wholeSeconds(double seconds) {
  if (std::isnan(seconds)) { return std::chrono::seconds(0); }
  return std::chrono::seconds(std::llround(std::clamp(seconds, -kLongestOffset, kLongestOffset)));
}

}  // namespace

std::optional<Date> AlarmObject::absoluteDate() const {
  const auto* moment = std::get_if<store::Moment>(&m_alarm.trigger);
  return moment != nullptr ? std::optional<Date>(*moment) : std::nullopt;
}

void AlarmObject::setAbsoluteDate(std::optional<Date> date) {
  if (date) {
    m_alarm.trigger = *date;
  } else if (std::holds_alternative<store::Moment>(m_alarm.trigger)) {
    setRelativeOffset(0);
  }
}

double AlarmObject::relativeOffset() const {
  const auto* relative = std::get_if<store::Alarm::Relative>(&m_alarm.trigger);
  if (relative == nullptr) { return 0; }
  const auto offset = m_fromAnchor ? relative->offset : relative->offset + m_referenceAfterAnchor;
  return static_cast<double>(offset.count());
}

void AlarmObject::setRelativeOffset(double seconds) {
  m_alarm.trigger = store::Alarm::Relative{wholeSeconds(seconds), false};
  m_fromAnchor = true;
}

void AlarmObject::setEmailAddress(const OptionalText& address) {
  if (m_alarm.emailAddress != address) { m_alarm.extra = store::withoutParametersOf("ATTENDEE", m_alarm.extra); }
  m_alarm.emailAddress = address;
  deriveAction();
}

void AlarmObject::setSoundName(const OptionalText& name) {
  if (m_alarm.soundName != name) { forgetAttachment(); }
  m_alarm.soundName = name;
  deriveAction();
}

OptionalText AlarmObject::url() const { return urlText(m_alarm.url); }

void AlarmObject::setUrl(const OptionalText& url) {
  if (m_alarm.url != url) { forgetAttachment(); }
  m_alarm.url = url;
  deriveAction();
}

void AlarmObject::forgetAttachment() {
  // An e-mail may carry many attachments; a sound or a program is the only one (RFC 5545, 3.6.6).
  m_alarm.extra = m_alarm.action == store::Alarm::Action::kEmail ? store::withoutParametersOf("ATTACH", m_alarm.extra)
                                                                 : store::withoutLinesOf("ATTACH", m_alarm.extra);
}

void AlarmObject::deriveAction() {
  using Action = store::Alarm::Action;
  m_alarm.action = m_alarm.emailAddress ? Action::kEmail
                   : m_alarm.soundName  ? Action::kAudio
                   : m_alarm.url        ? Action::kProcedure
                                        : Action::kDisplay;
}

store::Alarm AlarmObject::stored(bool anchorIsEnd) const {
  store::Alarm alarm = m_alarm;
  if (auto* relative = std::get_if<store::Alarm::Relative>(&alarm.trigger); relative != nullptr && m_fromAnchor) {
    relative->fromEnd = anchorIsEnd;
  }
  return alarm;
}

}  // namespace orlocal
