#include "accounts/sync/taking_in.h"

#include <algorithm>
#include <utility>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "accounts/sync/field_lines.h"
#include "accounts/sync/item_fields.h"
#include "accounts/sync/merge.h"
#include "accounts/transport/url.h"
#include "base/hash.h"
#include "base/try.h"
#include "store/icalendar/item_text.h"

namespace orlocal::accounts {
namespace {

using store::ItemId;
using store::ItemWriter;
using store::Resource;

/// When an item was last changed, as far as it says so.
std::optional<store::Moment> lastChange(const store::WholeItem& item) {
  return item.main.modified ? item.main.modified : item.main.stamped;
}

std::string titleOf(const store::WholeItem& item) { return item.main.title.value_or(""); }

}  // namespace

Answer<void> TakingIn::texts(std::span<const RemoteText> texts) {
  if (texts.empty()) { return {}; }
  ORLOCAL_STORE_TRY(const auto writer, m_context.startWriting());
  for (const RemoteText& text : texts) { ORLOCAL_CHECK(takeIn(*writer, text)); }
  ORLOCAL_STORE_CHECK(writer->commit());
  return {};
}

Answer<void> TakingIn::missing(std::span<const std::string> keys) {
  if (keys.empty()) { return {}; }
  ORLOCAL_STORE_TRY(const auto writer, m_context.startWriting());
  for (const std::string& key : keys) { ORLOCAL_CHECK(gone(*writer, key)); }
  ORLOCAL_STORE_CHECK(writer->commit());
  return {};
}

Answer<void> TakingIn::putBack(const std::string& key) {
  ORLOCAL_STORE_TRY(const auto writer, m_context.startWriting());
  ORLOCAL_STORE_TRY(const auto resource, writer->remotes().resource(m_mirror.id, key));
  if (!resource) { return {}; }
  const ServerText theirs = ServerText::read(resource->text, key);
  const RemoteText text{resource->url, resource->etag, resource->text};
  Arrival arrival{*writer, *resource, text, theirs, std::nullopt};
  ORLOCAL_CHECK(findMine(arrival));
  store::Conflict conflict{
      0, m_mirror.id, key, resource->item, "", std::string(kNotAllowed), std::nullopt, std::nullopt, {}};
  if (arrival.mine) {
    conflict.title = titleOf(arrival.mine->item);
    conflict.mine = store::itemText(arrival.mine->item);
  }
  ORLOCAL_STORE_CHECK(writer->remotes().forgetUnsent(resource->item.value_or(0)));
  if (theirs.item()) {
    if (!arrival.mine) { arrival.resource.item.reset(); }
    conflict.theirs = resource->text;
    ORLOCAL_CHECK(put(arrival, theirs));
    conflict.item = arrival.resource.item;
    if (conflict.title.empty()) { conflict.title = titleOf(*theirs.item()); }
  } else {
    // It never was there: it stays here, and is not sent before somebody has decided.
    ORLOCAL_STORE_CHECK(writer->remotes().removeResource(resource->id));
  }
  ORLOCAL_CHECK(addConflict(*writer, std::move(conflict)));
  ORLOCAL_CHECK(learnRights(*writer));
  ORLOCAL_STORE_CHECK(writer->commit());
  return {};
}

Answer<void> TakingIn::learnRights(ItemWriter& writer) {
  ORLOCAL_STORE_TRY(MirrorState state, MirrorState::ofText(m_mirror.state));
  if (state.rightsKnown) { return {}; }
  state.writable = false;
  store::Mirror mirror = m_mirror;
  mirror.state = state.text();
  ORLOCAL_STORE_CHECK(writer.remotes().put(mirror));
  ORLOCAL_STORE_TRY(auto calendar, writer.calendarWith(mirror.calendar));
  if (!calendar || calendar->readOnly) { return {}; }
  calendar->readOnly = true;
  ORLOCAL_STORE_CHECK(writer.updateCalendar(*calendar));
  return {};
}

Answer<void> TakingIn::takeIn(ItemWriter& writer, const RemoteText& text) {
  const std::string key = comparablePath(text.url);
  ORLOCAL_STORE_TRY(auto known, writer.remotes().resource(m_mirror.id, key));
  Resource resource = known.value_or(Resource());
  const bool sameText = known && known->text == text.text && !known->sent && !known->trouble;
  resource.mirror = m_mirror.id;
  resource.key = key;
  resource.url = text.url;
  resource.etag = text.etag;
  if (sameText) {
    ORLOCAL_STORE_CHECK(writer.remotes().put(resource));
    return {};
  }
  const ServerText theirs = ServerText::read(text.text, key);
  const bool own = known && known->sent && (known->etag.empty() || known->etag == text.etag);
  Arrival arrival{writer, std::move(resource), text, theirs, std::nullopt, own};
  if (!theirs.item()) { return keepAside(arrival, theirs.trouble()); }
  ORLOCAL_CHECK(findMine(arrival));
  if (arrival.resource.item && !arrival.mine) { return removedHere(arrival); }
  if (arrival.mine && arrival.mine->digest() != arrival.resource.digest) { return merge(arrival); }
  if (isOlder(arrival)) {
    ORLOCAL_CHECK(addConflict(writer, {0,
                                       m_mirror.id,
                                       key,
                                       arrival.resource.item,
                                       titleOf(arrival.mine->item),
                                       std::string(kPutBack),
                                       store::itemText(arrival.mine->item),
                                       text.text,
                                       {}}));
  }
  return takeAsTheirs(arrival);
}

Answer<void> TakingIn::findMine(Arrival& arrival) {
  Resource& resource = arrival.resource;
  ItemWriter& writer = arrival.writer;
  if (!resource.item) {
    // It may be here already: sent by a sync that was cut short, or imported.
    const store::Item& main = arrival.theirs.item()->main;
    ORLOCAL_STORE_TRY(const auto same, writer.find(m_mirror.calendar, main.kind, arrival.theirs.uid()));
    if (!same) { return {}; }
    ORLOCAL_STORE_TRY(const auto other, writer.remotes().resourceOf(*same));
    if (other) { return {}; }
    resource.item = same;
    resource.digest = 0;
  }
  ORLOCAL_STORE_TRY(const auto parts, writer.remotes().parts(resource.id));
  ORLOCAL_STORE_TRY(arrival.mine, standing(writer, *resource.item, parts));
  return {};
}

Answer<void> TakingIn::removedHere(Arrival& arrival) {
  Resource& resource = arrival.resource;
  const ServerText before = ServerText::read(resource.text, resource.key);
  const ServerText sent = ServerText::read(resource.sent.value_or(""), resource.key);
  const auto isTheirs = [&](const ServerText& known) {
    return known.item() && saysTheSame(*known.item(), *arrival.theirs.item());
  };
  if (isTheirs(before) || isTheirs(sent)) {
    // Nothing happened to it there but what we sent: it is still to be removed.
    resource.text = arrival.text.text;
    ORLOCAL_STORE_CHECK(arrival.writer.remotes().put(resource));
    return {};
  }
  resource.item.reset();
  ORLOCAL_CHECK(takeAsTheirs(arrival));
  return addConflict(arrival.writer, {0,
                                      m_mirror.id,
                                      resource.key,
                                      resource.item,
                                      titleOf(*arrival.theirs.item()),
                                      std::string(kRemoved),
                                      std::nullopt,
                                      arrival.text.text,
                                      {}});
}

Answer<void> TakingIn::merge(Arrival& arrival) {
  Resource& resource = arrival.resource;
  const ServerText before = ServerText::read(resource.text, resource.key);
  const ServerText sent = ServerText::read(resource.sent.value_or(""), resource.key);
  // What we sent and the server has is where both go on from: what was taken back here since is a change.
  const bool hasOurs = sent.item() && saysTheSame(*sent.item(), *arrival.theirs.item());
  const auto& base = before.item() && !hasOurs ? before.item() : sent.item();
  const bool cut = arrival.theirs.isCut() || !arrival.mine->cutOff.empty();
  if (cut && base && saysTheSame(*base, *arrival.theirs.item())) {
    resource.text = arrival.text.text;
    ORLOCAL_STORE_CHECK(arrival.writer.remotes().put(resource));
    return {};
  }
  const ItemState theirState{arrival.text.text, *arrival.theirs.item()};
  const ItemState baseState{"", base.value_or(store::WholeItem())};
  MergedItem merge =
      merged(base ? &baseState : nullptr, theirState, arrival.mine->item, sent.item() ? &*sent.item() : nullptr);
  if (cut) { merge = {"", false, {std::string(kCutOff)}}; }
  store::Conflict conflict{0,
                           m_mirror.id,
                           resource.key,
                           resource.item,
                           titleOf(arrival.mine->item),
                           fmt::format("{}", fmt::join(merge.conflicts, "\n")),
                           store::itemText(arrival.mine->item),
                           arrival.text.text,
                           {}};
  if (merge.differs) {
    const ServerText both = ServerText::read(merge.text, resource.key);
    ORLOCAL_CHECK(put(arrival, both.item() ? both : arrival.theirs));
    resource.text = arrival.text.text;
    resource.digest = 0;
    ORLOCAL_STORE_CHECK(arrival.writer.remotes().put(resource));
    ORLOCAL_STORE_CHECK(arrival.writer.remotes().noteUnsent(*resource.item));
  } else {
    ORLOCAL_CHECK(takeAsTheirs(arrival));
  }
  if (merge.conflicts.empty()) { return {}; }
  conflict.item = resource.item;
  return addConflict(arrival.writer, std::move(conflict));
}

Answer<void> TakingIn::takeAsTheirs(Arrival& arrival) {
  Resource& resource = arrival.resource;
  if (resource.sent) {
    const ServerText sent = ServerText::read(*resource.sent, resource.key);
    resource.ours = sent.item() && saysTheSame(*sent.item(), *arrival.theirs.item());
  } else {
    resource.ours = false;
  }
  return put(arrival, arrival.theirs);
}

Answer<void> TakingIn::put(Arrival& arrival, const ServerText& content) {
  Resource& resource = arrival.resource;
  ItemWriter& writer = arrival.writer;
  ORLOCAL_TRY(const auto uid, uidHere(arrival, content));
  std::vector<ItemId> before;
  if (resource.id != 0) { ORLOCAL_STORE_TRY(before, writer.remotes().parts(resource.id)); }
  if (resource.item) { before.push_back(*resource.item); }
  auto put = content.putInto(writer, m_mirror.calendar, uid);
  if (!put) {
    const auto code = put.error().code;
    const bool ofTheItem = code == ErrorCode::kInvalid || code == ErrorCode::kRefused || code == ErrorCode::kTooLarge;
    if (!ofTheItem) { return refusedByStore(put.error()); }
    return keepAside(arrival, put.error().message);
  }
  for (const ItemId item : before) {
    const bool stays = item == put->main || std::find(put->parts.begin(), put->parts.end(), item) != put->parts.end();
    if (!stays) { ORLOCAL_STORE_CHECK(writer.remove(item)); }
  }
  ORLOCAL_STORE_TRY(const auto now, standing(writer, put->main, put->parts));
  resource.item = put->main;
  resource.uid = content.uid();
  resource.digest = now ? now->digest() : 0;
  resource.text = arrival.text.text;
  resource.sent.reset();
  resource.trouble = content.trouble();
  ORLOCAL_STORE_CHECK(writer.remotes().put(resource));
  ORLOCAL_STORE_CHECK(writer.remotes().setParts(resource.id, put->parts));
  if (put->changed && !arrival.own) { ++m_context.report.received; }
  return {};
}

Answer<void> TakingIn::keepAside(Arrival& arrival, std::optional<std::string> trouble) {
  Resource& resource = arrival.resource;
  resource.text = arrival.text.text;
  resource.sent.reset();
  resource.trouble = std::move(trouble);
  if (resource.trouble) { m_context.report.troubles.push_back({m_mirror.url, resource.key, *resource.trouble}); }
  ORLOCAL_STORE_CHECK(arrival.writer.remotes().put(resource));
  return {};
}

Answer<std::optional<std::string>> TakingIn::uidHere(Arrival& arrival, const ServerText& content) {
  const store::Item& main = content.item()->main;
  ORLOCAL_STORE_TRY(const auto same, arrival.writer.find(m_mirror.calendar, main.kind, main.uid));
  if (same) {
    ORLOCAL_STORE_TRY(const auto owner, arrival.writer.remotes().resourceOf(*same));
    if (!owner || owner->key == arrival.resource.key) { return std::nullopt; }
    return std::optional(fmt::format("{}~{:08x}", main.uid, contentHash(arrival.resource.key) & 0xFFFFFFFFU));
  }
  return std::nullopt;
}

bool TakingIn::isOlder(const Arrival& arrival) const {
  if (!m_broken || !arrival.resource.ours || !arrival.mine || arrival.resource.text.empty()) { return false; }
  const auto theirs = lastChange(*arrival.theirs.item());
  const auto ours = lastChange(arrival.mine->item);
  return theirs && ours && *theirs < *ours;
}

Answer<void> TakingIn::gone(ItemWriter& writer, const std::string& key) {
  ORLOCAL_STORE_TRY(const auto resource, writer.remotes().resource(m_mirror.id, key));
  if (!resource) { return {}; }
  std::optional<Standing> mine;
  ORLOCAL_STORE_TRY(const auto parts, writer.remotes().parts(resource->id));
  if (resource->item) { ORLOCAL_STORE_TRY(mine, standing(writer, *resource->item, parts)); }
  ORLOCAL_STORE_CHECK(writer.remotes().removeResource(resource->id));
  if (!mine) { return {}; }
  if (resource->text.empty()) {
    // What was to be made there never came to be: it is sent again.
    ORLOCAL_STORE_CHECK(writer.remotes().noteUnsent(*resource->item));
    return {};
  }
  if (mine->digest() != resource->digest || (m_broken && resource->ours)) {
    return addConflict(writer, {0,
                                m_mirror.id,
                                key,
                                resource->item,
                                titleOf(mine->item),
                                std::string(kRemoved),
                                store::itemText(mine->item),
                                std::nullopt,
                                {}});
  }
  for (const ItemId part : parts) { ORLOCAL_STORE_CHECK(writer.remove(part)); }
  ORLOCAL_STORE_CHECK(writer.remove(*resource->item));
  ++m_context.report.removedHere;
  return {};
}

Answer<void> TakingIn::addConflict(ItemWriter& writer, store::Conflict conflict) {
  ORLOCAL_STORE_TRY(const auto known, writer.remotes().conflicts());
  for (const store::Conflict& other : known) {
    if (other.mirror == conflict.mirror && other.key == conflict.key && other.fields == conflict.fields &&
        other.mine == conflict.mine) {
      return {};
    }
  }
  conflict.made = m_context.clock.now();
  ORLOCAL_STORE_CHECK(writer.remotes().put(conflict));
  ++m_context.report.conflicts;
  return {};
}

}  // namespace orlocal::accounts
