#include "host/commands/transfer/archive.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include <fmt/format.h>
#include <zip.h>
#include <zlib.h>

#include "base/text.h"
#include "base/translation.h"
#include "base/try.h"

namespace orlocal::host {
namespace {

Failed damaged(const std::string& name, std::string_view why) {
  return failure(ErrorCode::kInvalid, tr("{} is damaged: {}; get it again", name, why));
}

/// How far an archive may expand.
Status checkSize(std::uint64_t expanded, std::uint64_t packed, const std::string& name, const ArchiveLimits& limits) {
  if (expanded > limits.expandedBytes) {
    return failure(ErrorCode::kTooLarge, tr("{} expands to more than {} MiB; unpack it and import its files", name,
                                            limits.expandedBytes >> 20U));
  }
  if (expanded > limits.freeBytes && expanded / limits.ratio > packed) {
    return failure(ErrorCode::kTooLarge,
                   tr("{} expands to more than {} times its size, as calendars do not; nothing in it was "
                      "imported",
                      name, limits.ratio));
  }
  return {};
}

struct CloseZip {
  void operator()(zip_t* archive) const { zip_discard(archive); }
};
struct CloseMember {
  void operator()(zip_file_t* member) const { zip_fclose(member); }
};
using Zip = std::unique_ptr<zip_t, CloseZip>;

Result<Zip> openedZip(std::string_view bytes, const std::string& name) {
  zip_error_t error;
  zip_error_init(&error);
  const auto failed = [&] {
    auto why = damaged(name, zip_error_strerror(&error));
    zip_error_fini(&error);
    return why;
  };
  zip_source_t* source = zip_source_buffer_create(bytes.data(), bytes.size(), 0, &error);
  if (source == nullptr) { return failed(); }
  Zip archive(zip_open_from_source(source, ZIP_RDONLY, &error));
  if (archive == nullptr) {
    zip_source_free(source);
    return failed();
  }
  zip_error_fini(&error);
  return archive;
}

struct Member {
  std::string name;
  std::uint64_t index = 0, size = 0;
};

/// Folders, what is hidden, and what the Finder adds to each file.
bool isPassedOver(std::string_view name) {
  const std::size_t slash = name.find_last_of('/');
  const std::string_view last = slash == std::string_view::npos ? name : name.substr(slash + 1);
  return last.empty() || last.front() == '.' || name.starts_with("__MACOSX/");
}

Result<std::vector<Member>> membersOf(zip_t& archive, std::uint64_t packed, const std::string& name,
                                      const ArchiveLimits& limits) {
  const auto count = static_cast<std::uint64_t>(std::max<zip_int64_t>(zip_get_num_entries(&archive, 0), 0));
  if (count > limits.members) {
    return failure(ErrorCode::kTooLarge,
                   tr("{} has more than {} files; unpack it and import its folder", name, limits.members));
  }
  std::vector<Member> members;
  std::uint64_t expanded = 0;
  for (std::uint64_t i = 0; i < count; ++i) {
    zip_stat_t about;
    zip_stat_init(&about);
    constexpr zip_uint64_t kWanted = ZIP_STAT_NAME | ZIP_STAT_SIZE;
    if (zip_stat_index(&archive, i, 0, &about) != 0 || (about.valid & kWanted) != kWanted) {
      return damaged(name, tr("its file {} has no name or no size", i + 1));
    }
    expanded = about.size > std::numeric_limits<std::uint64_t>::max() - expanded ? about.size : expanded + about.size;
    ORLOCAL_CHECK(checkSize(expanded, packed, name, limits));
    if (!isPassedOver(about.name)) { members.push_back({about.name, i, about.size}); }
  }
  std::ranges::stable_sort(members, {}, &Member::name);
  return members;
}

Result<std::string> contentOf(zip_t& archive, const Member& member, const std::string& name) {
  const std::unique_ptr<zip_file_t, CloseMember> file(zip_fopen_index(&archive, member.index, 0));
  if (file == nullptr) {
    const int code = zip_error_code_zip(zip_get_error(&archive));
    if (code == ZIP_ER_NOPASSWD || code == ZIP_ER_WRONGPASSWD) {
      return failure(ErrorCode::kUnsupported, tr("{} is encrypted; unpack it first", name));
    }
    return damaged(name, zip_strerror(&archive));
  }
  std::string bytes;
  constexpr std::size_t kPiece = std::size_t{1} << 16;
  for (;;) {
    const std::size_t before = bytes.size();
    bytes.resize(before + kPiece);
    const zip_int64_t count = zip_fread(file.get(), bytes.data() + before, kPiece);
    bytes.resize(before + static_cast<std::size_t>(std::max<zip_int64_t>(count, 0)));
    if (count < 0) { return damaged(name, zip_error_strerror(zip_file_get_error(file.get()))); }
    if (bytes.size() > member.size) { return damaged(name, tr("it is larger than its archive says")); }
    if (count == 0) { break; }
  }
  if (bytes.size() != member.size) { return damaged(name, tr("it is smaller than its archive says")); }
  return bytes;
}

/// zlib's state while a gzip file is read.
class Inflation {
 public:
  Inflation() { m_ready = inflateInit2(&m_stream, kGzipOnly) == Z_OK; }
  ~Inflation() { inflateEnd(&m_stream); }
  Inflation(const Inflation&) = delete;
  Inflation& operator=(const Inflation&) = delete;

  bool ready() const { return m_ready; }
  z_stream& stream() { return m_stream; }

 private:
  static constexpr int kGzipOnly = MAX_WBITS + 16;
  z_stream m_stream{};
  bool m_ready = false;
};

}  // namespace

Status visitZip(std::string_view bytes, const std::string& name, const ArchiveLimits& limits,
                const MemberVisitor& visit) {
  ORLOCAL_TRY(const Zip archive, openedZip(bytes, name));
  ORLOCAL_TRY(const auto members, membersOf(*archive, bytes.size(), name, limits));
  for (const Member& member : members) {
    if (!visit(member.name, contentOf(*archive, member, name + "/" + member.name))) { break; }
  }
  return {};
}

Result<std::string> expandedGzip(std::string_view bytes, const std::string& name, const ArchiveLimits& limits) {
  constexpr std::size_t kPiece = std::size_t{1} << 16;
  std::string text;
  std::string_view left = bytes;
  // Several files in one, as `cat a.gz b.gz` makes them, are their contents one after another.
  while (left.starts_with("\x1f\x8b")) {
    Inflation inflation;
    if (!inflation.ready()) { return failure(ErrorCode::kIo, tr("{} cannot be read: no memory", name)); }
    z_stream& stream = inflation.stream();
    for (int code = Z_OK; code != Z_STREAM_END;) {
      if (stream.avail_in == 0) {
        const std::size_t piece = std::min(left.size(), kPiece);
        if (piece == 0) { return damaged(name, tr("it ends early")); }
        // zlib never writes there.
        stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(left.data()));  // NOLINT
        stream.avail_in = static_cast<uInt>(piece);
        left.remove_prefix(piece);
      }
      const std::size_t before = text.size();
      text.resize(before + kPiece);
      stream.next_out = reinterpret_cast<Bytef*>(text.data() + before);  // NOLINT
      stream.avail_out = static_cast<uInt>(kPiece);
      code = inflate(&stream, Z_NO_FLUSH);
      text.resize(before + kPiece - stream.avail_out);
      if (code != Z_OK && code != Z_STREAM_END && code != Z_BUF_ERROR) {
        return damaged(name, stream.msg != nullptr ? stream.msg : tr("it cannot be unpacked"));
      }
      ORLOCAL_CHECK(checkSize(text.size(), bytes.size(), name, limits));
    }
    left = bytes.substr(bytes.size() - left.size() - stream.avail_in);
  }
  return text;
}

}  // namespace orlocal::host
