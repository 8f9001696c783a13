#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "backend/error_codes.h"
#include "backend/eventkit/ical_ek_functions.h"
#include "backend/keyword_table.h"
#include "backend/legacy/ical_functions.h"
#include "bridge/state.h"

namespace orlocal {

// Short names for the columns of the tables.
using EK = iCalEKFunctions;
using Legacy = iCalFunctions;

/// Sends a message to the back end in use, in the words of that one; gives the answer, or a default one when no back
/// end is there.
template <class EkMessage, class LegacyMessage>
auto tellBackEnd(const EkMessage& ekMessage, const LegacyMessage& legacyMessage) {
  using Answer = decltype(ekMessage(*g_sharedEKFunctions));
  if (g_bUseEK) { return g_sharedEKFunctions != nullptr ? ekMessage(*g_sharedEKFunctions) : Answer(); }
  return g_sharedFunctions != nullptr ? legacyMessage(*g_sharedFunctions) : Answer();
}

/// The same where both back ends know the message by one name.
template <class Message>
auto tellBackEnd(const Message& message) {
  return tellBackEnd(message, message);
}

/// In a keyword table: this back end is not called, and that counts as success.
struct NoCall {};
inline constexpr NoCall kNoCall;

/// What a keyword makes one back end do: answer a message, fail with a code, or nothing at all.
template <class BackEnd, class Request, class Answer>
class Action {
 public:
  using Message = Answer (*)(BackEnd&, const Request&);

  template <class Callable>
  requires std::convertible_to<Callable, Message>
  constexpr Action(Callable message) : m_message(message) {}
  constexpr Action(std::int64_t failure) : m_failure(failure) {}
  constexpr Action(NoCall) {}

  Answer perform(BackEnd* backEnd, const Request& request) const {
    if (m_failure != 0) { g_llasterror = m_failure; }
    if (m_message == nullptr || backEnd == nullptr) { return Answer(); }
    return m_message(*backEnd, request);
  }

 private:
  Message m_message = nullptr;
  std::int64_t m_failure = 0;
};

template <class Request, class Answer>
struct KeywordRow {
  std::string_view word;  ///< lower-case
  Action<iCalEKFunctions, Request, Answer> eventKit;
  Action<iCalFunctions, Request, Answer> legacy;
};

/// Does what the row with `keyword`, in any case, says for the back end in use. Code -4 when no row has it.
template <class Request, class Answer, std::size_t Size>
Answer dispatch(const KeywordRow<Request, Answer> (&table)[Size], std::string_view keyword, const Request& request) {
  if (const auto* row = rowForAnyCase(table, keyword)) {
    return g_bUseEK ? row->eventKit.perform(g_sharedEKFunctions, request)
                    : row->legacy.perform(g_sharedFunctions, request);
  }
  g_llasterror = kInvalidParameterValue;
  return Answer();
}

}  // namespace orlocal
