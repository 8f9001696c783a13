#include "store/prepared_file.h"

#include <algorithm>
#include <future>
#include <utility>

#include "base/translation.h"

namespace orlocal::store {
namespace {

/// Groups of a piece that is read alone, among them the first of the file, which names the zones that most others need;
/// a thread is worth its start for as many. Then those of one that is read beside others: what a processor keeps close.
constexpr std::size_t kAlone = 256, kTogether = 1'024;

using Stretch = CalendarReader::Stretch;

/// Reads a few pieces at once, each in a thread, then what in them hangs on the pieces before, in order: so the file
/// means what it does when one thread reads it.
class Preparation {
 public:
  Preparation(CalendarReader reader, const ImportOptions& options) : m_reader(std::move(reader)), m_options(options) {
    m_reader.stopWhen(options.stop);
    m_made.problems = m_reader.problems();
  }

  Result<PreparedFile> run() {
    const std::size_t all = m_reader.size(), workers = std::max<std::size_t>(m_options.workers, 1);
    for (std::size_t begin = 0; begin < all;) {
      if (m_options.progress) { m_options.progress(begin, all); }
      const std::size_t left = all - begin;
      const std::size_t pieces = begin == 0 ? 1 : std::clamp<std::size_t>(left / kAlone, 1, workers);
      const std::size_t each = std::min(pieces == 1 ? kAlone : kTogether, (left + pieces - 1) / pieces);
      std::vector<Stretch> stretches = pieces > 1 ? readTogether(begin, each, pieces) : std::vector<Stretch>(1);
      for (Stretch& stretch : stretches) {
        stretch.end = std::max(stretch.end, begin);
        begin = std::min(all, begin + each);
        if (!finish(std::move(stretch), begin)) { return importWasStopped(); }
      }
    }
    m_made.calendars = m_reader.calendars();
    m_made.zones = m_reader.privateZones();
    m_made.endsEarly = m_reader.endsEarly();
    m_reader.nameItems(m_made.problems);
    return std::move(m_made);
  }

 private:
  /// Where no thread can be started, its part is read in this one.
  std::vector<Stretch> readTogether(std::size_t begin, std::size_t each, std::size_t pieces) const {
    const std::size_t all = m_reader.size(), end = std::min(all, begin + pieces * each);
    const auto read = [this, each, all](std::size_t from) {
      return m_reader.readAhead(from, std::min(all, from + each));
    };
    std::vector<std::future<Stretch>> others;
    for (std::size_t from = begin + each; from < end; from += each) { others.push_back(std::async(read, from)); }
    std::vector<Stretch> stretches;
    stretches.push_back(read(begin));
    for (std::future<Stretch>& other : others) { stretches.push_back(other.get()); }
    return stretches;
  }

  /// Reads what is left of a stretch up to `end`; false when it was stopped.
  bool finish(Stretch stretch, std::size_t end) {
    m_made.problems.append(std::move(stretch.problems));
    stretch.groups.reserve(stretch.groups.size() + end - stretch.end);
    for (std::size_t i = stretch.end; i < end; ++i) {
      ItemGroup group = m_reader.read(i, m_made.problems);
      if (isStopped(m_options)) { return false; }
      if (!group.empty()) { stretch.groups.push_back(std::move(group)); }
    }
    m_made.pieces.push_back(std::move(stretch.groups));
    return true;
  }

  CalendarReader m_reader;
  const ImportOptions& m_options;
  PreparedFile m_made;
};

}  // namespace

Result<PreparedFile> prepareFile(CalendarReader reader, const ImportOptions& options) {
  return Preparation(std::move(reader), options).run();
}

bool isStopped(const ImportOptions& options) { return options.stop != nullptr && options.stop->load(); }

Failed importWasStopped() {
  return failure(ErrorCode::kInterrupted, tr("the import was stopped; nothing was written"));
}

}  // namespace orlocal::store
