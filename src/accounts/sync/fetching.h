#pragma once

#include <map>
#include <string>
#include <vector>

#include "accounts/sync/sync_context.h"
#include "accounts/sync/taking_in.h"

namespace orlocal::accounts {

/// Brings one calendar up to what its server has.
///
/// What the server lists is fetched where its ETag is not the known one. What it does not list is gone only when the
/// server says so of each by itself.
class Fetching {
 public:
  /// `now` is how the server has just described the calendar; `mirror` is written with what was learned.
  Fetching(SyncContext& context, store::Mirror& mirror, const RemoteCalendar& now);

  /// Without a request when nothing happened there.
  Answer<void> run();

  /// After something was sent: takes in what the server made of it, and keeps a token that is younger than it.
  Answer<void> runAgain();

 private:
  struct News {
    std::vector<std::string> changed;    ///< addresses to be fetched
    std::vector<std::string> suspected;  ///< addresses that may be gone
    std::vector<std::string> missed;     ///< the same, only because a list lacked them
    std::string token;
  };

  bool nothingHappened() const;
  Answer<void> fetchNews();
  Answer<void> learnKnown();
  Answer<News> learnNews();
  /// None when the server does not know the token, or has listed everything without a word.
  Answer<std::optional<News>> askForChanges(const std::string& token);
  Answer<News> listAll();
  void compare(const RemoteEntry& entry, News& news);
  void suspectUnlisted(const std::vector<RemoteEntry>& listed, News& news);
  Answer<void> fetch(const std::vector<std::string>& urls, TakingIn& takingIn, bool showsProgress);
  Answer<void> takeIn(RemoteTexts texts, TakingIn& takingIn);
  /// An item that stands under another name than before, and no more under the old one, is the same item.
  Answer<void> followName(const RemoteText& text);
  Answer<void> remember(const News& news);

  SyncContext& m_context;
  store::Mirror& m_mirror;
  const RemoteCalendar& m_now;
  MirrorState m_state;
  std::map<std::string, store::Resource> m_known;  ///< by key, without texts
  std::map<std::string, std::string> m_absent;     ///< keys of what may be gone, by UID
  bool m_broken = false;
};

}  // namespace orlocal::accounts
