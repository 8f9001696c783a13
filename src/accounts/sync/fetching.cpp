#include "accounts/sync/fetching.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <utility>

#include <fmt/format.h>

#include "accounts/sync/server_text.h"
#include "accounts/transport/url.h"
#include "base/translation.h"
#include "base/try.h"
#include "store/edits/item_writer.h"
#include "store/remote_reader.h"

namespace orlocal::accounts {
namespace {

/// Servers look through the whole calendar for each such request.
constexpr std::size_t kTextsAtOnce = 500;
/// Longer than servers that count in seconds need to give another state another token.
constexpr auto kSettlesAfter = std::chrono::seconds(2);

}  // namespace

Fetching::Fetching(SyncContext& context, store::Mirror& mirror, const RemoteCalendar& now)
    : m_context(context), m_mirror(mirror), m_now(now) {}

Answer<void> Fetching::run() {
  ORLOCAL_STORE_TRY(m_state, MirrorState::ofText(m_mirror.state));
  return nothingHappened() ? Answer<void>() : fetchNews();
}

Answer<void> Fetching::runAgain() {
  ORLOCAL_STORE_TRY(const auto mirrors, store::RemoteReader(m_context.store).mirrors(m_context.source));
  for (const store::Mirror& mirror : mirrors) {
    if (mirror.id == m_mirror.id) { m_mirror = mirror; }
  }
  ORLOCAL_STORE_TRY(m_state, MirrorState::ofText(m_mirror.state));
  return fetchNews();
}

Answer<void> Fetching::fetchNews() {
  ORLOCAL_CHECK(learnKnown());
  ORLOCAL_TRY(const News news, learnNews());
  for (const auto* urls : {&news.suspected, &news.missed}) {
    for (const std::string& url : *urls) {
      const auto known = m_known.find(comparablePath(url));
      if (known != m_known.end() && !known->second.uid.empty()) { m_absent[known->second.uid] = known->first; }
    }
  }
  TakingIn usual(m_context, m_mirror), wary(m_context, m_mirror, m_broken);
  ORLOCAL_CHECK(fetch(news.changed, wary, true));
  ORLOCAL_CHECK(fetch(news.suspected, usual, false));
  ORLOCAL_CHECK(fetch(news.missed, wary, false));
  return remember(news);
}

bool Fetching::nothingHappened() const {
  if (!m_state.settled) { return false; }
  if (!m_now.syncToken.empty() || !m_state.token.empty()) { return m_now.syncToken == m_state.token; }
  return !m_now.ctag.empty() && m_now.ctag == m_state.ctag;
}

Answer<void> Fetching::learnKnown() {
  ORLOCAL_STORE_TRY(auto resources, store::RemoteReader(m_context.store).resources(m_mirror.id));
  for (store::Resource& resource : resources) { m_known.emplace(resource.key, std::move(resource)); }
  return {};
}

Answer<Fetching::News> Fetching::learnNews() {
  if (!m_now.reportsChanges) { return listAll(); }
  if (!m_state.token.empty()) {
    ORLOCAL_TRY(auto news, askForChanges(m_state.token));
    if (news) { return *std::move(news); }
  }
  // Everything, together with a token for the next time.
  m_broken = m_broken || !m_known.empty();
  News all;
  std::vector<RemoteEntry> listed;
  for (bool more = true; more;) {
    auto changes = m_context.server.changesSince(m_mirror.url, all.token);
    if (!changes && changes.error().trouble == Trouble::kUnsupported) { return listAll(); }
    ORLOCAL_CHECK(changes);
    for (const RemoteEntry& entry : changes->changed) { compare(entry, all); }
    if (!m_known.empty()) { std::move(changes->changed.begin(), changes->changed.end(), std::back_inserter(listed)); }
    more = changes->more && changes->token != all.token;
    all.token = std::move(changes->token);
  }
  suspectUnlisted(listed, all);
  return all;
}

Answer<std::optional<Fetching::News>> Fetching::askForChanges(const std::string& token) {
  News news;
  news.token = token;
  std::size_t unchanged = 0;
  std::set<std::string> said;
  for (bool more = true; more;) {
    auto changes = m_context.server.changesSince(m_mirror.url, news.token);
    if (!changes) {
      switch (changes.error().trouble) {
        case Trouble::kInvalidToken:
        case Trouble::kServerError:  // so one server takes a token that it does not know
          m_broken = true;
          return std::nullopt;
        case Trouble::kUnsupported:
          return std::nullopt;
        default:
          return Refusal(std::move(changes.error()));
      }
    }
    for (const RemoteEntry& entry : changes->changed) {
      const std::size_t before = news.changed.size();
      compare(entry, news);
      if (news.changed.size() == before) { ++unchanged; }
      said.insert(comparablePath(entry.url));
    }
    for (const std::string& url : changes->removed) {
      said.insert(comparablePath(url));
      if (m_known.contains(comparablePath(url))) { news.suspected.push_back(url); }
    }
    more = changes->more && changes->token != news.token;
    news.token = std::move(changes->token);
  }
  // Some servers say nothing of what came and went since the token; what was sent since then may have.
  for (const auto& [key, resource] : m_known) {
    if (resource.sent && !said.contains(key)) { news.suspected.push_back(resource.url); }
  }
  // Some servers answer to a token that they do not know with everything that there is, and without what is gone.
  if (unchanged * 2 <= m_known.size() || m_known.empty()) { return news; }
  ORLOCAL_TRY(News all, listAll());
  std::set<std::string> named;
  for (const std::string& url : news.suspected) { named.insert(comparablePath(url)); }
  std::erase_if(all.missed, [&](const std::string& url) { return named.contains(comparablePath(url)); });
  all.suspected = std::move(news.suspected);
  all.token = std::move(news.token);
  m_broken = true;
  return all;
}

Answer<Fetching::News> Fetching::listAll() {
  News news;
  ORLOCAL_TRY(const auto listed, m_context.server.entries(m_mirror.url));
  for (const RemoteEntry& entry : listed) { compare(entry, news); }
  suspectUnlisted(listed, news);
  return news;
}

void Fetching::compare(const RemoteEntry& entry, News& news) {
  const auto known = m_known.find(comparablePath(entry.url));
  const bool same = known != m_known.end() && !entry.etag.empty() && known->second.etag == entry.etag &&
                    !known->second.sent && !known->second.uid.empty();
  if (!same) { news.changed.push_back(entry.url); }
}

void Fetching::suspectUnlisted(const std::vector<RemoteEntry>& listed, News& news) {
  if (m_known.empty()) { return; }
  std::set<std::string> keys;
  for (const RemoteEntry& entry : listed) { keys.insert(comparablePath(entry.url)); }
  for (const auto& [key, resource] : m_known) {
    // What was refused when it was sent never was there.
    const bool neverThere = resource.etag.empty() && !resource.sent;
    if (!keys.contains(key) && !neverThere) { news.missed.push_back(resource.url); }
  }
}

Answer<void> Fetching::fetch(const std::vector<std::string>& urls, TakingIn& takingIn, bool showsProgress) {
  std::size_t atOnce = kTextsAtOnce;
  for (std::size_t from = 0; from < urls.size();) {
    if (m_context.stopped()) { return refusal(Trouble::kInterrupted, tr("The sync was stopped.")); }
    if (showsProgress && m_context.progress) {
      m_context.progress(fmt::format("{}: {} of {}", m_state.agreed.title, from, urls.size()));
    }
    const auto piece = std::span(urls).subspan(from, std::min(atOnce, urls.size() - from));
    auto texts = m_context.server.texts(m_mirror.url, piece);
    if (!texts && texts.error().trouble == Trouble::kTooLarge && piece.size() > 1) {
      atOnce = std::max<std::size_t>(piece.size() / 8, 1);
      continue;
    }
    ORLOCAL_CHECK(texts);
    ORLOCAL_CHECK(takeIn(*std::move(texts), takingIn));
    from += piece.size();
  }
  return {};
}

Answer<void> Fetching::takeIn(RemoteTexts texts, TakingIn& takingIn) {
  for (const std::string& url : texts.unsaid) {
    auto text = m_context.server.text(url);
    if (text) {
      texts.found.push_back(*std::move(text));
    } else if (text.error().trouble == Trouble::kNotFound) {
      texts.missing.push_back(url);
    } else {
      return Refusal(std::move(text.error()));
    }
  }
  for (const RemoteText& text : texts.found) { ORLOCAL_CHECK(followName(text)); }
  ORLOCAL_CHECK(takingIn.texts(texts.found));
  if (texts.missing.empty()) { return {}; }
  // In a calendar that is gone, or cannot be seen for now, nothing is there.
  ORLOCAL_CHECK(m_context.server.calendar(m_mirror.url));
  std::vector<std::string> keys;
  for (const std::string& url : texts.missing) { keys.push_back(comparablePath(url)); }
  return takingIn.missing(keys);
}

Answer<void> Fetching::followName(const RemoteText& text) {
  const std::string key = comparablePath(text.url);
  if (m_absent.empty() || m_known.contains(key)) { return {}; }
  const auto absent = m_absent.find(ServerText::read(text.text, key).uid());
  if (absent == m_absent.end()) { return {}; }
  const auto old = m_context.server.text(m_known.at(absent->second).url);
  if (old || old.error().trouble != Trouble::kNotFound) { return {}; }
  ORLOCAL_STORE_TRY(const auto writer, m_context.startWriting());
  ORLOCAL_STORE_TRY(auto resource, writer->remotes().resource(m_mirror.id, absent->second));
  if (!resource) { return {}; }
  resource->key = key;
  resource->url = text.url;
  ORLOCAL_STORE_CHECK(writer->remotes().put(*resource));
  ORLOCAL_STORE_CHECK(writer->commit());
  m_absent.erase(absent);
  return {};
}

Answer<void> Fetching::remember(const News& news) {
  const auto now = m_context.clock.now();
  const bool quiet = news.changed.empty() && news.suspected.empty() && news.missed.empty();
  const std::string ctag = news.token.empty() ? m_now.ctag : std::string();
  const bool same = m_state.token == news.token && m_state.ctag == ctag && m_state.asOf;
  if (!same) { m_state.asOf = now; }
  m_state.token = news.token;
  m_state.ctag = ctag;
  m_state.trouble.clear();
  m_state.settled = quiet && same && now - *m_state.asOf >= kSettlesAfter;
  m_mirror.state = m_state.text();
  ORLOCAL_STORE_TRY(const auto writer, m_context.startWriting());
  ORLOCAL_STORE_CHECK(writer->remotes().put(m_mirror));
  ORLOCAL_STORE_CHECK(writer->commit());
  return {};
}

}  // namespace orlocal::accounts
