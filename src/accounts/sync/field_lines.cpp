#include "accounts/sync/field_lines.h"

#include <algorithm>
#include <utility>

#include <fmt/format.h>

#include "accounts/sync/item_fields.h"
#include "accounts/sync/server_text.h"
#include "store/icalendar/item_text.h"
#include "store/time/time_text.h"
#include "store/time/zone.h"

namespace orlocal::accounts {
namespace {

using store::Item;

/// A line each for the dates of a list: each is an exception by itself.
void addSingly(const std::string& line, std::vector<std::string>& lines) {
  const std::size_t values = line.rfind(':') + 1;
  for (std::size_t at = values; at <= line.size();) {
    const std::size_t comma = std::min(line.find(',', at), line.size());
    lines.push_back(line.substr(0, values) + line.substr(at, comma - at));
    at = comma + 1;
  }
}

void add(TextComponent& item, const TextLine& line) { item.lines.push_back(line); }
void add(TextComponent& item, const TextComponent& alarm) { item.inner.push_back(alarm); }

template <class Part>
std::optional<std::string> spelledAsOurs(const std::string& component, const Part& part, std::string_view field) {
  TextComponent item{component, {{"UID", "UID:0"}, {"DTSTART", "DTSTART:20000101T000000Z"}}, {}};
  add(item, part);
  const ServerText read = ServerText::read(putTogether({"VCALENDAR", {}, {std::move(item)}}), "");
  if (!read.item()) { return std::nullopt; }
  const Fields fields = fieldsOf(&read.item()->main);
  const auto& lines = linesOf(fields, field);
  return lines.size() == 1 ? std::optional(lines.front()) : std::nullopt;
}

/// Which occurrence of its series a changed one is, in whatever clock the original start is written.
std::string occurrenceKey(const store::CalendarTime& original) {
  using Kind = store::CalendarTime::Kind;
  if (original.kind == Kind::kDate || original.kind == Kind::kFloating) { return store::timeText(original); }
  const store::Moment moment = store::momentOf(original, store::Zone());
  return fmt::format("{}", moment.time_since_epoch().count());
}

}  // namespace

Fields fieldsOf(const Item* item) {
  Fields fields;
  if (item == nullptr) { return fields; }
  const TextComponent all = takenApart(store::itemComponents({*item, {}}));
  for (const TextComponent& component : all.inner) {
    for (const TextLine& line : component.lines) {
      if (isBookkeeping(line.name)) { continue; }
      auto& lines = fields[std::string(fieldOf(line.name))];
      if (line.name == "EXDATE") {
        addSingly(line.text, lines);
      } else {
        lines.push_back(line.text);
      }
    }
    for (const TextComponent& inner : component.inner) {
      fields[std::string(inner.name == "VALARM" ? kAlarmsField : std::string_view(inner.name))].push_back(
          putTogether(inner));
    }
  }
  for (auto& [field, lines] : fields) { std::sort(lines.begin(), lines.end()); }
  return fields;
}

const std::vector<std::string>& linesOf(const Fields& fields, std::string_view field) {
  static const std::vector<std::string> kNone;
  const auto found = fields.find(field);
  return found != fields.end() ? found->second : kNone;
}

std::optional<std::string> inOurSpelling(const std::string& component, const TextLine& line, std::string_view field) {
  return spelledAsOurs(component, line, field);
}

std::optional<std::string> inOurSpelling(const std::string& component, const TextComponent& alarm,
                                         std::string_view field) {
  return spelledAsOurs(component, alarm, field);
}

Parts partsOf(const store::WholeItem* whole) {
  Parts parts;
  if (whole == nullptr) { return parts; }
  parts[""] = &whole->main;
  for (const Item& changed : whole->changed) {
    if (changed.recurrenceId) { parts[occurrenceKey(*changed.recurrenceId)] = &changed; }
  }
  return parts;
}

const Item* partOf(const Parts& parts, const std::string& key) {
  const auto found = parts.find(key);
  return found != parts.end() ? found->second : nullptr;
}

bool saysTheSame(const store::WholeItem& one, const store::WholeItem& other) {
  const auto parts = partsOf(&one), others = partsOf(&other);
  return std::equal(parts.begin(), parts.end(), others.begin(), others.end(), [](const auto& a, const auto& b) {
    return a.first == b.first && fieldsOf(a.second) == fieldsOf(b.second);
  });
}

}  // namespace orlocal::accounts
