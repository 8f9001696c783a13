#include "store/icalendar/icalendar_reader.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>
#include <unordered_map>

#include <fmt/format.h>
#include <unicode/ucnv.h>

#include "base/text.h"
#include "base/translation.h"
#include "base/try.h"
#include "store/icalendar/calendar_layout.h"
#include "store/icalendar/item_reader.h"
#include "store/icalendar/later_changes.h"
#include "store/icalendar/tzid_table.h"
#include "store/time/clock_name.h"
#include "store/time/time_text.h"

namespace orlocal::store {

namespace {

constexpr std::uintmax_t kLargestFile = std::uintmax_t{1} << 30;

/// Byte-order marks say how the text is written; UTF-8's own is dropped.
Result<std::string> asUtf8(std::string bytes, const std::string& name) {
  if (bytes.starts_with("\xEF\xBB\xBF")) { return bytes.substr(3); }
  const bool little = bytes.starts_with("\xFF\xFE"), big = bytes.starts_with("\xFE\xFF");
  if (!little && !big) { return bytes; }
  std::string text(bytes.size() * 2, '\0');
  UErrorCode status = U_ZERO_ERROR;
  const int size = ucnv_convert("UTF-8", little ? "UTF-16LE" : "UTF-16BE", text.data(), static_cast<int>(text.size()),
                                bytes.data() + 2, static_cast<int>(bytes.size() - 2), &status);
  if (U_FAILURE(status) != 0) {
    return failure(ErrorCode::kInvalid, tr("{} begins as UTF-16 and is not; save it as UTF-8", name));
  }
  text.resize(static_cast<std::size_t>(size));
  return text;
}

/// Messages that say something of an item (RFC 5546): of two that name one item, each says its own.
bool isAboutKnownItem(std::string_view method) {
  constexpr std::array<std::string_view, 6> kMethods{"ADD", "CANCEL", "COUNTER", "DECLINECOUNTER", "REFRESH", "REPLY"};
  return std::ranges::any_of(kMethods, [&](std::string_view each) { return equalsNoCase(each, trimmed(method)); });
}

std::string writtenTime(const CalendarTime& time) { return timeText(time).append(clockName(time)); }

/// What an item says of itself to people.
std::string itemInWordsOf(std::string_view component) {
  std::optional<std::string> title;
  std::optional<CalendarTime> start;
  ContentLines lines(component);
  int depth = 0;
  for (ContentLine line; lines.next(line) && !(title && start);) {
    if (line.is("BEGIN")) { ++depth; }
    if (line.is("END")) { --depth; }
    if (depth != 1) { continue; }
    if (line.is("SUMMARY") && !title) { title = unescapeText(line.value); }
    if ((line.is("DTSTART") || line.is("DUE")) && !start) { start = parseTime(line.value); }
  }
  return itemInWords(title, start);
}

bool isNewer(const ItemSpan& left, const ItemSpan& right) {
  return left.sequence != right.sequence ? left.sequence > right.sequence : left.modified > right.modified;
}

/// UIDs are told to people; RFC 7986, 5.3 wants them shorter than this.
std::string shownUid(std::string_view uid) {
  constexpr std::size_t kLongest = 255;
  if (uid.size() <= kLongest) { return std::string(uid); }
  std::string begin(uid.substr(0, kLongest));
  while (!isUtf8(begin)) { begin.pop_back(); }
  return begin + "…";
}

}  // namespace

std::string itemInWords(const std::optional<std::string>& title, const std::optional<CalendarTime>& start) {
  constexpr std::size_t kLongest = 60;
  std::string words;
  if (title && !title->empty()) {
    std::string shown = title->substr(0, kLongest);
    while (!isUtf8(shown)) { shown.pop_back(); }
    words = tr("“{}{}”", shown, shown.size() < title->size() ? "…" : "");
  }
  if (!start) { return words; }
  const LocalTime& local = start->local;
  const std::string day = fmt::format("{:04}-{:02}-{:02}", local.year(), local.month(), local.day());
  return words.empty() ? day : tr("{} on {}", words, day);
}

void ReadProblems::refuse(int line, std::string_view uid, std::string message) {
  refused.push_back({line, shownUid(uid), std::move(message), {}});
}

void ReadProblems::warn(int line, std::string_view uid, std::string message) {
  if (warnings.size() < kMostWarnings) {
    warnings.push_back({line, shownUid(uid), std::move(message), {}});
  } else {
    ++warningsLeftOut;
  }
}

void ReadProblems::append(ReadProblems later) {
  std::ranges::move(later.refused, std::back_inserter(refused));
  const std::size_t room = kMostWarnings - warnings.size(), kept = std::min(room, later.warnings.size());
  std::move(later.warnings.begin(), later.warnings.begin() + static_cast<std::ptrdiff_t>(kept),
            std::back_inserter(warnings));
  warningsLeftOut += later.warnings.size() - kept + later.warningsLeftOut;
}

struct CalendarReader::Data {
  struct Group {
    std::size_t calendar = 0;
    int line = 0;
    std::optional<std::size_t> main;
    std::vector<std::size_t> changed;
  };

  explicit Data(std::string text) : bytes(std::move(text)), layout(layoutOf(bytes)), zones(bytes, layout.zones) {}

  void group();
  void addMain(Group& group, std::size_t index);
  ItemGroup read(const Group& group, Tzids& tzids, RuleBudget& budget, ReadProblems& found) const;

  std::string bytes;
  CalendarLayout layout;
  TzidTable zones;
  RuleBudget rules;
  const std::atomic<bool>* stop = nullptr;
  std::vector<Group> groups;
};

/// Of two items with one UID the newer one counts.
void CalendarReader::Data::addMain(Group& group, std::size_t index) {
  if (!group.main) {
    group.main = index;
    return;
  }
  const bool replaces = isNewer(layout.items[index], layout.items[*group.main]);
  const std::size_t kept = replaces ? index : *group.main, left = replaces ? *group.main : index;
  group.main = kept;
  const ItemSpan& other = layout.items[left];
  layout.problems.refuse(
      other.span.line, other.uid,
      replaces ? tr("its UID is also that of the item in line {}, which is newer; this one was not imported",
                    layout.items[kept].span.line)
               : tr("its UID is also that of the item in line {}, which counts; this one was not imported",
                    layout.items[kept].span.line));
}

/// Brings items with one UID together, in the order in which the first of them comes.
void CalendarReader::Data::group() {
  // Calendars of one name are one: some write each change into a VCALENDAR of its own.
  std::unordered_map<std::string_view, std::size_t> byName;
  std::vector<std::size_t> number;
  number.reserve(layout.calendars.size());
  for (const CalendarHead& head : layout.calendars) {
    const std::size_t next = number.size();
    number.push_back(isAboutKnownItem(head.method) ? next : byName.try_emplace(head.name, next).first->second);
  }
  std::unordered_map<std::size_t, std::unordered_map<std::string_view, std::size_t>> known;  // by calendar and kind
  for (std::size_t i = 0; i < layout.items.size(); ++i) {
    const ItemSpan& item = layout.items[i];
    std::size_t at = groups.size();
    if (!item.uid.empty()) {
      const std::size_t place = 2 * number[item.calendar] + static_cast<std::size_t>(item.kind);
      at = known[place].try_emplace(item.uid, at).first->second;
    }
    if (at == groups.size()) { groups.push_back({item.calendar, item.span.line, std::nullopt, {}}); }
    if (item.changed) {
      groups[at].changed.push_back(i);
    } else {
      addMain(groups[at], i);
    }
  }
  // Some write a whole series with the original start of its first occurrence.
  for (Group& group : groups) {
    if (group.main) { continue; }
    const auto found = std::find_if(group.changed.begin(), group.changed.end(),
                                    [&](std::size_t i) { return layout.items[i].repeats; });
    if (found == group.changed.end()) { continue; }
    group.main = *found;
    layout.items[*found].changed = false;
    group.changed.erase(found);
  }
}

Result<CalendarReader> CalendarReader::open(const std::filesystem::path& file) {
  std::ifstream in(file, std::ios::binary | std::ios::ate);
  const auto unreadable = [&] {
    return failure(ErrorCode::kIo, tr("{} cannot be read: {}", file.string(), std::strerror(errno)));
  };
  std::error_code error;
  if (!in || !std::filesystem::is_regular_file(file, error)) {
    if (in) { return failure(ErrorCode::kIo, tr("{} is not a file", file.string())); }
    return unreadable();
  }
  const auto size = static_cast<std::uintmax_t>(in.tellg());
  if (size > kLargestFile) {
    return failure(ErrorCode::kInvalid, tr("{} is larger than 1 GiB; split it", file.string()));
  }
  std::string bytes(static_cast<std::size_t>(size), '\0');
  in.seekg(0);
  if (!in.read(bytes.data(), static_cast<std::streamsize>(bytes.size()))) { return unreadable(); }
  return ofText(std::move(bytes), file.string());
}

Result<CalendarReader> CalendarReader::ofText(std::string bytes, const std::string& name) {
  ORLOCAL_TRY(auto text, asUtf8(std::move(bytes), name));
  auto data = std::make_unique<Data>(std::move(text));
  const bool anything =
      !data->layout.items.empty() || !data->layout.problems.refused.empty() || !data->layout.zones.empty();
  if (!anything && data->bytes.find("BEGIN:") == std::string::npos) {
    return failure(ErrorCode::kInvalid, tr("{} is no iCalendar file: there is no component in it", name));
  }
  data->group();
  return CalendarReader(std::move(data));
}

CalendarReader::CalendarReader(std::unique_ptr<Data> data) : m_data(std::move(data)) {}
CalendarReader::CalendarReader(CalendarReader&&) noexcept = default;
CalendarReader& CalendarReader::operator=(CalendarReader&&) noexcept = default;
CalendarReader::~CalendarReader() = default;

const std::vector<CalendarHead>& CalendarReader::calendars() const { return m_data->layout.calendars; }
std::size_t CalendarReader::size() const { return m_data->groups.size(); }
const ReadProblems& CalendarReader::problems() const { return m_data->layout.problems; }
const std::map<std::string, std::string>& CalendarReader::privateZones() const { return m_data->zones.privateZones(); }

bool CalendarReader::endsEarly() const { return m_data->layout.endsEarly; }

void CalendarReader::nameItems(ReadProblems& problems) const {
  const auto& items = m_data->layout.items;
  std::unordered_map<const ItemSpan*, std::string> known;
  for (auto* list : {&problems.refused, &problems.warnings}) {
    for (Problem& problem : *list) {
      const auto next =
          std::ranges::upper_bound(items, problem.line, {}, [](const ItemSpan& item) { return item.span.line; });
      if (next == items.begin()) { continue; }
      const ItemSpan& item = *std::prev(next);
      // The last item of those that begin before it need not be what it is about.
      if (problem.uid.empty() || (!item.uid.empty() && shownUid(item.uid) != problem.uid)) { continue; }
      const auto [place, isNew] = known.try_emplace(&item);
      if (isNew) { place->second = itemInWordsOf(item.span.of(m_data->bytes)); }
      problem.item = place->second;
    }
  }
}

void CalendarReader::stopWhen(const std::atomic<bool>* stop) {
  m_data->rules = RuleBudget(stop);
  m_data->stop = stop;
}

ItemGroup CalendarReader::read(std::size_t index, ReadProblems& problems) {
  return m_data->read(m_data->groups[index], m_data->zones, m_data->rules, problems);
}

CalendarReader::Stretch CalendarReader::readAhead(std::size_t begin, std::size_t end) const {
  Stretch made;
  made.groups.reserve(end - begin);
  KnownTzids tzids(m_data->zones);
  RuleBudget budget = RuleBudget::ofOwnParts(m_data->stop);
  for (made.end = begin; made.end < end; ++made.end) {
    if (m_data->stop != nullptr && m_data->stop->load()) { break; }
    ReadProblems found;
    ItemGroup group = m_data->read(m_data->groups[made.end], tzids, budget, found);
    if (tzids.wasAskedForMore() || budget.ranShort()) { break; }
    made.problems.append(std::move(found));
    if (!group.empty()) { made.groups.push_back(std::move(group)); }
  }
  return made;
}

ItemGroup CalendarReader::Data::read(const Group& group, Tzids& tzids, RuleBudget& budget,
                                     ReadProblems& problems) const {
  ItemGroup made{group.calendar, group.line, std::nullopt, {}, nullptr, {}};
  std::vector<LaterChange> later;
  std::unordered_map<std::string, std::size_t> places;
  const auto add = [&](Item&& changed, int line) {
    // Compared as written: two writings of one moment are told apart by whoever knows the series.
    const auto [place, isNew] = places.try_emplace(writtenTime(*changed.recurrenceId), made.changed.size());
    if (isNew) {
      made.changed.push_back(std::move(changed));
    } else {
      problems.warn(line, changed.uid, tr("an occurrence is changed twice; the newer change counts"));
      Item& known = made.changed[place->second];
      if (changed.sequence >= known.sequence) { known = std::move(changed); }
    }
  };
  if (group.main) {
    const ItemSpan& span = layout.items[*group.main];
    if (auto read = readItem(bytes, span, tzids, budget, problems)) {
      made.main = std::move(read->item);
      made.series = std::move(read->series);
      for (Item& period : read->periods) { add(std::move(period), span.span.line); }
    }
  }
  for (const std::size_t i : group.changed) {
    const ItemSpan& span = layout.items[i];
    auto read = readItem(bytes, span, tzids, budget, problems);
    if (!read) { continue; }
    if (read->andFuture && made.series) {
      later.push_back({std::move(read->item), span.span.line});
      continue;
    }
    if (read->andFuture) {
      problems.warn(
          span.span.line, read->item.uid,
          tr("RANGE=THISANDFUTURE has no series here that it could change: only this one occurrence is changed"));
    }
    add(std::move(read->item), span.span.line);
  }
  if (!later.empty()) { cutAtLaterChanges(made, std::move(later), problems); }
  return made;
}

}  // namespace orlocal::store
