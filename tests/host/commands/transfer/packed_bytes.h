#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include <zip.h>
#include <zlib.h>

namespace orlocal::host {

/// A zip archive of these files: name and content.
inline std::string zipped(const std::vector<std::pair<std::string, std::string>>& files) {
  zip_error_t error;
  zip_source_t* target = zip_source_buffer_create(nullptr, 0, 0, &error);
  zip_source_keep(target);
  zip_t* archive = zip_open_from_source(target, ZIP_TRUNCATE, &error);
  for (const auto& [name, content] : files) {
    zip_source_t* source = zip_source_buffer(archive, content.data(), content.size(), 0);
    zip_file_add(archive, name.c_str(), source, ZIP_FL_ENC_UTF_8);
  }
  zip_close(archive);
  zip_source_open(target);
  zip_source_seek(target, 0, SEEK_END);
  std::string bytes(static_cast<std::size_t>(zip_source_tell(target)), '\0');
  zip_source_seek(target, 0, SEEK_SET);
  zip_source_read(target, bytes.data(), bytes.size());
  zip_source_close(target);
  zip_source_free(target);
  return bytes;
}

/// A gzip file with this content.
inline std::string gzipped(const std::string& content) {
  z_stream stream{};
  deflateInit2(&stream, Z_BEST_COMPRESSION, Z_DEFLATED, MAX_WBITS + 16, 8, Z_DEFAULT_STRATEGY);
  std::string bytes(deflateBound(&stream, content.size()), '\0');
  std::string input = content;
  stream.next_in = reinterpret_cast<Bytef*>(input.data());
  stream.avail_in = static_cast<uInt>(input.size());
  stream.next_out = reinterpret_cast<Bytef*>(bytes.data());
  stream.avail_out = static_cast<uInt>(bytes.size());
  deflate(&stream, Z_FINISH);
  bytes.resize(bytes.size() - stream.avail_out);
  deflateEnd(&stream);
  return bytes;
}

}  // namespace orlocal::host
