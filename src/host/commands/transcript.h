#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <tl/expected.hpp>

namespace orlocal::host {

/// A calculation of a transcript and what it is to print.
struct Example {
  std::size_t line = 0;
  std::string calculation;
  std::vector<std::string> expected;
};

/// A command that runs before the first calculation: `import` or `import-contacts`, with its words.
struct Preparation {
  std::size_t line = 0;
  std::string command;
  std::vector<std::string> words;
};

/// What the lines that begin with `@` pin. What is absent is as for any other command.
struct TranscriptSettings {
  std::optional<std::string> store;  ///< `@store fresh` (a new one, thrown away at the end) or `@store FILE`
  std::optional<std::string> plugin;
  std::optional<std::string> systemMinor;
  std::optional<int> hostVersion;
  std::optional<std::string> timezone;
  std::optional<std::string> now;
  std::optional<std::string> language;
  std::vector<Preparation> preparations;  ///< `@import` and `@import-contacts`, in order
};

struct Transcript {
  TranscriptSettings settings;
  std::vector<Example> examples;
};

struct TranscriptError {
  std::size_t line = 0;
  std::string message;
};

/// A transcript is text:
///
///     @timezone Europe/Berlin                       settings, before the first calculation
///     @import work.ics --calendar Work
///     # A comment.
///     > Orlo_OpenItemAt( "event" ; 1 )              a calculation; it goes on while a bracket is open
///     0                                             the lines that it prints
///     > Orlo_GetProperty( "event" ; "uid" )
///     …-…                                           … stands for anything within a line
///     > Orlo_OpenItemAt( "event" ; )
///     ! 1:30: a value is expected here, not )       why a calculation or a call failed
///
/// What is expected ends at the next line that begins with `>`, `#` or `@`. Blank lines at its end are decoration, and
/// a result that is empty needs no line. A backslash at the beginning of an expected line, or before `…`, keeps the
/// next character from having its meaning.
///
/// In Markdown only what stands in fenced blocks marked `transcript` counts; a block's end ends what is expected.
tl::expected<Transcript, TranscriptError> parseTranscript(std::string_view text, bool markdown);

/// True when the printed line is what the expected one stands for.
bool matchesLine(std::string_view expected, std::string_view printed);

/// Line by line, with blank lines at the end of what is expected left out.
bool matchesLines(const std::vector<std::string>& expected, const std::vector<std::string>& printed);

}  // namespace orlocal::host
