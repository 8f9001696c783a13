#include "base/whole_input.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>

#include <fmt/format.h>

#include "base/translation.h"

namespace orlocal {

Result<std::string> readWhole(std::istream& in, const std::string& name, std::size_t most) {
  std::string bytes;
  std::array<char, 1 << 16> piece{};
  if (in.good()) {
    errno = 0;  // else it says why the stream did not open
  }
  // Past the stream's own calls, what cannot be read would be an exception.
  while (in.read(piece.data(), piece.size()) || in.gcount() > 0) {
    bytes.append(piece.data(), static_cast<std::size_t>(in.gcount()));
    if (bytes.size() > most) {
      return failure(ErrorCode::kTooLarge, tr("{} is larger than {} MiB; split it", name, most >> 20U));
    }
  }
  // The standard input takes a failure for the end.
  const bool whole = in.eof() && !in.bad() && !(&in == &std::cin && std::ferror(stdin) != 0);
  if (whole) { return bytes; }
  return failure(ErrorCode::kIo,
                 tr("{} cannot be read: {}", name, errno != 0 ? std::strerror(errno) : tr("it is not open")));
}

Result<std::string> readWholeFile(const std::filesystem::path& file) {
  std::ifstream in(file, std::ios::binary);
  return readWhole(in, file.string());
}

}  // namespace orlocal
