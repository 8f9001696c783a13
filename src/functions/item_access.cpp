#include "bridge/call_frame.h"
#include "bridge/function_table.h"
#include "functions/back_end.h"

namespace orlocal {
namespace {

template <auto Method>
constexpr auto atIndex = [](auto& backEnd, const std::int32_t& index) { (backEnd.*Method)(index); };

constexpr KeywordRow<std::int32_t, void> kOpenAt[] = {
    {"calendar", atIndex<&EK::openCalendarAt>, atIndex<&Legacy::openCalendarAt>},
    // Solutions written for the current back end open lists on older systems, too, and expect success there.
    {"reminderlist", atIndex<&EK::openReminderListAt>, kNoCall},
    {"event", atIndex<&EK::openEventAt>, atIndex<&Legacy::openEventAt>},
    {"task", atIndex<&EK::openReminderAt>, atIndex<&Legacy::openTaskAt>},
    {"reminder", atIndex<&EK::openReminderAt>, atIndex<&Legacy::openTaskAt>},
    {"attendee", atIndex<&EK::openParticipantAt>, atIndex<&Legacy::openAttendeeAt>},
    {"alarm", atIndex<&EK::openAlarmAt>, kParameterNotSupported},
};

struct UidRequest {
  const OptionalText& uid;
  std::optional<Date> occurrence;
};

template <auto Method>
constexpr auto withUid = [](auto& backEnd, const UidRequest& request) { (backEnd.*Method)(request.uid); };
template <auto Method>
constexpr auto withUidAndOccurrence =
    [](auto& backEnd, const UidRequest& request) { (backEnd.*Method)(request.uid, request.occurrence); };

constexpr KeywordRow<UidRequest, void> kOpenWithUid[] = {
    {"calendar", withUid<&EK::openCalendarWithUID>, withUid<&Legacy::openCalendarWithUID>},
    {"reminderlist", withUid<&EK::openCalendarWithUID>, withUid<&Legacy::openCalendarWithUID>},
    {"event", withUidAndOccurrence<&EK::openEventWithUID>, withUidAndOccurrence<&Legacy::openEventWithUID>},
    {"task", withUid<&EK::openReminderWithUID>, withUid<&Legacy::openTaskWithUID>},
    {"reminder", withUid<&EK::openReminderWithUID>, withUid<&Legacy::openTaskWithUID>},
};

}  // namespace

fmx::ErrorCode Orlo_GetItemCountForType(std::int16_t, const fmx::ExprEnv*, const fmx::DataVect* arguments,
                                        fmx::Data* result) {
  CallFrame frame(arguments, result);
  const OptionalText type = frame.text(0);
  return frame.run([&]() -> CallFrame::Outcome {
    if (!type) { return kNothing; }
    return tellBackEnd([&](auto& backEnd) { return backEnd.getObjectCount(type); });
  });
}

fmx::ErrorCode Orlo_OpenItemAt(std::int16_t, const fmx::ExprEnv*, const fmx::DataVect* arguments, fmx::Data* result) {
  CallFrame frame(arguments, result);
  const OptionalText type = frame.text(0);
  const std::int32_t index = frame.number(1);
  return frame.run([&] {
    // No type at all opens a calendar: an absent keyword has always matched the first row.
    dispatch(kOpenAt, type ? std::string_view(*type) : kOpenAt[0].word, index);
    return kDone;
  });
}

fmx::ErrorCode Orlo_OpenItemWithUID(std::int16_t, const fmx::ExprEnv*, const fmx::DataVect* arguments,
                                    fmx::Data* result) {
  CallFrame frame(arguments, result);
  const OptionalText type = frame.text(0);
  const OptionalText uid = frame.text(1);
  const std::optional<Date> occurrence = frame.date(2);
  return frame.run([&] {
    if (type && uid) {
      dispatch(kOpenWithUid, *type, UidRequest{uid, occurrence});
    } else {
      g_llasterror = kInvalidParameterValue;
    }
    return kDone;
  });
}

fmx::ErrorCode Orlo_CalOpenCalendarWithTitle(std::int16_t, const fmx::ExprEnv*, const fmx::DataVect* arguments,
                                             fmx::Data* result) {
  CallFrame frame(arguments, result);
  const OptionalText title = frame.text(0);
  return frame.run([&] {
    if (title) {
      tellBackEnd([&](auto& backEnd) { return backEnd.openCalendarWithTitle(title); });
    } else {
      g_llasterror = kInvalidParameterValue;
    }
    return kDone;
  });
}

}  // namespace orlocal
