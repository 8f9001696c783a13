#include "host/console/line_source.h"

#include <istream>

namespace orlocal::host {

LineSource::Line StreamLines::read(const std::string&) {
  std::string text;
  if (!std::getline(m_in, text)) { return {}; }
  if (text.ends_with('\r')) { text.pop_back(); }
  return {Outcome::kLine, std::move(text)};
}

}  // namespace orlocal::host
