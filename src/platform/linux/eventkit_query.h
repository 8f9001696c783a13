#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "platform/eventkit.h"
#include "platform/linux/store_access.h"
#include "store/calendar_store.h"
#include "store/model/occurrence_list.h"

namespace orlocal {

/// A query with its last answer, which is good until the store changes.
template <class Query, class Answer>
struct KeptQuery final : EKPredicate {
  explicit KeptQuery(Query asked) : query(std::move(asked)) {}

  const Query query;
  mutable std::shared_ptr<const Answer> answer;
  mutable std::uint64_t generation = 0;
};
using EventPredicate = KeptQuery<store::EventQuery, EKEventArray>;
using ReminderPredicate = KeptQuery<store::ReminderQuery, EKReminderArray>;

/// Says which rows will be wanted next. Who asks for one after the other gets ever larger batches read ahead; who jumps
/// about pays for single rows only.
class ReadAhead {
 public:
  /// The end of the batch to read from `index` on; `index` itself when there is nothing to read.
  std::size_t batchEnd(std::size_t index, std::size_t count);

 private:
  std::size_t m_begin = 0, m_end = 0, m_size = 0;
};

/// The answer to an event query; its objects are made when they are asked for.
class EventArray final : public EKEventArray {
 public:
  EventArray(std::shared_ptr<StoreAccess> access, store::OccurrenceList occurrences)
      : m_access(std::move(access)), m_occurrences(std::move(occurrences)) {}
  std::size_t count() const override { return m_occurrences.size(); }
  std::shared_ptr<EKEvent> objectAtIndex(std::size_t index) const override;

 private:
  std::shared_ptr<StoreAccess> m_access;
  store::OccurrenceList m_occurrences;
  mutable ReadAhead m_readAhead;
};

class ReminderArray final : public EKReminderArray {
 public:
  ReminderArray(std::shared_ptr<StoreAccess> access, std::vector<store::ItemId> rows)
      : m_access(std::move(access)), m_rows(std::move(rows)) {}
  std::size_t count() const override { return m_rows.size(); }
  std::shared_ptr<EKReminder> objectAtIndex(std::size_t index) const override;

 private:
  std::shared_ptr<StoreAccess> m_access;
  std::vector<store::ItemId> m_rows;
  mutable ReadAhead m_readAhead;
};

}  // namespace orlocal
