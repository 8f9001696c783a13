#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "host/calc/function_library.h"
#include "host/console/text_place.h"

namespace orlocal::host {

/// Something that can be completed to.
struct Candidate {
  std::string name;
  std::string prototype;  ///< what is shown for it
  bool opens = false;     ///< arguments follow in parentheses
};

/// What the completion key does.
struct Completion {
  std::string insertion;            ///< to put in at the cursor
  std::vector<Candidate> matching;  ///< to show, in order of their names
};

/// What a text at that place may be, as a calculation has it between its quotes.
using TextCandidates = std::function<std::vector<Candidate>(const TextPlace& place)>;

/// The keywords that the plug-in's functions take there.
std::vector<Candidate> keywordsFor(const TextPlace& place);

/// Functions of the language and of the library, and the session's variables.
std::vector<Candidate> candidatesFor(const calc::FunctionLibrary& library, const std::vector<std::string>& variables);

/// Completes the name that ends at the cursor: as far as all matching candidates agree, and with the opening
/// parenthesis when there is but one. Names match without case. After `Get (` only its words match. Without a name at
/// the cursor nothing does.
///
/// Within a text what `texts` gives for its place is completed, capitals being capitals, and the only match is closed.
Completion complete(std::string_view beforeCursor, const std::vector<Candidate>& candidates,
                    const TextCandidates& texts = keywordsFor);

}  // namespace orlocal::host
