#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace orlocal {

/// Posted when events changed outside this process.
inline constexpr std::string_view kCalEventsChangedExternallyNotification = "CalEventsChangedExternallyNotification";

/// Keys of its user info. Each names a list of event identifiers; a list without members is left out.
inline constexpr std::string_view kCalInsertedRecordsKey = "CalInsertedRecordsKey";
inline constexpr std::string_view kCalUpdatedRecordsKey = "CalUpdatedRecordsKey";
inline constexpr std::string_view kCalDeletedRecordsKey = "CalDeletedRecordsKey";

/// Something that happened, with lists of identifiers by key. Immutable once posted.
struct Notification {
  std::string name;
  std::map<std::string, std::vector<std::string>, std::less<>> userInfo;

  /// The list under `key`; null when the user info has no such key.
  const std::vector<std::string>* valueForKey(std::string_view key) const {
    const auto found = userInfo.find(key);
    return found == userInfo.end() ? nullptr : &found->second;
  }
};

/// Carries notifications from whoever posts them to whoever observes. Any thread; an observer is called on the posting
/// thread, outside any lock of the centre. Observers stay for the life of the centre.
class NotificationCenter {
 public:
  using Observer = std::function<void(const std::shared_ptr<const Notification>&)>;

  virtual ~NotificationCenter() = default;

  /// Calls `observer` for each notification of that name. The same observer added twice is called twice.
  virtual void addObserver(std::string_view name, Observer observer) = 0;

  /// Calls those who observe its name, in the order in which they were added. One that throws keeps none of the others
  /// from being called; the first exception leaves afterwards.
  virtual void post(const std::shared_ptr<const Notification>& notification) = 0;

  /// Whether notifications of other processes wait. They wait until somebody says `false`.
  virtual void setSuspended(bool suspended) = 0;
};

}  // namespace orlocal
