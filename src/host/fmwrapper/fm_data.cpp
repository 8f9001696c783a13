// Data and DataVect.
#include "host/fmwrapper/handles.h"

namespace fmx {

using namespace orlocal::host;

namespace {

NativeType nativeTypeOf(std::int32_t type) {
  if (type < kInvalid || type > kBoolean) { throw Misuse{}; }
  return static_cast<NativeType>(type);
}

/// Sets a value of its own type, then turns it into the type that was asked for.
template <class Set>
ErrorCode setAs(void* self, std::int32_t nativeType, Set set) {
  Value& value = selfOf<Data>(self);
  const NativeType wanted = nativeTypeOf(nativeType);
  set(value);
  return value.convertTo(wanted) ? ErrorCode{0} : Registry::kRefused;
}

const Value& elementOf(const void* self, std::uint32_t position) {
  const std::vector<Value>& values = selfOf<DataVect>(self);
  if (position >= values.size()) { throw Misuse{}; }
  return values[position];
}

}  // namespace

FM_FUNCTION Data* FM_Data_Constructor1(Exception* x) {
  return guarded(x, [] { return makeHandle<Data>(); });
}
FM_FUNCTION bool FM_Data_IsEmpty(const void* self, Exception* x) {
  return guarded(x, [&] { return selfOf<Data>(self).isEmpty(); });
}
FM_FUNCTION bool FM_Data_IsValid(const void* self, Exception* x) {
  return guarded(x, [&] { return selfOf<Data>(self).isValid(); });
}
FM_FUNCTION bool FM_Data_IsFindRequest(const void* self, Exception* x) {
  return guarded(x, [&] {
    // Our host has no find mode.
    selfOf<Data>(self);
    return false;
  });
}
FM_FUNCTION void FM_Data_Clear(void* self, std::int32_t newNativeType, Exception* x) {
  guarded(x, [&] { selfOf<Data>(self).clear(nativeTypeOf(newNativeType)); });
}
FM_FUNCTION const Text* FM_Data_GetAsText(const void* self, Exception* x) {
  return guarded(x, [&] { return handleOf<Text>(selfOf<Data>(self).asText()); });
}
FM_FUNCTION const FixPt* FM_Data_GetAsNumber(const void* self, Exception* x) {
  return guarded(x, [&] { return handleOf<FixPt>(selfOf<Data>(self).asNumber()); });
}
FM_FUNCTION const DateTime* FM_Data_GetAsDate(const void* self, Exception* x) {
  return guarded(x, [&] { return handleOf<DateTime>(selfOf<Data>(self).asDate()); });
}
FM_FUNCTION const DateTime* FM_Data_GetAsTime(const void* self, Exception* x) {
  return guarded(x, [&] { return handleOf<DateTime>(selfOf<Data>(self).asTime()); });
}
FM_FUNCTION const DateTime* FM_Data_GetAsTimeStamp(const void* self, Exception* x) {
  return guarded(x, [&] { return handleOf<DateTime>(selfOf<Data>(self).asTimestamp()); });
}
FM_FUNCTION bool FM_Data_GetAsBoolean(const void* self, Exception* x) {
  return guarded(x, [&] { return selfOf<Data>(self).asBoolean(); });
}
FM_FUNCTION const BinaryData* FM_Data_GetBinaryData(const void* self, Exception* x) {
  return guarded(x, [&] { return handleOf<BinaryData>(selfOf<Data>(self).asBinary()); });
}
FM_FUNCTION const Locale* FM_Data_GetLocale(const void* self, Exception* x) {
  return guarded(x, [&] { return handleOf<Locale>(selfOf<Data>(self).locale()); });
}
FM_FUNCTION std::int32_t FM_Data_GetNativeType(const void* self, Exception* x) {
  return guarded(x, [&] { return static_cast<std::int32_t>(selfOf<Data>(self).type()); });
}
FM_FUNCTION void FM_Data_ConvertData(void* self, std::int32_t nativeType, Exception* x) {
  guarded(x, [&] { selfOf<Data>(self).convertTo(nativeTypeOf(nativeType)); });
}
FM_FUNCTION ErrorCode FM_Data_SetAsText(void* self, const Text* textData, const Locale* sourceLocale,
                                        std::int32_t nativeType, Exception* x) {
  return guarded(x, [&] {
    const std::u16string& text = of(textData);
    const auto locale = of(sourceLocale);
    return setAs(self, nativeType, [&](Value& value) {
      value.setText(text);
      value.setLocale(locale);
    });
  });
}
FM_FUNCTION void FM_Data_SetAsNumber(void* self, const FixPt* numericData, std::int32_t nativeType, Exception* x) {
  guarded(x, [&] { setAs(self, nativeType, [&](Value& value) { value.setNumber(of(numericData)); }); });
}
FM_FUNCTION void FM_Data_SetAsDate(void* self, const DateTime* dateData, std::int32_t nativeType, Exception* x) {
  guarded(x, [&] { setAs(self, nativeType, [&](Value& value) { value.setDate(of(dateData)); }); });
}
FM_FUNCTION void FM_Data_SetAsTime(void* self, const DateTime* timeData, std::int32_t nativeType, Exception* x) {
  guarded(x, [&] { setAs(self, nativeType, [&](Value& value) { value.setTime(of(timeData)); }); });
}
FM_FUNCTION void FM_Data_SetAsTimeStamp(void* self, const DateTime* timeStampData, std::int32_t nativeType,
                                        Exception* x) {
  guarded(x, [&] { setAs(self, nativeType, [&](Value& value) { value.setTimestamp(of(timeStampData)); }); });
}
FM_FUNCTION void FM_Data_SetDateTime(void* self, const DateTime* dateTimeData, std::int32_t dateTimeType,
                                     std::int32_t nativeType, Exception* x) {
  guarded(x, [&] {
    const auto& dateTime = of(dateTimeData);
    setAs(self, nativeType, [&](Value& value) {
      switch (dateTimeType) {
        case kDate:
          return value.setDate(dateTime);
        case kTime:
          return value.setTime(dateTime);
        case kTimeStamp:
          return value.setTimestamp(dateTime);
        default:
          throw Misuse{};
      }
    });
  });
}
FM_FUNCTION void FM_Data_SetBinaryData(void* self, const BinaryData* binaryData, bool forceBinaryNativeType,
                                       Exception* x) {
  guarded(x, [&] {
    of(binaryData);
    Value& value = selfOf<Data>(self);
    value.clear(forceBinaryNativeType ? kBinary : value.type());
  });
}
FM_FUNCTION void FM_Data_Delete(void* self, Exception*) { deleteHandle<Data>(self); }

FM_FUNCTION DataVect* FM_DataVect_Constructor1(Exception* x) {
  return guarded(x, [] { return makeHandle<DataVect>(); });
}
FM_FUNCTION std::uint32_t FM_DataVect_Size(const void* self, Exception* x) {
  return guarded(x, [&] { return static_cast<std::uint32_t>(selfOf<DataVect>(self).size()); });
}
FM_FUNCTION void FM_DataVect_Clear(void* self, Exception* x) {
  guarded(x, [&] { selfOf<DataVect>(self).clear(); });
}
FM_FUNCTION bool FM_DataVect_IsEmpty(const void* self, Exception* x) {
  return guarded(x, [&] { return selfOf<DataVect>(self).empty(); });
}
FM_FUNCTION void FM_DataVect_PushBack(void* self, const Data* data, Exception* x) {
  guarded(x, [&] { selfOf<DataVect>(self).push_back(of(data)); });
}
FM_FUNCTION Data* FM_DataVect_PopBack(void* self, Exception* x) {
  return guarded(x, [&] {
    std::vector<Value>& values = selfOf<DataVect>(self);
    if (values.empty()) { throw Misuse{}; }
    // What leaves the vector is the caller's to delete, as nothing else holds it any more.
    Data* last = makeHandle<Data>(std::move(values.back()));
    values.pop_back();
    return last;
  });
}
FM_FUNCTION const Data* FM_DataVect_At(const void* self, std::uint32_t position, Exception* x) {
  return guarded(x, [&] { return handleOf<Data>(elementOf(self, position)); });
}
FM_FUNCTION const Text* FM_DataVect_AtAsText(const void* self, std::uint32_t position, Exception* x) {
  return guarded(x, [&] { return handleOf<Text>(elementOf(self, position).asText()); });
}
FM_FUNCTION const FixPt* FM_DataVect_AtAsNumber(const void* self, std::uint32_t position, Exception* x) {
  return guarded(x, [&] { return handleOf<FixPt>(elementOf(self, position).asNumber()); });
}
FM_FUNCTION const DateTime* FM_DataVect_AtAsDate(const void* self, std::uint32_t position, Exception* x) {
  return guarded(x, [&] { return handleOf<DateTime>(elementOf(self, position).asDate()); });
}
FM_FUNCTION const DateTime* FM_DataVect_AtAsTime(const void* self, std::uint32_t position, Exception* x) {
  return guarded(x, [&] { return handleOf<DateTime>(elementOf(self, position).asTime()); });
}
FM_FUNCTION const DateTime* FM_DataVect_AtAsTimeStamp(const void* self, std::uint32_t position, Exception* x) {
  return guarded(x, [&] { return handleOf<DateTime>(elementOf(self, position).asTimestamp()); });
}
FM_FUNCTION bool FM_DataVect_AtAsBoolean(const void* self, std::uint32_t position, Exception* x) {
  return guarded(x, [&] { return elementOf(self, position).asBoolean(); });
}
FM_FUNCTION const BinaryData* FM_DataVect_AtAsBinaryData(const void* self, std::uint32_t position, Exception* x) {
  return guarded(x, [&] { return handleOf<BinaryData>(elementOf(self, position).asBinary()); });
}
FM_FUNCTION void FM_DataVect_Delete(void* self, Exception*) { deleteHandle<DataVect>(self); }

}  // namespace fmx
