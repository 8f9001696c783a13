#include "platform/legacy/alarm_face.h"

namespace orlocal {
namespace {

struct ActionRow {
  EKAlarmType type;
  std::string_view text;
};
constexpr ActionRow kActions[] = {
    {EKAlarmType::kDisplay, CalAlarmActionDisplay},
    {EKAlarmType::kAudio, CalAlarmActionSound},
    {EKAlarmType::kProcedure, CalAlarmActionProcedure},
    {EKAlarmType::kEmail, CalAlarmActionEmail},
};

}  // namespace

OptionalText AlarmFace::action() const {
  if (!m_hasAction) { return std::nullopt; }
  for (const ActionRow& row : kActions) {
    if (static_cast<int>(row.type) == m_alarm->type()) { return std::string(row.text); }
  }
  return std::nullopt;
}

void AlarmFace::setAction(const OptionalText& action) {
  for (const ActionRow& row : kActions) {
    if (action == row.text) {
      m_alarm->setType(row.type);
      m_hasAction = true;
    }
  }
}

void AlarmFace::setEmailAddress(const OptionalText& address) {
  const OptionalText named = action();
  m_alarm->setEmailAddress(address);
  setAction(named);
}

void AlarmFace::setSound(const OptionalText& name) {
  const OptionalText named = action();
  m_alarm->setSoundName(name);
  setAction(named);
}

void AlarmFace::setUrl(const OptionalText& url) {
  const OptionalText named = action();
  m_alarm->setUrl(url);
  setAction(named);
}

}  // namespace orlocal
