#pragma once

#include <filesystem>

namespace orlocal::host {

/// Makes messages those of the first of the user's languages (`preferredLanguages`) that there is a catalogue of:
/// `LANGUAGE/LC_MESSAGES/orlocal.mo` below `locale` beside the program, as it is built, or in the folder for such that
/// belongs to where it was installed. English, and languages without one, leave them as they are.
///
/// For the start of the program, before other threads: the process's locale for messages is set, and LANGUAGE in its
/// environment. Numbers, letters and times stay those of the "C" locale.
void speakLanguageOfUser(const std::filesystem::path& programFile);

}  // namespace orlocal::host
