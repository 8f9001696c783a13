#include "accounts/sync/sending.h"

#include <algorithm>
#include <utility>

#include <fmt/format.h>

#include "accounts/sync/merge.h"
#include "accounts/sync/taking_in.h"
#include "accounts/transport/url.h"
#include "base/translation.h"
#include "base/try.h"
#include "store/edits/item_writer.h"
#include "store/icalendar/item_text.h"
#include "store/remote_reader.h"

namespace orlocal::accounts {
namespace {

using store::ItemId;
using store::ItemWriter;
using store::Mirror;
using store::Resource;

/// So often somebody else may come between our look and our write of one item before it is left to the next sync.
constexpr int kMostTries = 3;

/// Names of new resources: what every server leaves as it is.
std::string nameFor(const store::Item& item) {
  std::string name = item.itemIdentifier;
  std::transform(name.begin(), name.end(), name.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
  return name + ".ics";
}

std::string inFolder(const std::string& folder, const std::string& name) {
  return folder.ends_with('/') ? folder + name : folder + "/" + name;
}

/// What the account cannot go on with: the next item would fare no better.
bool endsTheSync(Trouble trouble) {
  switch (trouble) {
    case Trouble::kForbidden:
    case Trouble::kNotFound:
    case Trouble::kClash:
    case Trouble::kPrecondition:
    case Trouble::kLocked:
    case Trouble::kTooLarge:
    case Trouble::kRefused:
    case Trouble::kUnsupported:
      return false;
    default:
      return true;
  }
}

}  // namespace

Sending::Sending(SyncContext& context, const std::vector<Mirror>& mirrors)
    : m_context(context), m_mirrors(mirrors), m_writes(context.server, context.account) {}

Answer<void> Sending::run() {
  ORLOCAL_STORE_TRY(const auto items, store::RemoteReader(m_context.store).unsent());
  Answer<void> outcome;
  std::size_t done = 0;
  for (const ItemId item : items) {
    if (m_context.stopped()) { outcome = refusal(Trouble::kInterrupted, tr("The sync was stopped.")); }
    if (!outcome) { break; }
    if (m_context.progress) { m_context.progress(fmt::format("sending {} of {}", ++done, items.size())); }
    outcome = one(item);
  }
  return outcome;
}

const Mirror* Sending::mirrorOf(store::CalendarId calendar) const {
  const auto found = std::find_if(m_mirrors.begin(), m_mirrors.end(),
                                  [&](const Mirror& mirror) { return mirror.calendar == calendar; });
  return found != m_mirrors.end() ? &*found : nullptr;
}

const Mirror* Sending::mirrorWith(store::MirrorId id) const {
  const auto found =
      std::find_if(m_mirrors.begin(), m_mirrors.end(), [&](const Mirror& mirror) { return mirror.id == id; });
  return found != m_mirrors.end() ? &*found : nullptr;
}

Answer<void> Sending::one(ItemId item) {
  for (int tries = 0; tries < kMostTries;) {
    ORLOCAL_TRY(Task task, plan(item));
    Answer<void> outcome;
    switch (task.kind) {
      case Task::Kind::kNothing:
      case Task::Kind::kLeave:
        return {};
      case Task::Kind::kCreate:
        outcome = create(task);
        break;
      case Task::Kind::kUpdate:
        outcome = update(task);
        break;
      case Task::Kind::kRemove:
        outcome = remove(task);
        break;
    }
    if (outcome && task.goesOn) { continue; }
    if (outcome) { return {}; }
    if (outcome.error().trouble != Trouble::kPrecondition) { return refused(task, outcome.error()); }
    ++tries;
    ORLOCAL_CHECK(takeInFirst(task));
  }
  // Somebody else is at it, again and again: the next sync finds it in the list of what is unsent.
  return {};
}

Answer<Sending::Task> Sending::plan(ItemId item) {
  ORLOCAL_STORE_TRY(const auto writer, m_context.startWriting());
  ORLOCAL_TRY(Task task, planned(*writer, item));
  if (task.kind == Task::Kind::kNothing) { ORLOCAL_STORE_CHECK(writer->remotes().forgetUnsent(item)); }
  if (task.kind != Task::Kind::kLeave) { ORLOCAL_STORE_CHECK(writer->commit()); }
  return task;
}

Answer<Sending::Task> Sending::planned(ItemWriter& writer, ItemId item) {
  Task task;
  task.item = item;
  ORLOCAL_STORE_TRY(const auto resource, writer.remotes().resourceOf(item));
  if (resource && resource->item) { task.item = *resource->item; }
  std::vector<ItemId> parts;
  if (resource) { ORLOCAL_STORE_TRY(parts, writer.remotes().parts(resource->id)); }
  ORLOCAL_STORE_TRY(auto mine, standing(writer, task.item, parts));
  const Mirror* here = mine ? mirrorOf(mine->item.main.calendar) : nullptr;
  const Mirror* there = resource ? mirrorWith(resource->mirror) : nullptr;
  if (mine) { task.title = mine->item.main.title.value_or(""); }

  if (resource && there == nullptr) {
    // Another account's: its own sync removes it there, and then it is new here.
    task.kind = Task::Kind::kLeave;
    return task;
  }
  if (resource && here != there) {
    task.mirror = there;
    task.resource = *resource;
    task.kind = Task::Kind::kRemove;
    task.goesOn = mine.has_value();
    return task;
  }
  if (resource) {
    task.mirror = there;
    task.resource = *resource;
    return plannedUpdate(writer, std::move(task), *mine);
  }
  if (here == nullptr) {
    if (!mine) { return task; }
    ORLOCAL_STORE_TRY(const auto all, writer.remotes().allMirrors());
    const bool anothers = std::any_of(
        all.begin(), all.end(), [&](const Mirror& mirror) { return mirror.calendar == mine->item.main.calendar; });
    task.kind = anothers ? Task::Kind::kLeave : Task::Kind::kNothing;
    return task;
  }
  ORLOCAL_STORE_TRY(const auto conflicts, writer.remotes().conflicts());
  const bool undecided = std::any_of(conflicts.begin(), conflicts.end(),
                                     [&](const store::Conflict& conflict) { return conflict.item == item; });
  if (undecided || here->url.empty()) {
    task.kind = Task::Kind::kLeave;
    return task;
  }
  task.kind = Task::Kind::kCreate;
  task.mirror = here;
  task.text = store::itemText(mine->item);
  task.resource.mirror = here->id;
  task.resource.url = inFolder(here->url, nameFor(mine->item.main));
  task.resource.key = comparablePath(task.resource.url);
  task.resource.item = task.item;
  task.resource.uid = mine->item.main.uid;
  task.resource.sent = task.text;
  ORLOCAL_STORE_CHECK(writer.remotes().put(task.resource));
  return task;
}

Answer<Sending::Task> Sending::plannedUpdate(ItemWriter& writer, Task task, const Standing& mine) {
  Resource& resource = task.resource;
  if (resource.text.empty()) {
    // It was to be made, and whether it was is not known.
    task.kind = Task::Kind::kCreate;
    task.text = store::itemText(mine.item);
    resource.sent = task.text;
    resource.trouble.reset();
    ORLOCAL_STORE_CHECK(writer.remotes().put(resource));
    return task;
  }
  if (mine.digest() == resource.digest) { return task; }
  const ServerText known = ServerText::read(resource.text, resource.key);
  if (!known.item()) {
    m_context.report.troubles.push_back(
        {task.mirror->url, task.title,
         tr("the server's own text of it cannot be read; the change made here stays here")});
    task.kind = Task::Kind::kLeave;
    return task;
  }
  if (!mine.cutOff.empty()) {
    task.cutApart = true;
    task.text = store::itemText(mine.item);
  } else {
    const ItemState state{resource.text, *known.item()};
    MergedItem merge = merged(&state, state, mine.item);
    if (!merge.differs) {
      resource.digest = mine.digest();
      ORLOCAL_STORE_CHECK(writer.remotes().put(resource));
      return task;
    }
    task.text = std::move(merge.text);
  }
  task.kind = Task::Kind::kUpdate;
  resource.sent = task.text;
  resource.trouble.reset();
  ORLOCAL_STORE_CHECK(writer.remotes().put(resource));
  return task;
}

Answer<void> Sending::create(Task& task) {
  auto written = m_writes.create(task.resource.url, task.text);
  if (written) { return wasWritten(task, *written); }
  const Trouble trouble = written.error().trouble;
  if (trouble != Trouble::kPrecondition && trouble != Trouble::kClash) { return Refusal(written.error()); }
  // The name is ours alone: an earlier try has come through. Or the server has its UID under another name.
  auto there = m_context.server.text(task.resource.url);
  if (there) { return TakingIn(m_context, *task.mirror).texts(std::span(&*there, 1)); }
  if (there.error().trouble != Trouble::kNotFound) { return Refusal(there.error()); }
  return refusal(Trouble::kClash, written.error().message, written.error().status);
}

Answer<void> Sending::update(Task& task) {
  ORLOCAL_TRY(const Written written, m_writes.update(task.resource.url, task.text, task.resource.etag));
  return wasWritten(task, written);
}

Answer<void> Sending::wasWritten(Task& task, const Written& written) {
  Resource& resource = task.resource;
  ORLOCAL_STORE_TRY(const auto writer, m_context.startWriting());
  resource.etag = written.etag;
  if (!written.url.empty()) {
    resource.url = written.url;
    resource.key = comparablePath(written.url);
  }
  ORLOCAL_STORE_CHECK(writer->remotes().put(resource));
  ORLOCAL_STORE_CHECK(writer->remotes().forgetUnsent(task.item));
  if (task.cutApart) {
    ORLOCAL_STORE_TRY(const auto parts, writer->remotes().parts(resource.id));
    ORLOCAL_STORE_CHECK(writer->remotes().setParts(resource.id, {}));
    for (const ItemId part : parts) { ORLOCAL_STORE_CHECK(writer->remotes().noteUnsent(part)); }
  }
  ORLOCAL_STORE_CHECK(writer->commit());
  ++m_context.report.sent;
  m_written.insert(task.mirror->id);
  return {};
}

Answer<void> Sending::remove(Task& task) {
  if (!task.resource.text.empty() || task.resource.sent) {
    auto removed = m_writes.remove(task.resource.url, task.resource.etag);
    if (!removed && removed.error().trouble != Trouble::kNotFound) { return removed; }
    if (removed) {
      ++m_context.report.removedThere;
    } else if (m_context.server.text(task.resource.url)) {
      // One answer is not believed: it is there, and the next sync tries again.
      task.goesOn = false;
      return {};
    }
  }
  ORLOCAL_STORE_TRY(const auto writer, m_context.startWriting());
  ORLOCAL_STORE_CHECK(writer->remotes().removeResource(task.resource.id));
  if (!task.goesOn) { ORLOCAL_STORE_CHECK(writer->remotes().forgetUnsent(task.item)); }
  ORLOCAL_STORE_CHECK(writer->commit());
  return {};
}

Answer<void> Sending::takeInFirst(const Task& task) {
  auto now = m_context.server.text(task.resource.url);
  TakingIn takingIn(m_context, *task.mirror);
  if (now) { return takingIn.texts(std::span(&*now, 1)); }
  if (now.error().trouble != Trouble::kNotFound) { return Refusal(now.error()); }
  return takingIn.missing(std::span(&task.resource.key, 1));
}

Answer<void> Sending::refused(Task& task, const ServerFailure& failure) {
  if (endsTheSync(failure.trouble)) { return Refusal(failure); }
  // One answer takes nothing away here: the item is asked for by itself.
  if (failure.trouble == Trouble::kNotFound) { return takeInFirst(task); }
  m_context.report.troubles.push_back({task.mirror->url, task.title, failure.message});
  if (failure.trouble == Trouble::kForbidden) { return TakingIn(m_context, *task.mirror).putBack(task.resource.key); }
  const bool clash = failure.trouble == Trouble::kClash;
  if (failure.trouble == Trouble::kLocked || (clash && task.kind != Task::Kind::kCreate)) { return {}; }
  ORLOCAL_STORE_TRY(const auto writer, m_context.startWriting());
  if (clash) {
    // The next look at the server shows under which name it has it; until then it stays unsent.
    ORLOCAL_STORE_CHECK(writer->remotes().removeResource(task.resource.id));
  } else {
    // It is tried again when it has changed.
    task.resource.sent.reset();
    task.resource.trouble = failure.message;
    ORLOCAL_STORE_CHECK(writer->remotes().put(task.resource));
    ORLOCAL_STORE_CHECK(writer->remotes().forgetUnsent(task.item));
  }
  ORLOCAL_STORE_CHECK(writer->commit());
  return {};
}

}  // namespace orlocal::accounts
