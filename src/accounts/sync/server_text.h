#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "store/edits/item_writer.h"
#include "store/icalendar/icalendar_reader.h"
#include "store/model/model.h"

namespace orlocal::accounts {

/// What a server's text holds, ready to be put into the store.
class ServerText {
 public:
  /// Reads it; `name` stands in sentences. Never fails: what cannot be read says why in `trouble`.
  static ServerText read(const std::string& text, const std::string& name);

  /// The item as the store will have it; none when there is none, or none that can be taken.
  const std::optional<store::WholeItem>& item() const { return m_item; }
  const std::string& uid() const { return m_uid; }
  /// Why there is no item, or not all of it. None for what is no event or reminder: that stays on the server alone.
  const std::optional<std::string>& trouble() const { return m_trouble; }
  /// Whether a change of an occurrence and all after it cuts it into several series.
  bool isCut() const;

  /// What the items of a text became in the store.
  struct Put {
    store::ItemId main = 0;
    std::vector<store::ItemId> parts;  ///< further series and changed occurrences without a series
    bool changed = false;
  };
  /// Puts all of it; `uid`, where it is given, in place of the text's own.
  Result<Put> putInto(store::ItemWriter& writer, store::CalendarId calendar,
                      const std::optional<std::string>& uid) const;

 private:
  std::vector<store::ItemGroup> m_groups;  ///< one, and what is left out
  std::map<std::string, std::string> m_zones;
  std::optional<store::WholeItem> m_item;
  std::string m_uid;
  std::optional<std::string> m_trouble;
};

/// What stands in the store for a server's text.
struct Standing {
  store::WholeItem item;                 ///< what `ServerText::item` would be of it
  std::vector<store::WholeItem> cutOff;  ///< further series

  /// Names this state by its content.
  std::uint64_t digest() const;
};
/// None when the main item is gone.
Result<std::optional<Standing>> standing(store::ItemWriter& writer, store::ItemId main,
                                         const std::vector<store::ItemId>& parts);

}  // namespace orlocal::accounts
