#include "accounts/sync/guarded_writes.h"

#include "base/translation.h"
#include "base/try.h"

namespace orlocal::accounts {
namespace {

/// No server gives such an ETag.
constexpr const char* kNeverHolds = "\"orlocal-condition-that-cannot-hold\"";

}  // namespace

Answer<Written> GuardedWrites::create(const std::string& url, const std::string& text) {
  return m_server.put(url, text, Precondition::isNew());
}

Answer<void> GuardedWrites::checkByAsking(const std::string& url, const std::string& etag) {
  ORLOCAL_TRY(const RemoteText now, m_server.text(url));
  if (now.etag == etag) { return {}; }
  return refusal(Trouble::kPrecondition, tr("It was changed on the server meanwhile."));
}

Answer<Written> GuardedWrites::update(const std::string& url, const std::string& text, const std::string& etag) {
  if (m_account.writeConditions != Keeps::kYes) { ORLOCAL_CHECK(checkByAsking(url, etag)); }
  if (m_account.writeConditions == Keeps::kUnknown) {
    auto tried = m_server.put(url, text, Precondition::isAsKnown(kNeverHolds));
    if (tried || tried.error().trouble != Trouble::kPrecondition) {
      if (tried) { m_account.writeConditions = Keeps::kNo; }
      return tried;
    }
    m_account.writeConditions = Keeps::kYes;
  }
  return m_server.put(url, text, Precondition::isAsKnown(etag));
}

Answer<void> GuardedWrites::remove(const std::string& url, const std::string& etag) {
  if (m_account.removeConditions != Keeps::kYes) { ORLOCAL_CHECK(checkByAsking(url, etag)); }
  if (m_account.removeConditions == Keeps::kUnknown) {
    auto tried = m_server.remove(url, kNeverHolds);
    if (tried || tried.error().trouble != Trouble::kPrecondition) {
      if (tried) { m_account.removeConditions = Keeps::kNo; }
      return tried;
    }
    m_account.removeConditions = Keeps::kYes;
  }
  return m_server.remove(url, etag);
}

}  // namespace orlocal::accounts
