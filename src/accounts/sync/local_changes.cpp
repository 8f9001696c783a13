#include "accounts/sync/local_changes.h"

#include <unordered_map>
#include <unordered_set>

#include "accounts/sync/server_text.h"
#include "base/try.h"
#include "store/edits/item_writer.h"
#include "store/remote_reader.h"

namespace orlocal::accounts {
namespace {

using store::ItemId;
using store::ItemWriter;

/// The place in the log is written only now and then where nothing was noted: each writing is a commit.
constexpr std::int64_t kRowsUnwritten = 1'000;

class Noting {
 public:
  Noting(ItemWriter& writer, const std::vector<store::Mirror>& mirrors) : m_writer(writer), m_mirrors(mirrors) {
    for (const store::Mirror& mirror : mirrors) { m_mirrored.emplace(mirror.calendar, mirror.id); }
  }

  /// The item, when a server has another version of it, or should have it.
  Status note(ItemId item) {
    ORLOCAL_TRY(const auto resource, m_writer.remotes().resourceOf(item));
    if (!resource) {
      ORLOCAL_TRY(const auto whole, m_writer.read(item));
      if (!whole || !m_mirrored.contains(whole->main.calendar)) { return {}; }
    } else if (resource->item) {
      // The log has what a sync took in, too.
      ORLOCAL_TRY(const auto parts, m_writer.remotes().parts(resource->id));
      ORLOCAL_TRY(const auto now, standing(m_writer, *resource->item, parts));
      const auto mirror = now ? m_mirrored.find(now->item.main.calendar) : m_mirrored.end();
      const bool stayed = mirror != m_mirrored.end() && mirror->second == resource->mirror;
      if (stayed && now->digest() == resource->digest) { return {}; }
    }
    return m_writer.remotes().noteUnsent(item);
  }

  /// Where the log does not tell: whatever differs from what was agreed on.
  Status noteAll(store::CalendarStore& store) {
    for (const store::Mirror& mirror : m_mirrors) {
      std::unordered_set<ItemId> known;
      ORLOCAL_TRY(const auto resources, m_writer.remotes().resources(mirror.id));
      for (const store::Resource& resource : resources) {
        if (!resource.item) { continue; }
        ORLOCAL_TRY(const auto parts, m_writer.remotes().parts(resource.id));
        known.insert(*resource.item);
        known.insert(parts.begin(), parts.end());
        ORLOCAL_TRY(const auto now, standing(m_writer, *resource.item, parts));
        const bool stayed = now && now->item.main.calendar == mirror.calendar;
        if (!stayed || now->digest() != resource.digest) {
          ORLOCAL_CHECK(m_writer.remotes().noteUnsent(*resource.item));
        }
      }
      std::vector<ItemId> others;
      ORLOCAL_CHECK(store.forEachItem(mirror.calendar, [&](const store::Item& main, const std::vector<store::Item>&) {
        if (!known.contains(main.id)) { others.push_back(main.id); }
        return Status();
      }));
      for (const ItemId item : others) { ORLOCAL_CHECK(m_writer.remotes().noteUnsent(item)); }
    }
    return {};
  }

 private:
  ItemWriter& m_writer;
  const std::vector<store::Mirror>& m_mirrors;
  std::unordered_map<store::CalendarId, store::MirrorId> m_mirrored;
};

}  // namespace

Status noteLocalChanges(store::CalendarStore& store) {
  store::RemoteReader reader(store);
  ORLOCAL_TRY(const std::int64_t notedUpTo, reader.notedUpTo());
  ORLOCAL_TRY(const store::TouchedItems touched, store.touchedSince(notedUpTo));
  if (touched.upTo == notedUpTo) { return {}; }
  ORLOCAL_TRY(const auto mirrors, reader.allMirrors());
  const bool nothing = mirrors.empty() || (touched.complete && touched.items.empty());
  if (nothing && touched.upTo < notedUpTo + kRowsUnwritten) { return {}; }
  ORLOCAL_TRY(const auto writer, store.startWriting());
  Noting noting(*writer, mirrors);
  if (!touched.complete && !mirrors.empty()) {
    ORLOCAL_CHECK(noting.noteAll(store));
  } else if (!nothing) {
    for (const ItemId item : touched.items) { ORLOCAL_CHECK(noting.note(item)); }
  }
  ORLOCAL_CHECK(writer->remotes().setNotedUpTo(touched.upTo));
  return writer->commit();
}

}  // namespace orlocal::accounts
