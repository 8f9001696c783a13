#include "bridge/call_frame.h"
#include "bridge/function_table.h"
#include "functions/back_end.h"

// The back ends read the words for kinds and spans; these functions forward them as they were typed.

namespace orlocal {

fmx::ErrorCode Orlo_NewItem(std::int16_t, const fmx::ExprEnv*, const fmx::DataVect* arguments, fmx::Data* result) {
  CallFrame frame(arguments, result);
  const OptionalText type = frame.text(0);
  return frame.run([&] {
    if (!type) { return kNothing; }
    tellBackEnd([&](auto& backEnd) { return backEnd.newItem(type); });
    return kDone;
  });
}

fmx::ErrorCode Orlo_SaveItem(std::int16_t, const fmx::ExprEnv*, const fmx::DataVect* arguments, fmx::Data* result) {
  CallFrame frame(arguments, result);
  const OptionalText type = frame.text(0);
  const OptionalText span = frame.text(1);
  return frame.run([&] {
    if (!type) { return kNothing; }
    tellBackEnd([&](auto& backEnd) { return backEnd.saveItem(type, span); });
    return kDone;
  });
}

fmx::ErrorCode Orlo_RemoveItem(std::int16_t, const fmx::ExprEnv*, const fmx::DataVect* arguments, fmx::Data* result) {
  CallFrame frame(arguments, result);
  const OptionalText type = frame.text(0);
  const OptionalText uid = frame.text(1);
  const std::optional<Date> occurrence = frame.date(2);
  const OptionalText span = frame.text(3);
  return frame.run([&] {
    if (!type) { return kNothing; }
    tellBackEnd([&](auto& backEnd) { return backEnd.removeItem(type, uid, occurrence, span); });
    return kDone;
  });
}

}  // namespace orlocal
