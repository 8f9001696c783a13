#include "durability/faulty_files.h"

#include <string_view>
#include <utility>
#include <vector>

#include <sqlite3.h>

namespace orlocal::test {
namespace {

/// SQLite's own file stands behind it in the same piece of memory.
struct File {
  sqlite3_file base;
  const char* name;
  sqlite3_file* real() { return reinterpret_cast<sqlite3_file*>(this + 1); }
};

struct State {
  sqlite3_vfs* real = nullptr;
  sqlite3_vfs own = {};
  std::vector<FaultyFiles::Fault> faults;
  int failed = 0;
  int lastError = 0;
};

State& state() {
  static State only;
  return only;
}

File* mine(sqlite3_file* file) { return reinterpret_cast<File*>(file); }

/// The fault that this call meets; null when it works.
const FaultyFiles::Fault* met(FileCall call, const char* name) {
  for (FaultyFiles::Fault& fault : state().faults) {
    if (fault.call != call || fault.after < 0) continue;
    if (!fault.suffix.empty() && (name == nullptr || !std::string_view(name).ends_with(fault.suffix))) continue;
    if (fault.after > 0) {
      --fault.after;
      continue;
    }
    if (fault.once) fault.after = -1;
    ++state().failed;
    state().lastError = fault.error;
    return &fault;
  }
  return nullptr;
}

int write(sqlite3_file* file, const void* bytes, int count, sqlite3_int64 at) {
  sqlite3_file* real = mine(file)->real();
  if (const auto* fault = met(FileCall::kWrite, mine(file)->name)) {
    if (fault->cutShort) real->pMethods->xWrite(real, bytes, count / 2, at);
    return fault->error == ENOSPC ? SQLITE_FULL : SQLITE_IOERR_WRITE;
  }
  return real->pMethods->xWrite(real, bytes, count, at);
}
int truncate(sqlite3_file* file, sqlite3_int64 size) {
  if (met(FileCall::kTruncate, mine(file)->name) != nullptr) return SQLITE_IOERR_TRUNCATE;
  return mine(file)->real()->pMethods->xTruncate(mine(file)->real(), size);
}
int sync(sqlite3_file* file, int flags) {
  if (met(FileCall::kSync, mine(file)->name) != nullptr) return SQLITE_IOERR_FSYNC;
  return mine(file)->real()->pMethods->xSync(mine(file)->real(), flags);
}
int shmMap(sqlite3_file* file, int region, int size, int extend, void volatile** at) {
  sqlite3_file* real = mine(file)->real();
  // A region that is there needs no room.
  if (extend != 0 && met(FileCall::kSharedMemory, "-shm") != nullptr) return SQLITE_IOERR_SHMSIZE;
  return real->pMethods->xShmMap(real, region, size, extend, at);
}

// The rest goes on as it comes.
int close(sqlite3_file* file) { return mine(file)->real()->pMethods->xClose(mine(file)->real()); }
int read(sqlite3_file* file, void* bytes, int count, sqlite3_int64 at) {
  return mine(file)->real()->pMethods->xRead(mine(file)->real(), bytes, count, at);
}
int fileSize(sqlite3_file* file, sqlite3_int64* size) {
  return mine(file)->real()->pMethods->xFileSize(mine(file)->real(), size);
}
int lock(sqlite3_file* file, int level) { return mine(file)->real()->pMethods->xLock(mine(file)->real(), level); }
int unlock(sqlite3_file* file, int level) { return mine(file)->real()->pMethods->xUnlock(mine(file)->real(), level); }
int checkReserved(sqlite3_file* file, int* reserved) {
  return mine(file)->real()->pMethods->xCheckReservedLock(mine(file)->real(), reserved);
}
int fileControl(sqlite3_file* file, int what, void* argument) {
  return mine(file)->real()->pMethods->xFileControl(mine(file)->real(), what, argument);
}
int sectorSize(sqlite3_file* file) { return mine(file)->real()->pMethods->xSectorSize(mine(file)->real()); }
int traits(sqlite3_file* file) { return mine(file)->real()->pMethods->xDeviceCharacteristics(mine(file)->real()); }
int shmLock(sqlite3_file* file, int offset, int count, int flags) {
  return mine(file)->real()->pMethods->xShmLock(mine(file)->real(), offset, count, flags);
}
void shmBarrier(sqlite3_file* file) { mine(file)->real()->pMethods->xShmBarrier(mine(file)->real()); }
int shmUnmap(sqlite3_file* file, int remove) {
  return mine(file)->real()->pMethods->xShmUnmap(mine(file)->real(), remove);
}

constexpr sqlite3_io_methods kMethods = {2,       close,      read,          write,       truncate,   sync,   fileSize,
                                         lock,    unlock,     checkReserved, fileControl, sectorSize, traits, shmMap,
                                         shmLock, shmBarrier, shmUnmap,      nullptr,     nullptr};

int open(sqlite3_vfs*, const char* name, sqlite3_file* file, int flags, int* given) {
  file->pMethods = nullptr;
  mine(file)->name = name;
  if (met(FileCall::kOpen, name) != nullptr) return SQLITE_CANTOPEN;
  mine(file)->real()->pMethods = nullptr;
  const int result = state().real->xOpen(state().real, name, mine(file)->real(), flags, given);
  if (mine(file)->real()->pMethods != nullptr) file->pMethods = &kMethods;
  return result;
}

int lastError(sqlite3_vfs*, int, char*) { return state().lastError; }

}  // namespace

FaultyFiles::FaultyFiles() {
  State& all = state();
  all.real = sqlite3_vfs_find(nullptr);
  all.own = *all.real;
  all.own.zName = "faulty";
  all.own.szOsFile = static_cast<int>(sizeof(File)) + all.real->szOsFile;
  all.own.pNext = nullptr;
  all.own.xOpen = open;
  all.own.xGetLastError = lastError;
  all.failed = 0;
  all.faults.clear();
  sqlite3_vfs_register(&all.own, 1);
}

FaultyFiles::~FaultyFiles() {
  sqlite3_vfs_unregister(&state().own);
  sqlite3_vfs_register(state().real, 1);
}

void FaultyFiles::fail(Fault fault) { state().faults.push_back(std::move(fault)); }
void FaultyFiles::heal() { state().faults.clear(); }
int FaultyFiles::failed() const { return state().failed; }

}  // namespace orlocal::test
