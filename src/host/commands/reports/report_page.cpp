#include <algorithm>
#include <map>
#include <optional>
#include <set>

#include <fmt/format.h>

#include "base/translation.h"
#include "host/commands/reports/html_text.h"
#include "host/commands/reports/report.h"
#include "host/commands/reports/report_style.h"
#include "host/commands/views/day_grids.h"
#include "host/commands/words/date_locale.h"
#include "host/commands/words/date_names.h"
#include "host/commands/words/day_words.h"

namespace orlocal::host {
namespace {

using store::LocalDay;
using store::LocalTime;

constexpr int kMinutesInDay = 24 * 60;
/// The hours that a week shows in any case.
constexpr int kFromMinute = 8 * 60, kToMinute = 18 * 60;

std::string colorStyle(const std::optional<store::Rgb>& color) {
  if (!color) { return ""; }
  const auto [red, green, blue] = color->bytes();
  return fmt::format("--c: #{:02x}{:02x}{:02x}", red, green, blue);
}

std::string dayTime(LocalDay day, std::string_view text) {
  return fmt::format("<time datetime=\"{}\">{}</time>", isoDay(day), htmlText(text));
}

/// A link where the text is one that leads into the web.
std::string linked(const std::string& text) {
  const bool isLink = text.starts_with("https://") || text.starts_with("http://");
  const std::string safe = htmlText(text);
  return isLink && text.find_first_of(" \n") == std::string::npos
             ? fmt::format("<a href=\"{}\" rel=\"noreferrer\">{}</a>", safe, safe)
             : safe;
}

std::string classesOf(const Report::Entry& entry) {
  std::string classes;
  if (entry.shown.wholeDays && entry.shown.end > entry.shown.start) { classes += "bar "; }
  if (entry.shown.cancelled) { classes += "cancelled "; }
  return classes;
}

std::string entryItem(const Report::Entry& entry, std::string_view style) {
  const GridEntry& shown = entry.shown;
  std::string html = fmt::format("<li class=\"{}\" style=\"{}\"><details><summary>", classesOf(entry),
                                 fmt::format("{}; {}", colorStyle(shown.color), style));
  if (!shown.wholeDays) { html += fmt::format("<span class=\"at\">{}</span> ", clockTime(shown.start)); }
  html += fmt::format("<span class=\"title\">{}</span>", htmlText(shown.title));
  if (shown.cancelled) { html += tr(" (cancelled)"); }
  html += "</summary><dl>";
  for (const CardLine& line : entry.card) {
    html += fmt::format("<dt>{}</dt><dd>{}</dd>", htmlText(line.label), linked(line.text));
  }
  return html + "</dl></details></li>\n";
}

class Page {
 public:
  explicit Page(const Report& report)
      : m_report(report), m_today(report.viewer.toLocal(report.made)), m_names(DateNames::ofUser()) {}

  std::string text() {
    addHead();
    for (LocalDay month(m_report.first.year(), m_report.first.month(), 1); month <= m_report.last;
         month = LocalDay(cctz::civil_month(month) + 1)) {
      addMonth(month);
    }
    for (LocalDay week = weekStart(m_report.first, m_report.firstWeekday); week <= m_report.last; week += 7) {
      addWeek(week);
    }
    m_html += "</main>\n</body>\n</html>\n";
    return std::move(m_html);
  }

 private:
  std::string monthTitle(LocalDay month) const {
    return fmt::format("{} {}", m_names.month(month.month()), month.year());
  }
  std::string weekTitle(LocalDay week) const {
    const std::string days = fmt::format("{} – {}", shortDay(week), shortDay(week + 6));
    return m_report.firstWeekday == cctz::weekday::monday ? tr("Week {}: {}", weekNumber(week), days) : days;
  }

  /// "November 2026", "Mon 2 Nov 2026 – Sun 15 Nov 2026".
  std::string title() const {
    const LocalDay month(m_report.first.year(), m_report.first.month(), 1);
    const bool isMonth = m_report.first == month && m_report.last == LocalDay(cctz::civil_month(month) + 1) - 1;
    if (isMonth) { return monthTitle(month); }
    if (m_report.first == m_report.last) { return shortDay(m_report.first); }
    return fmt::format("{} – {}", shortDay(m_report.first), shortDay(m_report.last));
  }

  void addHead() {
    const std::string title = tr("Calendar: {}", this->title());
    const LocalTime made = m_report.viewer.toLocal(m_report.made);
    m_html += fmt::format(
        "<!doctype html>\n<html lang=\"{}\">\n<head>\n<meta charset=\"utf-8\"/>\n"
        "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\"/>\n"
        "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; style-src 'unsafe-inline'\"/>\n"
        "<title>{}</title>\n<style>{}</style>\n</head>\n<body>\n<header>\n<h1>{}</h1>\n<p>{}</p>\n",
        translated("en"), htmlText(title), kReportStyle, htmlText(title),
        htmlText(tr("Times in {}, as of {} {}", m_report.viewer.name(), shortDay(LocalDay(made)), clockTime(made))));
    addKey();
    addWays();
    m_html += "</header>\n<main>\n";
  }

  /// Which colour is which calendar.
  void addKey() {
    std::map<std::string, std::optional<store::Rgb>> colors;
    for (const auto& entry : m_report.entries) { colors.emplace(entry.calendar, entry.shown.color); }
    m_html += fmt::format("<ul class=\"key\" aria-label=\"{}\">", htmlText(tr("Calendars")));
    for (const auto& [calendar, color] : colors) {
      m_html += fmt::format("<li style=\"{}\">{}</li>", colorStyle(color), htmlText(calendar));
    }
    m_html += "</ul>\n";
  }

  void addWays() {
    m_html += fmt::format("<nav aria-label=\"{}\"><ul>", htmlText(tr("Months and weeks")));
    for (LocalDay month(m_report.first.year(), m_report.first.month(), 1); month <= m_report.last;
         month = LocalDay(cctz::civil_month(month) + 1)) {
      m_html += fmt::format("<li><a href=\"#m{}\">{}</a></li>", isoDay(month), htmlText(monthTitle(month)));
    }
    for (LocalDay week = weekStart(m_report.first, m_report.firstWeekday); week <= m_report.last; week += 7) {
      m_html += fmt::format("<li><a href=\"#w{}\">{}</a></li>", isoDay(week), htmlText(weekTitle(week)));
    }
    m_html += "</ul></nav>\n";
  }

  /// Those that have a part on `day`; what has a time of day stands on the day of its start.
  std::vector<const Report::Entry*> entriesOn(LocalDay day) const {
    std::vector<const Report::Entry*> all;
    for (const auto& entry : m_report.entries) {
      const LocalDay last = entry.shown.wholeDays ? entry.shown.lastDay() : entry.shown.firstDay();
      if (entry.shown.firstDay() <= day && last >= day) { all.push_back(&entry); }
    }
    return all;
  }

  void addMonth(LocalDay month) {
    const std::string title = htmlText(monthTitle(month));
    m_html += fmt::format("<section class=\"sheet\" aria-labelledby=\"m{0}\">\n<h2 id=\"m{0}\">{1}</h2>\n<table>\n",
                          isoDay(month), title);
    LocalDay week = weekStart(month, m_report.firstWeekday);
    m_html += "<thead><tr>";
    for (int i = 0; i < 7; ++i) {
      m_html += fmt::format("<th scope=\"col\">{}</th>", htmlText(m_names.weekday(week + i)));
    }
    m_html += "</tr></thead>\n<tbody>\n";
    for (; week < LocalDay(cctz::civil_month(month) + 1); week += 7) {
      m_html += "<tr>";
      for (int i = 0; i < 7; ++i) { addCell(week + i, month); }
      m_html += "</tr>\n";
    }
    m_html += "</tbody>\n</table>\n</section>\n";
  }

  void addCell(LocalDay day, LocalDay month) {
    const bool outside = day.month() != month.month();
    const auto entries = entriesOn(day);
    m_html += fmt::format("<td class=\"{}{}{}\">{}", outside ? "outside " : "", day == m_today ? "today " : "",
                          entries.empty() ? "empty" : "",
                          fmt::format("<span class=\"name\">{} </span>{}", htmlText(m_names.shortWeekday(day)),
                                      dayTime(day, std::to_string(day.day()))));
    if (!outside && !entries.empty()) {
      m_html += "<ul class=\"entries\">\n";
      for (const auto* entry : entries) { m_html += entryItem(*entry, ""); }
      m_html += "</ul>";
    }
    m_html += "</td>";
  }

  struct Block {
    const Report::Entry* entry;
    int at, until;  ///< minutes of the day
  };
  std::vector<Block> blocksOn(LocalDay day) const {
    std::vector<Block> blocks;
    for (const auto& entry : m_report.entries) {
      const GridEntry& shown = entry.shown;
      if (shown.wholeDays || shown.firstDay() > day || shown.lastDay() < day) { continue; }
      const auto minutes = [&](LocalTime time) { return static_cast<int>((time - LocalTime(day)) / 60); };
      const int at = std::max(0, minutes(shown.start));
      blocks.push_back({&entry, at, std::clamp(minutes(shown.end), at, kMinutesInDay)});
    }
    std::stable_sort(blocks.begin(), blocks.end(), [](const Block& a, const Block& b) { return a.at < b.at; });
    return blocks;
  }

  void addWeek(LocalDay week) {
    int from = kFromMinute, to = kToMinute;
    std::size_t whole = 0;
    for (int i = 0; i < 7; ++i) {
      const auto blocks = blocksOn(week + i);
      for (const Block& block : blocks) {
        from = std::min(from, block.at - block.at % 60);
        to = std::max(to, std::min(kMinutesInDay, (block.until + 59) / 60 * 60));
      }
      whole = std::max(whole, entriesOn(week + i).size() - timedOn(week + i));
    }
    m_html += fmt::format(
        "<section class=\"sheet\" aria-labelledby=\"w{0}\">\n<h2 id=\"w{0}\">{1}</h2>\n"
        "<div class=\"week\" style=\"--from: {2}; --to: {3}; --whole: {4}rem\">\n<div class=\"scale\" "
        "aria-hidden=\"true\">"
        "<ol class=\"hours\">",
        isoDay(week), htmlText(weekTitle(week)), from, to, static_cast<double>(whole) * 1.5);
    for (int hour = from / 60; hour < to / 60; ++hour) { m_html += fmt::format("<li>{:02}:00</li>", hour); }
    m_html += "</ol></div>\n";
    for (int i = 0; i < 7; ++i) { addDay(week + i); }
    m_html += "</div>\n</section>\n";
  }

  std::size_t timedOn(LocalDay day) const {
    const auto entries = entriesOn(day);
    return static_cast<std::size_t>(
        std::count_if(entries.begin(), entries.end(), [](const auto* entry) { return !entry->shown.wholeDays; }));
  }

  void addDay(LocalDay day) {
    const auto blocks = blocksOn(day);
    std::vector<std::pair<int, int>> spans;
    // What is shorter than its line of text takes that.
    constexpr int kShortest = 30;
    for (const Block& block : blocks) { spans.emplace_back(block.at, std::max(block.until, block.at + kShortest)); }
    const std::vector<Lane> lanes = lanesOf(spans);
    const auto entries = entriesOn(day);
    m_html += fmt::format("<section class=\"day{}{}\"><h3>{}</h3>\n<ul class=\"entries whole\">\n",
                          day == m_today ? " today" : "", entries.empty() && blocks.empty() ? " empty" : "",
                          dayTime(day, fmt::format("{} {}", m_names.shortWeekday(day), day.day())));
    for (const auto* entry : entries) {
      if (entry->shown.wholeDays) { m_html += entryItem(*entry, ""); }
    }
    m_html += "</ul>\n<ol class=\"hours\">\n";
    for (std::size_t i = 0; i < blocks.size(); ++i) {
      m_html += entryItem(*blocks[i].entry, fmt::format("--at: {}; --until: {}; --lane: {}; --lanes: {}", blocks[i].at,
                                                        blocks[i].until, lanes[i].lane, lanes[i].lanes));
    }
    m_html += "</ol></section>\n";
  }

  const Report& m_report;
  const LocalDay m_today;
  const DateNames& m_names;
  std::string m_html;
};

}  // namespace

std::string reportPage(const Report& report) { return Page(report).text(); }

}  // namespace orlocal::host
