#include "durability/troubles.h"

#include <array>
#include <cerrno>

namespace orlocal::test {
namespace {

struct Fault {
  const char* name;
  FileCall call;
  int error;
  bool cutShort = false;
  bool mustGoOn = false;
};

constexpr Fault kFaults[] = {
    {"open, too many files", FileCall::kOpen, EMFILE},
    {"open, no room", FileCall::kOpen, ENOSPC},
    {"read, broken disk", FileCall::kRead, EIO},
    {"read in pieces", FileCall::kRead, 0, true, true},
    {"read interrupted", FileCall::kRead, EINTR, false, true},
    {"write, no room", FileCall::kWrite, ENOSPC},
    {"write in part, then no room", FileCall::kWrite, ENOSPC, true},
    {"write, broken disk", FileCall::kWrite, EIO},
    {"write in pieces", FileCall::kWrite, 0, true, true},
    {"write interrupted", FileCall::kWrite, EINTR, false, true},
    {"sync, broken disk", FileCall::kSync, EIO},
    {"truncate, broken disk", FileCall::kTruncate, EIO},
    {"rename, broken disk", FileCall::kRename, EIO},
    {"remove, broken disk", FileCall::kRemove, EIO},
    {"make a folder, no room", FileCall::kMakeFolder, ENOSPC},
    {"look, broken disk", FileCall::kLook, EIO},
    {"map, no memory", FileCall::kMap, ENOMEM},
    {"lock, broken disk", FileCall::kLock, EIO},
};

struct Time {
  const char* name;
  Trouble::Lasting lasting;
};
constexpr Time kTimes[] = {{"once", Trouble::Lasting::kOnce},
                           {"until it was told", Trouble::Lasting::kUntilTold},
                           {"until the store was closed", Trouble::Lasting::kUntilClosed}};

constexpr std::array<const char*, kFileCallKinds> kColumns = {"open",   "read",   "write", "sync", "truncate", "rename",
                                                              "remove", "folder", "look",  "map",  "lock"};

std::vector<Trouble> all() {
  std::vector<Trouble> list;
  for (const Fault& fault : kFaults) {
    for (const Time& time : kTimes) {
      // A call that is always interrupted never ends, whoever makes it; for locks SQLite waits half a minute.
      const bool endless = fault.error == EINTR || fault.call == FileCall::kLock;
      if (endless && time.lasting != Trouble::Lasting::kOnce) { continue; }
      list.push_back({.name = std::string(fault.name) + ", " + time.name,
                      .call = fault.call,
                      .error = fault.error,
                      .cutShort = fault.cutShort,
                      .lasting = time.lasting,
                      .mustGoOn = fault.mustGoOn});
    }
  }
  list.push_back({.name = "killed", .sort = Trouble::Sort::kDeath});
  list.push_back({.name = "killed in a write", .sort = Trouble::Sort::kDeathInWrite});
  list.push_back({.name = "power cut", .sort = Trouble::Sort::kPowerCut});
  return list;
}

}  // namespace

const std::vector<Trouble>& troubles() {
  static const std::vector<Trouble> list = all();
  return list;
}

const char* columnOf(const Trouble& trouble) {
  switch (trouble.sort) {
    case Trouble::Sort::kFailingCalls:
      return kColumns.at(static_cast<std::size_t>(trouble.call));
    case Trouble::Sort::kDeath:
    case Trouble::Sort::kDeathInWrite:
      return "killed";
    case Trouble::Sort::kPowerCut:
      break;
  }
  return "cut";
}

}  // namespace orlocal::test
