#include "durability/disk_image.h"

#include <algorithm>
#include <fstream>
#include <functional>
#include <random>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include "base/hash.h"

namespace orlocal::test {
namespace {

using Step = DiskTrace::Step;
using Kind = Step::Kind;

constexpr std::int64_t kSector = 512;

/// The files and entries while steps are laid on them.
class Disk {
 public:
  explicit Disk(const DiskTrace& trace)
      : m_entries(trace.entriesBefore()), m_folders(trace.foldersBefore()), m_contents(trace.contentsBefore()) {}

  void take(const Step& step) {
    switch (step.kind) {
      case Kind::kEntry:
        m_entries[step.path] = step.file;
        content(step.file);
        return;
      case Kind::kNoEntry:
        m_entries.erase(step.path);
        return;
      case Kind::kRename:
        m_entries.erase(step.path);
        m_entries[step.second] = step.file;
        content(step.file);
        return;
      case Kind::kFolder:
        m_folders.insert(step.path);
        return;
      case Kind::kWrite:
        write(step, 0, static_cast<std::int64_t>(step.bytes.size()));
        return;
      case Kind::kSize:
        content(step.file).resize(static_cast<std::size_t>(step.at));
        return;
      case Kind::kSync:
      case Kind::kSyncFolder:
        return;
    }
  }
  /// Bytes [from, to) of a write.
  void write(const Step& step, std::int64_t from, std::int64_t to) {
    std::string& bytes = content(step.file);
    const auto end = static_cast<std::size_t>(step.at + to);
    if (bytes.size() < end) { bytes.resize(end); }
    bytes.replace(static_cast<std::size_t>(step.at + from), static_cast<std::size_t>(to - from), step.bytes,
                  static_cast<std::size_t>(from), static_cast<std::size_t>(to - from));
  }
  /// What the file is as long as after the write, without its bytes.
  void lengthen(const Step& step) {
    std::string& bytes = content(step.file);
    bytes.resize(std::max(bytes.size(), static_cast<std::size_t>(step.at) + step.bytes.size()));
  }

  DiskImage image() const {
    DiskImage image;
    for (const std::string& folder : m_folders) {
      if (isReached(folderOf(folder))) { image.folders.insert(folder); }
    }
    for (const auto& [path, file] : m_entries) {
      // The log's index is memory that has a name.
      if (path.ends_with("-shm") || !isReached(folderOf(path))) { continue; }
      image.files[path] =
          static_cast<std::size_t>(file) < m_contents.size() ? m_contents[static_cast<std::size_t>(file)] : "";
    }
    return image;
  }

 private:
  std::string& content(int file) {
    if (m_contents.size() <= static_cast<std::size_t>(file)) { m_contents.resize(static_cast<std::size_t>(file) + 1); }
    return m_contents[static_cast<std::size_t>(file)];
  }
  bool isReached(const std::string& folder) const {
    return folder.empty() || (m_folders.contains(folder) && isReached(folderOf(folder)));
  }

  FolderEntries m_entries;
  std::set<std::string> m_folders;
  std::vector<std::string> m_contents;
};

bool isOfEntries(const Step& step) { return step.kind != Kind::kWrite && step.kind != Kind::kSize; }
bool isSync(const Step& step) { return step.kind == Kind::kSync || step.kind == Kind::kSyncFolder; }

bool brings(const Step& sync, const Step& step) {
  if (sync.kind == Kind::kSync) { return !isOfEntries(step) && step.file == sync.file; }
  return isOfEntries(step) && folderOf(step.kind == Kind::kRename ? step.second : step.path) == sync.path;
}

std::uint64_t mark(const DiskImage& image) {
  std::string all;
  const auto add = [&](const std::string& part) { all += std::to_string(std::hash<std::string>()(part)) + ' '; };
  for (const auto& [path, content] : image.files) {
    add(path);
    add(content);
  }
  for (const std::string& folder : image.folders) { add(folder); }
  return contentHash(all);
}

class PowerCuts {
 public:
  PowerCuts(const DiskTrace& trace, std::size_t samples, const std::function<bool(const PowerCut&)>& visit)
      : m_trace(trace), m_samples(samples), m_visit(visit), m_synced(trace) {}

  void run() {
    const auto& steps = m_trace.steps();
    for (m_taken = 0; m_taken <= steps.size() && !m_ended; ++m_taken) {
      cutHere();
      if (m_taken == steps.size()) { return; }
      const Step& step = steps[m_taken];
      if (isSync(step)) {
        sync(step);
      } else {
        m_pending.push_back(&step);
      }
    }
  }

 private:
  void sync(const Step& sync) {
    std::vector<const Step*> left;
    for (const Step* step : m_pending) {
      if (brings(sync, *step)) {
        m_synced.take(*step);
      } else {
        left.push_back(step);
      }
    }
    m_pending = std::move(left);
  }

  void cutHere() {
    const auto& steps = m_trace.steps();
    show("nothing", [](Disk&) {});
    show("everything", [&](Disk& disk) {
      for (const Step* step : m_pending) { disk.take(*step); }
    });
    if (m_taken == steps.size() || m_taken == m_trace.done() || isSync(steps[m_taken])) {
      for (std::size_t n = 1; n < m_pending.size(); ++n) {
        show("the first of it", [&](Disk& disk) {
          for (std::size_t i = 0; i < n; ++i) { disk.take(*m_pending[i]); }
        });
      }
    }
    show("entries without bytes", [&](Disk& disk) {
      for (const Step* step : m_pending) {
        if (isOfEntries(*step)) { disk.take(*step); }
      }
    });
    show("bytes without entries", [&](Disk& disk) {
      for (const Step* step : m_pending) {
        if (!isOfEntries(*step)) { disk.take(*step); }
      }
    });
    show("sizes without bytes", [&](Disk& disk) {
      for (const Step* step : m_pending) { step->kind == Kind::kWrite ? disk.lengthen(*step) : disk.take(*step); }
    });
    for (std::size_t sample = 0; sample < m_samples && !m_pending.empty(); ++sample) {
      show("some of it", [&](Disk& disk) { takeSome(disk, sample); });
    }
  }

  /// Entries come in their order, some of them; writes in any order, some sectors of them.
  void takeSome(Disk& disk, std::size_t sample) const {
    std::mt19937 random(static_cast<std::uint32_t>(m_taken * 1000 + sample));
    std::vector<const Step*> writes;
    for (const Step* step : m_pending) {
      if (!isOfEntries(*step)) {
        writes.push_back(step);
      } else if (random() % 4 != 0) {
        disk.take(*step);
      }
    }
    std::shuffle(writes.begin(), writes.end(), random);
    for (const Step* step : writes) {
      const auto dice = random() % 4;
      if (dice == 0) { continue; }
      if (dice == 1 || step->kind == Kind::kSize) {
        disk.take(*step);
        continue;
      }
      const auto end = static_cast<std::int64_t>(step->bytes.size());
      for (std::int64_t from = 0; from < end;) {
        // Sectors are the disk's, whatever the write began with.
        const std::int64_t to = std::min(end, (step->at + from) / kSector * kSector + kSector - step->at);
        if (random() % 2 != 0) { disk.write(*step, from, to); }
        from = to;
      }
    }
  }

  template <class Take>
  void show(const char* left, Take take) {
    if (m_ended) { return; }
    Disk disk = m_synced;
    take(disk);
    PowerCut cut;
    cut.image = disk.image();
    cut.done = m_taken >= m_trace.done();
    if (!m_shown.insert(mark(cut.image) * 2 + (cut.done ? 1 : 0)).second) { return; }
    cut.number = m_shown.size() - 1;
    cut.steps = m_taken;
    cut.left = left;
    m_ended = !m_visit(cut);
  }

  const DiskTrace& m_trace;
  std::size_t m_samples;
  const std::function<bool(const PowerCut&)>& m_visit;
  Disk m_synced;
  std::vector<const Step*> m_pending;
  std::size_t m_taken = 0;
  std::unordered_set<std::uint64_t> m_shown;
  bool m_ended = false;
};

}  // namespace

void DiskImage::writeTo(const std::filesystem::path& folder) const {
  // A folder sorts before what is in it.
  for (const std::string& each : folders) { std::filesystem::create_directory(folder / each); }
  for (const auto& [path, content] : files) { std::ofstream(folder / path, std::ios::binary) << content; }
}

void forEachPowerCut(const DiskTrace& trace, std::size_t samples, const std::function<bool(const PowerCut&)>& visit) {
  PowerCuts(trace, samples, visit).run();
}

}  // namespace orlocal::test
