#include "client.h"

#include <chrono>
#include <stdexcept>

#include "accounts/adding.h"
#include "accounts/connection.h"
#include "accounts/syncing.h"
#include "plain_connection.h"
#include "recording_transport.h"
#include "store/remote_reader.h"

namespace orlocal::bench {
namespace {

class RealClock final : public accounts::Clock {
  store::Moment now() const override {
    return std::chrono::time_point_cast<std::chrono::microseconds>(std::chrono::system_clock::now());
  }
};

template <class Value>
Value orThrow(Result<Value> result) {
  if (!result) { throw std::runtime_error(result.error().message); }
  return std::move(*result);
}

std::unique_ptr<store::CalendarStore> opened(const std::filesystem::path& file) {
  store::StoreOptions options;
  options.file = file;
  options.viewer = store::Zone::ofUser();
  return orThrow(store::CalendarStore::open(std::move(options)));
}

/// Where nothing is kept: passwords come from files.
const accounts::SecretsFile kNoSecrets{""};

}  // namespace

Client::Client(std::filesystem::path file, Login login, std::size_t number)
    : m_file(std::move(file)), m_login(std::move(login)), m_number(number) {}

void Client::open() {
  if (m_store) { return; }
  m_store = opened(m_file);
  const auto accounts = orThrow(accounts::AccountBook(*m_store).all());
  if (!accounts.empty()) { m_account = accounts.front(); }
}

Synced Client::join(bool keepsRequests) {
  const std::lock_guard one(m_busy);
  open();
  m_account.name = "Server";
  m_account.settings.address = m_login.address;
  m_account.settings.user = m_login.user;
  m_account.settings.secret = textOf(accounts::SecretSource(accounts::PasswordFile{m_login.passwordFile}));
  Synced found;
  const auto connection = connectionFor(m_account, kNoSecrets, nullptr);
  RecordingTransport transport(*connection, found.count, keepsRequests ? &found.requests : nullptr);
  const auto calendars = findCalendars(transport, m_account, accounts::systemServiceLookup);
  if (!calendars) { throw std::runtime_error(calendars.error().message); }
  if (const auto added = accounts::AccountBook(*m_store).add(m_account); !added) {
    throw std::runtime_error(added.error().message);
  }
  Synced synced = run(keepsRequests);
  found.requests.insert(found.requests.end(), synced.requests.begin(), synced.requests.end());
  found.count += synced.count;
  found.kind = synced.kind;
  return found;
}

Synced Client::sync(bool keepsRequests) {
  const std::lock_guard one(m_busy);
  open();
  return run(keepsRequests);
}

Synced Client::run(bool keepsRequests) {
  Synced synced;
  const auto connection = connectionFor(m_account, kNoSecrets, nullptr);
  RecordingTransport transport(*connection, synced.count, keepsRequests ? &synced.requests : nullptr);
  const auto report = orThrow(syncNow(*m_store, m_account, transport, RealClock(), {}));
  if (report.failure) { throw std::runtime_error(report.failure->message); }
  if (!report.troubles.empty()) { throw std::runtime_error(report.troubles.front().message); }
  if (report.conflicts > 0) { throw std::runtime_error("a conflict where nobody changes what others change"); }
  synced.kind = report.sent > 0 ? Kind::kSent : report.received > 0 ? Kind::kReceived : Kind::kQuiet;
  return synced;
}

void Client::chooseEvents() {
  if (!m_mine.empty()) { return; }
  store::RemoteReader reader(*m_store);
  std::vector<std::string> single;
  for (const store::Mirror& mirror : orThrow(reader.allMirrors())) {
    for (const store::Resource& each : orThrow(reader.resources(mirror.id))) {
      const auto item = orThrow(m_store->item(each.item.value_or(0)));
      if (item && item->title && item->recurrence.rules.empty()) { single.push_back(each.key); }
    }
    if (single.size() < 2) { continue; }
    m_mirror = mirror.id;
    if (single.size() <= m_number) { throw std::runtime_error("fewer single events than clients"); }
    m_mine = single[m_number];
    m_theirs = single[(m_number + single.size() / 2) % single.size()];
    return;
  }
  throw std::runtime_error("no calendar with two single events");
}

store::Resource Client::resource(const std::string& key) {
  auto found = orThrow(store::RemoteReader(*m_store).resource(m_mirror, key));
  if (!found || !found->item) { throw std::runtime_error("an event that was to be changed is gone"); }
  return *std::move(found);
}

void Client::changeHere(const std::string& title) {
  const std::lock_guard one(m_busy);
  open();
  chooseEvents();
  // What the syncing store writes itself is not taken for a change of this machine.
  const auto other = opened(m_file);
  store::ItemEdit edit;
  edit.opened = orThrow(other->item(*resource(m_mine).item));
  edit.values.title = title;
  edit.set.add(store::ItemField::kTitle);
  orThrow(other->saveEvent(edit, std::nullopt, store::Span::kAll));
}

accounts::HttpRequest Client::changeThere(const std::string& title) {
  const std::lock_guard one(m_busy);
  open();
  chooseEvents();
  const store::Resource theirs = resource(m_theirs);
  return {"PUT", theirs.url, {{"Content-Type", "text/calendar; charset=utf-8"}}, withTitle(theirs.text, title)};
}

std::string Client::urlOfMine() {
  const std::lock_guard one(m_busy);
  return resource(m_mine).url;
}

std::string Client::titleOfTheirs() {
  const std::lock_guard one(m_busy);
  const auto item = orThrow(m_store->item(*resource(m_theirs).item));
  return item && item->title ? *item->title : "";
}

std::size_t Client::bytesOnDisk() const {
  const auto log = m_file.string() + "-wal";
  return std::filesystem::file_size(m_file) + (std::filesystem::exists(log) ? std::filesystem::file_size(log) : 0);
}

std::size_t Client::items() {
  const std::lock_guard one(m_busy);
  open();
  store::RemoteReader reader(*m_store);
  std::size_t count = 0;
  for (const store::Mirror& mirror : orThrow(reader.allMirrors())) {
    count += orThrow(reader.resources(mirror.id)).size();
  }
  return count;
}

}  // namespace orlocal::bench
