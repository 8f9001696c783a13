#include "platform/linux/unopened_store.h"

#include <utility>

namespace orlocal {
namespace {

using namespace store;

class UnopenedStore final : public CalendarStore {
 public:
  explicit UnopenedStore(Failure reason) : m_reason(std::move(reason)) {}

  void close() override {}
  std::uint64_t generation() override { return 0; }

  Result<std::vector<Source>> sources() override { return refusal(); }
  Result<std::vector<Calendar>> calendars(CalendarKind) override { return refusal(); }
  Result<std::optional<Calendar>> calendar(std::string_view) override { return refusal(); }
  Result<std::optional<Calendar>> defaultCalendar(CalendarKind) override { return refusal(); }
  Status saveCalendar(Calendar&, CalendarFields) override { return refusal(); }
  Status removeCalendar(std::string_view) override { return refusal(); }

  Result<std::vector<Occurrence>> occurrences(const EventQuery&) override { return refusal(); }
  Result<std::vector<ItemId>> reminders(const ReminderQuery&) override { return refusal(); }

  Result<std::shared_ptr<const Item>> item(ItemId) override { return refusal(); }
  void prefetch(std::span<const ItemId>) override {}
  Result<std::shared_ptr<const Item>> event(std::string_view) override { return refusal(); }
  Result<std::shared_ptr<const Item>> itemWithIdentifier(std::string_view) override { return refusal(); }
  Result<std::optional<Occurrence>> firstOccurrence(const Item&) override { return refusal(); }
  Result<std::optional<Occurrence>> occurrenceAt(const Item&, Moment) override { return refusal(); }

  Result<Item> saveEvent(const ItemEdit&, const std::optional<Occurrence>&, Span) override { return refusal(); }
  Status removeEvent(const Item&, const std::optional<Occurrence>&, Span) override { return refusal(); }
  Result<Item> saveReminder(const ItemEdit&) override { return refusal(); }
  Status removeReminder(const Item&) override { return refusal(); }

  Result<std::unique_ptr<ItemWriter>> startWriting(const Announcement&) override { return refusal(); }
  Status forEachItem(CalendarId, const ItemVisitor&) override { return refusal(); }
  Result<std::optional<std::string>> privateZone(std::string_view) override { return refusal(); }
  Result<LogPosition> newestChange() override { return refusal(); }
  Result<std::vector<OutsideCommit>> outsideCommits(LogPosition&) override { return refusal(); }
  Result<std::unique_ptr<ChangeSignal>> listen() override { return refusal(); }
  Result<std::optional<std::string>> addressOf(std::string_view) override { return refusal(); }

 private:
  Failed refusal() const { return failure(m_reason); }

  Failure m_reason;
};

}  // namespace

std::unique_ptr<store::CalendarStore> makeUnopenedStore(Failure reason) {
  return std::make_unique<UnopenedStore>(std::move(reason));
}

}  // namespace orlocal
