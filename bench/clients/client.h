#pragma once

#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "accounts/account_book.h"
#include "accounts/sync/sync_report.h"
#include "store/calendar_store.h"

namespace orlocal::bench {

/// Whose account a client has, and where.
struct Login {
  std::string address;  ///< as a person gives it
  std::string user, password;
  std::filesystem::path passwordFile;
};

/// What a sync turned out to be.
enum class Kind { kQuiet, kReceived, kSent };

/// What one sync did.
struct Synced {
  Kind kind = Kind::kQuiet;
  std::size_t count = 0;                        ///< of requests
  std::vector<accounts::HttpRequest> requests;  ///< where they are kept
};

/// One machine: a store with one account, synced by the engine itself over a connection of its own each time. May be
/// asked by any thread; one thing is done at a time. Throws when something fails.
class Client {
 public:
  /// `number` decides which events it changes: all clients of one calendar have others.
  Client(std::filesystem::path file, Login login, std::size_t number);

  bool joined() const { return std::filesystem::exists(m_file); }
  /// Makes the store and the account, and fetches everything.
  Synced join(bool keepsRequests);
  Synced sync(bool keepsRequests = false);

  /// Gives an event another title in the store, as another process of this machine would.
  void changeHere(const std::string& title);
  /// The request by which another client of the same user gives another event another title.
  accounts::HttpRequest changeThere(const std::string& title);
  /// The event that `changeHere` changed, to be fetched as it is on the server.
  std::string urlOfMine();
  /// The title, here, of the event that `changeThere` changes.
  std::string titleOfTheirs();

  std::size_t items();
  /// Of the store, with what waits in its log.
  std::size_t bytesOnDisk() const;
  const Login& login() const { return m_login; }

 private:
  void open();
  void chooseEvents();
  Synced run(bool keepsRequests);
  store::Resource resource(const std::string& key);

  std::filesystem::path m_file;
  Login m_login;
  std::size_t m_number;
  std::mutex m_busy;
  std::unique_ptr<store::CalendarStore> m_store;
  accounts::Account m_account;
  store::MirrorId m_mirror = 0;
  std::string m_mine, m_theirs;  ///< keys of resources
};

}  // namespace orlocal::bench
