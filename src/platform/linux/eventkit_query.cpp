#include "platform/linux/eventkit_query.h"

#include <algorithm>

#include "platform/exception.h"
#include "platform/linux/eventkit_event.h"
#include "platform/linux/eventkit_reminder.h"

namespace orlocal {
namespace {

constexpr std::size_t kSmallestBatch = 16;
constexpr std::size_t kLargestBatch = 256;

/// Reads the rows of a batch together; `rowAt` gives the row number of an index.
template <class RowAt>
void readAhead(ReadAhead& state, store::CalendarStore& store, std::size_t index, std::size_t count, RowAt rowAt) {
  const std::size_t end = state.batchEnd(index, count);
  if (end - index < 2) { return; }
  std::vector<store::ItemId> rows;
  rows.reserve(end - index);
  for (std::size_t i = index; i < end; ++i) { rows.push_back(rowAt(i)); }
  // Occurrences of one series share their row.
  std::sort(rows.begin(), rows.end());
  rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
  store.prefetch(rows);
}

}  // namespace

std::size_t ReadAhead::batchEnd(std::size_t index, std::size_t count) {
  if (index >= m_begin && index < m_end) { return index; }
  m_size = index == m_end ? std::clamp(m_size * 2, kSmallestBatch, kLargestBatch) : 1;
  m_begin = index;
  m_end = std::min(count, index + m_size);
  return m_end;
}

std::shared_ptr<EKEvent> EventArray::objectAtIndex(std::size_t index) const {
  checkIndex(static_cast<std::int64_t>(index), m_occurrences.size());
  const store::Occurrence occurrence = m_occurrences[index];
  readAhead(m_readAhead, m_access->store(), index, m_occurrences.size(),
            [this](std::size_t i) { return m_occurrences[i].item; });
  auto item = orNone(m_access->store().item(occurrence.item)).value_or(nullptr);
  if (!item) { return nullptr; }
  return std::make_shared<EventObject>(m_access, std::move(item), occurrence);
}

std::shared_ptr<EKReminder> ReminderArray::objectAtIndex(std::size_t index) const {
  const store::ItemId row = orlocal::objectAtIndex(m_rows, static_cast<std::int64_t>(index));
  readAhead(m_readAhead, m_access->store(), index, m_rows.size(), [this](std::size_t i) { return m_rows[i]; });
  auto item = orNone(m_access->store().item(row)).value_or(nullptr);
  if (!item) { return nullptr; }
  return std::make_shared<ReminderObject>(m_access, std::move(item));
}

}  // namespace orlocal
