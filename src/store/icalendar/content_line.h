#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/text.h"

namespace orlocal::store {

/// One unfolded content line (RFC 5545, 3.1): NAME;PARAM=value;…:value. Views into the text it was split from.
struct ContentLine {
  std::string_view name;        ///< as written
  std::string_view parameters;  ///< ";PARAM=value…" as written, or empty
  std::string_view value;       ///< as written
  std::string_view text;        ///< the whole line
  int line = 0;                 ///< number of its first line in the file, from 1

  /// Compared without case.
  bool is(std::string_view wanted) const { return equalsNoCase(name, wanted); }
  /// The plain value of the first parameter of that name; none when absent.
  std::optional<std::string> parameter(std::string_view wanted) const;
};

/// One parameter as written: `text` is ";NAME=value".
struct ContentParameter {
  std::string_view name, value, text;

  /// Without quotes, with RFC 6868's "^n", "^^" and "^'" resolved.
  std::string plainValue() const;
};
/// Takes the next parameter off the front of `parameters`; false when there is none.
bool nextParameter(std::string_view& parameters, ContentParameter& parameter);

/// Splits one unfolded line; none when it is not a content line.
std::optional<ContentLine> splitContentLine(std::string_view text, int line);

/// Walks the content lines of a file's bytes: unfolds (before anything is decoded), takes any mix of CR and LF, skips
/// empty lines, reads what is not UTF-8 as Windows-1252. Views are valid until the next call of `next`.
class ContentLines {
 public:
  /// `allUtf8`: the bytes are known to be UTF-8, so that no line has to be looked at for that.
  explicit ContentLines(std::string_view bytes, int firstLine = 1, bool allUtf8 = false)
      : m_bytes(bytes), m_line(firstLine), m_allUtf8(allUtf8) {}

  /// False at the end. A line that is no content line comes with an empty name.
  bool next(ContentLine& line);
  /// Passes over lines up to one that may have one of these names (in capitals). What is passed over is not unfolded,
  /// decoded or split.
  void passOverTo(std::span<const std::string_view> names);
  /// Where the next line begins.
  std::size_t offset() const { return m_at; }
  int lineNumber() const { return m_line; }
  /// Whether the last line had to be read as Windows-1252.
  bool reencoded() const { return m_reencoded; }

 private:
  std::string_view physicalLine();
  bool continues();

  std::string_view m_bytes;
  std::size_t m_at = 0;
  // Where the next of each is, as far as it was looked for: looking anew for each line would cost the square of a file
  // that has none.
  std::size_t m_newline = 0, m_carriageReturn = 0, m_text = 0;
  int m_line;
  bool m_allUtf8;
  bool m_reencoded = false;
  std::string m_buffer, m_decoded;
};

/// Bytes that are not UTF-8 are read as Windows-1252.
std::string fromWindows1252(std::string_view bytes);

/// RFC 5545, 3.3.11. A backslash before anything else stays; control characters but tab and newline are left out.
std::string unescapeText(std::string_view value);
std::string escapeText(std::string_view text);
/// A parameter's value, quoted and written after RFC 6868 where it must be.
std::string parameterText(std::string_view value);

/// Appends the line folded at 75 bytes between characters, with CRLF.
void appendFolded(std::string& out, std::string_view line);

}  // namespace orlocal::store
