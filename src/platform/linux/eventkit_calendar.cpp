#include "platform/linux/eventkit_calendar.h"

namespace orlocal {

OptionalText CalendarObject::title() const {
  return m_calendar.title.empty() ? std::nullopt : OptionalText(m_calendar.title);
}

void CalendarObject::setTitle(const OptionalText& title) {
  m_calendar.title = title.value_or(std::string());
  m_set.add(store::CalendarField::kTitle);
}

void CalendarObject::setNotes(const OptionalText& notes) {
  m_calendar.notes = notes;
  m_set.add(store::CalendarField::kNotes);
}

void CalendarObject::adopt(store::Calendar saved) {
  m_calendar = std::move(saved);
  m_set = {};
}

OptionalText CalendarObject::calendarIdentifier() const {
  return m_calendar.identifier.empty() ? std::nullopt : OptionalText(m_calendar.identifier);
}

std::optional<Color> CalendarObject::color() const {
  if (!m_calendar.color) { return std::nullopt; }
  return Color::calibratedRgb(m_calendar.color->red, m_calendar.color->green, m_calendar.color->blue);
}

void CalendarObject::setColor(const Color& color) {
  const auto rgb = color.usingCalibratedRgb();
  if (!rgb) { return; }
  m_calendar.color = store::Rgb{rgb->red, rgb->green, rgb->blue};
  m_set.add(store::CalendarField::kColor);
}

std::shared_ptr<EKSource> CalendarObject::source() const {
  auto source = m_access->source(m_calendar.source);
  return source ? std::make_shared<SourceObject>(*std::move(source)) : nullptr;
}

void CalendarObject::setSource(std::shared_ptr<EKSource> source) {
  const auto ours = std::dynamic_pointer_cast<SourceObject>(source);
  m_calendar.source = ours ? ours->source().id : 0;
  m_calendar.type = ours ? ours->source().type : store::Source::Type::kLocal;
  m_set.add(store::CalendarField::kSource);
}

std::vector<store::CalendarId> calendarIds(const EKCalendarArray& calendars) {
  std::vector<store::CalendarId> ids;
  ids.reserve(calendars.size());
  for (const auto& calendar : calendars) {
    const auto ours = std::dynamic_pointer_cast<CalendarObject>(calendar);
    if (ours && ours->stored().id != 0) { ids.push_back(ours->stored().id); }
  }
  return ids;
}

}  // namespace orlocal
