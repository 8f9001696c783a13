#include "accounts/sync/resource_text.h"

#include <algorithm>
#include <utility>

#include "base/text.h"
#include "store/icalendar/content_line.h"

namespace orlocal::accounts {
namespace {

std::string inCapitals(std::string_view text) {
  std::string result(text);
  for (char& c : result) {
    if (c >= 'a' && c <= 'z') { c = static_cast<char>(c - 'a' + 'A'); }
  }
  return result;
}

void write(std::string& out, const TextComponent& component) {
  store::appendFolded(out, "BEGIN:" + component.name);
  for (const TextLine& line : component.lines) { store::appendFolded(out, line.text); }
  for (const TextComponent& inner : component.inner) { write(out, inner); }
  store::appendFolded(out, "END:" + component.name);
}

}  // namespace

const TextLine* TextComponent::line(std::string_view property) const {
  const auto found =
      std::find_if(lines.begin(), lines.end(), [&](const TextLine& each) { return each.name == property; });
  return found != lines.end() ? &*found : nullptr;
}

TextComponent takenApart(std::string_view text) {
  std::vector<TextComponent> open{{"", {}, {}}};
  const auto close = [&] {
    TextComponent done = std::move(open.back());
    open.pop_back();
    open.back().inner.push_back(std::move(done));
  };
  store::ContentLines lines(text);
  for (store::ContentLine line; lines.next(line);) {
    if (line.is("BEGIN")) {
      open.push_back({inCapitals(line.value), {}, {}});
    } else if (line.is("END")) {
      if (open.size() > 1) { close(); }
    } else {
      open.back().lines.push_back({inCapitals(line.name), std::string(line.text)});
    }
  }
  while (open.size() > 1) { close(); }
  TextComponent& all = open.front();
  if (all.inner.size() == 1 && all.inner.front().name == "VCALENDAR") { return std::move(all.inner.front()); }
  all.name = "VCALENDAR";
  return std::move(all);
}

std::string putTogether(const TextComponent& component) {
  std::string text;
  write(text, component);
  return text;
}

}  // namespace orlocal::accounts
