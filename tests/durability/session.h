#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "store/calendar_store.h"

namespace orlocal::test {

/// Somebody who works in a folder with a store, "calendar.db", and opens it when it is first needed.
class Session {
 public:
  explicit Session(std::filesystem::path folder) : m_folder(std::move(folder)) {}

  Result<store::CalendarStore*> store();
  bool isOpen() const { return m_store != nullptr; }
  void close();

  std::filesystem::path in(const char* name) const { return m_folder / name; }
  std::filesystem::path file() const { return in("calendar.db"); }
  const std::filesystem::path& folder() const { return m_folder; }
  store::StoreOptions options() const;

 private:
  std::filesystem::path m_folder;
  std::unique_ptr<store::CalendarStore> m_store;
};

/// Everything that anybody can see of the store, as a text that is the same for the same content: random identifiers
/// are left out. Where something cannot be read it has the sentence that says why.
std::string contentOf(store::CalendarStore& store);
/// The same of a closed store, of one in new folders below it, of copies and exports, and of what a restore kept; opens
/// them, and makes none where there is none.
std::string contentOf(const std::filesystem::path& folder);

/// The public row that has this title; null when there is none or it cannot be read.
std::shared_ptr<const store::Item> itemTitled(store::CalendarStore& store, std::string_view title);

/// The change that must always work after the trouble: an event titled "next".
Status saveNext(store::CalendarStore& store);

}  // namespace orlocal::test
