#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/result.h"

namespace orlocal::host {

/// A step of a transcript and what it is to print.
struct Example {
  enum class Kind {
    kCalculation,
    kRegister,  ///< `@register`: `words` are a file and a script
    kOutside,   ///< `@outside`: `words` are a command and its words
    kTyped,     ///< `$ orlocal`: `words` are what follows
  };

  std::size_t line = 0;
  std::string calculation;  ///< or the directive or command, as it was written
  std::vector<std::string> expected;
  Kind kind = Kind::kCalculation;
  std::vector<std::string> words = {};
};

/// How an expected line begins that stands for a script that was started.
inline constexpr std::string_view kScriptLine = "! script ";

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
  TranscriptSettings settings;  ///< from the lines before the first step
  std::vector<Example> examples;
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
///     @register Solution "Calendar changed"         the plug-in is to start this script when the calendars change
///     @outside import away.ics --calendar Work      another process does this: any command of the program
///     ! script Solution / Calendar changed: New …   a script that the plug-in started meanwhile, one a line
///     $ orlocal agenda --from 2026-11-02            what somebody types: any command of the program
///     Nothing is planned …                          what it prints, errors too
///     [1]                                           how it ends, unless that is 0
///
/// Words of a line that begins with `@` are apart by blanks; double or single quotes keep blanks in a word, as in
/// `@outside eval 'Orlo_NewItem( "event" )' 'Orlo_SaveItem( "event" ; "" )'`. Scripts that are started while a
/// calculation runs stand after its result. What another process prints does not matter, unless it fails.
///
/// A typed command runs beside the transcript, reads nothing, and has 80 columns and no colours. `$FOLDER` in its words
/// is a folder that is gone at the end.
///
/// What is expected ends at the next line that begins with `>`, `#`, `@` or `$ `. Blank lines at its end are
/// decoration, and a result that is empty needs no line. A backslash at the beginning of an expected line, or before
/// `…`, keeps the next character from having its meaning.
///
/// In Markdown only what stands in fenced blocks marked `transcript` counts; a block's end ends what is expected.
///
/// A failure's place is a line.
Result<Transcript> parseTranscript(std::string_view text, bool markdown);

}  // namespace orlocal::host
