#include "bridge/call_frame.h"

#include "backend/legacy/ical_functions.h"
#include "backend/value_texts.h"
#include "bridge/plugin_error.h"
#include "bridge/state.h"

namespace orlocal {

CallFrame::CallFrame(const fmx::DataVect* arguments, fmx::Data* result) : m_result(result), m_arguments(arguments) {}

CallFrame::FreshErrors::FreshErrors() {
  g_llasterror = 0;
  // Only the older back end is told: the other keeps its last reason until the next one, and callers read it then.
  if (g_sharedFunctions != nullptr) { g_sharedFunctions->resetLastErrorString(); }
}

OptionalText CallFrame::word(std::uint32_t position) const {
  OptionalText text = this->text(position);
  if (text && !isPlainLowercase(*text)) { *text = lowercase(*text); }
  return text;
}

void CallFrame::clearErrors() {
  ClearError();
  g_llasterror = 0;
}

void CallFrame::finish(Outcome outcome) {
  if (g_llasterror != 0) {
    if (error != nullptr) { error->setError(static_cast<std::int32_t>(g_llasterror), 0, std::nullopt); }
    m_text.assign(kErrorText);
    setText(m_result, m_text);
  } else if (outcome) {
    m_number.assign(*outcome);
    setNumber(m_result, m_number);
  }
}

}  // namespace orlocal
