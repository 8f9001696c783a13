#pragma once

#include <cstdint>

/// The host's C interface: plain functions over opaque objects. Widths and orders are exact; nothing else passes
/// between a host and a plug-in.
///
/// Every function ends with the exception record: the caller sets version 1 and code 0, and reads the code afterwards
/// (0 fine, 1 out of memory, 2 any other failure; the returned value then means nothing). The functions never throw.
/// Objects from a `_ConstructorN` belong to the caller and end with the class's `_Delete`; `const` pointers from
/// `At…`, `GetAs…` and `GetLocale` are borrowed from their container and die when it changes.
namespace fmx {

/// Outcome record of one call of the interface.
struct Exception {
  std::int32_t version = 1;
  std::int32_t code = 0;
};

using ErrorCode = std::int16_t;

struct QuadChar;
struct Text;
struct Data;
struct DataVect;
struct FixPt;
struct DateTime;
struct Locale;
struct ExprEnv;
struct BinaryData;

/// An external function or a script step: function ID, environment, arguments, result.
using ExternalFunction = ErrorCode (*)(std::int16_t, const ExprEnv*, const DataVect*, Data*);

/// Queues a script: file name, script name, script control (0 halt, 1 exit, 2 resume, 3 pause), parameter or null.
using StartScript = ErrorCode (*)(const Text*, const Text*, std::uint8_t, const Data*);

/// Fills an environment with the host's current one.
using CurrentEnvironment = ErrorCode (*)(ExprEnv*);

/// Positions and sizes of texts: "to the end", and "not found".
inline constexpr std::uint32_t kSizeEnd = 0xFFFFFFFFU;
inline constexpr std::uint32_t kSizeInvalid = 0xFFFFFFFFU;

enum NativeType : std::int32_t {
  kInvalid = 0,
  kText = 1,
  kNumber = 2,
  kDate = 3,
  kTime = 4,
  kTimeStamp = 5,
  kBinary = 6,
  kBoolean = 7,
};

enum Encoding : std::int32_t { kEncodingNative = 0, kEncodingUtf8 = 1, kEncodingIso8859_1 = 5 };

enum LocaleType : std::int32_t { kLocaleNone = 0, kLocaleSystem = 1, kLocaleUnicodeRaw = 2, kLocaleEnglish = 21 };

enum CallType : std::uint8_t {
  kCallStartUp = 0,
  kCallIdle = 1,
  kCallShutdown = 4,
  kCallPreferences = 5,
  kCallGetString = 7,
  kCallSessionShutdown = 8,
  kCallFileShutdown = 9,
  kCallSchemaChange = 10,
};

/// The record with which a host calls a plug-in's entry point. Packed: copy members by value, never point at them.
#pragma pack(push, 1)
struct ExternCall {
  std::int16_t extnVersion;
  std::int32_t unusedID;
  void (*entryPoint)(ExternCall*);
  char unusedFlag;
  std::uint8_t whichCall;
  char unsafeCalls;
  std::uint8_t parm1;
  std::uintptr_t parm2;
  std::uintptr_t parm3;
  std::uintptr_t instanceID;
  std::uintptr_t result;
  std::uintptr_t unused;
  StartScript cStartScript;
  CurrentEnvironment cCurrentEnv;
};
#pragma pack(pop)
static_assert(sizeof(ExternCall) == 74);

extern "C" {

// QuadChar
QuadChar* FM_QuadChar_Constructor1(Exception* x);
QuadChar* FM_QuadChar_Constructor2(char c0, char c1, char c2, char c3, Exception* x);
QuadChar* FM_QuadChar_Constructor3(const QuadChar* value, Exception* x);
const QuadChar* FM_QuadChar_operatorAS(void* self, const QuadChar* value, Exception* x);
std::uint8_t FM_QuadChar_operatorAR(void* self, std::int32_t i, Exception* x);
std::uint8_t FM_QuadChar_operatorCAR(const void* self, std::int32_t i, Exception* x);
bool FM_QuadChar_operatorEQ(const void* self, const QuadChar* value, Exception* x);
bool FM_QuadChar_operatorNE(const void* self, const QuadChar* value, Exception* x);
bool FM_QuadChar_operatorLT(const void* self, const QuadChar* value, Exception* x);
bool FM_QuadChar_operatorLE(const void* self, const QuadChar* value, Exception* x);
bool FM_QuadChar_operatorGT(const void* self, const QuadChar* value, Exception* x);
bool FM_QuadChar_operatorGE(const void* self, const QuadChar* value, Exception* x);
std::uint32_t FM_QuadChar_GetMacType(const void* self, Exception* x);
void FM_QuadChar_SetMacType(void* self, std::uint32_t value, Exception* x);
void FM_QuadChar_Delete(void* self, Exception* x);

// Locale
Locale* FM_Locale_Constructor1(std::int32_t inputType, Exception* x);
Locale* FM_Locale_Constructor2(const Locale* copyConstruct, Exception* x);
Locale* FM_Locale_operatorAS(void* self, const Locale* rhs, Exception* x);
void FM_Locale_Delete(void* self, Exception* x);

// Text
Text* FM_Text_Constructor1(Exception* x);
std::uint32_t FM_Text_GetSize(const void* self, Exception* x);
void FM_Text_Assign(void* self, const char* s, std::int32_t encoding, Exception* x);
void FM_Text_GetBytes(const void* self, char* buffer, std::uint32_t buffersize, std::uint32_t position,
                      std::uint32_t size, std::int32_t encoding, Exception* x);
std::uint32_t FM_Text_GetBytesEx(const void* self, char* buffer, std::uint32_t buffersize, std::uint32_t position,
                                 std::uint32_t size, std::int32_t encoding, Exception* x);
void FM_Text_AssignUnicode(void* self, const char16_t* s, Exception* x);
void FM_Text_AssignWithLength(void* self, const char* s, std::uint32_t strlength, std::int32_t encoding, Exception* x);
void FM_Text_AssignUnicodeWithLength(void* self, const char16_t* s, std::uint32_t strlength, Exception* x);
void FM_Text_GetUnicode(const void* self, char16_t* s, std::uint32_t position, std::uint32_t size, Exception* x);
void FM_Text_SetText(void* self, const Text* other, std::uint32_t position, std::uint32_t size, Exception* x);
void FM_Text_AppendText(void* self, const Text* other, std::uint32_t position, std::uint32_t size, Exception* x);
void FM_Text_InsertText(void* self, const Text* other, std::uint32_t position, Exception* x);
void FM_Text_DeleteText(void* self, std::uint32_t positionToDelete, std::uint32_t sizeToDelete, Exception* x);
std::uint32_t FM_Text_Find(const void* self, const Text* other, std::uint32_t position, Exception* x);
std::uint32_t FM_Text_FindPrev(const void* self, const Text* other, std::uint32_t position, Exception* x);
std::uint32_t FM_Text_FindIgnoringCase(const void* self, const Text* other, std::uint32_t position, Exception* x);
std::uint32_t FM_Text_FindPrevIgnoringCase(const void* self, const Text* other, std::uint32_t position, Exception* x);
void FM_Text_Uppercase(const void* self, Exception* x);
void FM_Text_Lowercase(const void* self, Exception* x);
bool FM_Text_operatorEQ(const void* self, const Text* that, Exception* x);
bool FM_Text_operatorNE(const void* self, const Text* that, Exception* x);
bool FM_Text_operatorLT(const void* self, const Text* that, Exception* x);
bool FM_Text_operatorLE(const void* self, const Text* that, Exception* x);
bool FM_Text_operatorGT(const void* self, const Text* that, Exception* x);
bool FM_Text_operatorGE(const void* self, const Text* that, Exception* x);
void FM_Text_Delete(void* self, Exception* x);

// Data
Data* FM_Data_Constructor1(Exception* x);
bool FM_Data_IsEmpty(const void* self, Exception* x);
bool FM_Data_IsValid(const void* self, Exception* x);
bool FM_Data_IsFindRequest(const void* self, Exception* x);
void FM_Data_Clear(void* self, std::int32_t newNativeType, Exception* x);
const Text* FM_Data_GetAsText(const void* self, Exception* x);
const FixPt* FM_Data_GetAsNumber(const void* self, Exception* x);
const DateTime* FM_Data_GetAsDate(const void* self, Exception* x);
const DateTime* FM_Data_GetAsTime(const void* self, Exception* x);
const DateTime* FM_Data_GetAsTimeStamp(const void* self, Exception* x);
bool FM_Data_GetAsBoolean(const void* self, Exception* x);
const BinaryData* FM_Data_GetBinaryData(const void* self, Exception* x);
const Locale* FM_Data_GetLocale(const void* self, Exception* x);
std::int32_t FM_Data_GetNativeType(const void* self, Exception* x);
void FM_Data_ConvertData(void* self, std::int32_t nativeType, Exception* x);
ErrorCode FM_Data_SetAsText(void* self, const Text* textData, const Locale* sourceLocale, std::int32_t nativeType,
                            Exception* x);
void FM_Data_SetAsNumber(void* self, const FixPt* numericData, std::int32_t nativeType, Exception* x);
void FM_Data_SetAsDate(void* self, const DateTime* dateData, std::int32_t nativeType, Exception* x);
void FM_Data_SetAsTime(void* self, const DateTime* timeData, std::int32_t nativeType, Exception* x);
void FM_Data_SetAsTimeStamp(void* self, const DateTime* timeStampData, std::int32_t nativeType, Exception* x);
void FM_Data_SetDateTime(void* self, const DateTime* dateTimeData, std::int32_t dateTimeType, std::int32_t nativeType,
                         Exception* x);
void FM_Data_SetBinaryData(void* self, const BinaryData* binaryData, bool forceBinaryNativeType, Exception* x);
void FM_Data_Delete(void* self, Exception* x);

// DataVect
DataVect* FM_DataVect_Constructor1(Exception* x);
std::uint32_t FM_DataVect_Size(const void* self, Exception* x);
void FM_DataVect_Clear(void* self, Exception* x);
bool FM_DataVect_IsEmpty(const void* self, Exception* x);
void FM_DataVect_PushBack(void* self, const Data* data, Exception* x);
Data* FM_DataVect_PopBack(void* self, Exception* x);
const Data* FM_DataVect_At(const void* self, std::uint32_t position, Exception* x);
const Text* FM_DataVect_AtAsText(const void* self, std::uint32_t position, Exception* x);
const FixPt* FM_DataVect_AtAsNumber(const void* self, std::uint32_t position, Exception* x);
const DateTime* FM_DataVect_AtAsDate(const void* self, std::uint32_t position, Exception* x);
const DateTime* FM_DataVect_AtAsTime(const void* self, std::uint32_t position, Exception* x);
const DateTime* FM_DataVect_AtAsTimeStamp(const void* self, std::uint32_t position, Exception* x);
bool FM_DataVect_AtAsBoolean(const void* self, std::uint32_t position, Exception* x);
const BinaryData* FM_DataVect_AtAsBinaryData(const void* self, std::uint32_t position, Exception* x);
void FM_DataVect_Delete(void* self, Exception* x);

// FixPt
FixPt* FM_FixPt_Constructor1(std::int32_t val, std::int32_t precision, Exception* x);
FixPt* FM_FixPt_Constructor2(std::int32_t val, const FixPt* precisionExample, Exception* x);
void FM_FixPt_AssignInt(void* self, std::int32_t that, Exception* x);
void FM_FixPt_AssignInt64(void* self, std::int64_t that, Exception* x);
void FM_FixPt_AssignDouble(void* self, double that, Exception* x);
void FM_FixPt_AssignFixPt(void* self, const FixPt* that, Exception* x);
bool FM_FixPt_operatorEQ(const void* self, const FixPt* that, Exception* x);
bool FM_FixPt_operatorNE(const void* self, const FixPt* that, Exception* x);
bool FM_FixPt_operatorLT(const void* self, const FixPt* that, Exception* x);
bool FM_FixPt_operatorLE(const void* self, const FixPt* that, Exception* x);
bool FM_FixPt_operatorGT(const void* self, const FixPt* that, Exception* x);
bool FM_FixPt_operatorGE(const void* self, const FixPt* that, Exception* x);
void FM_FixPt_Increment(void* self, std::int32_t n, Exception* x);
void FM_FixPt_Increment64(void* self, std::int64_t n, Exception* x);
void FM_FixPt_Decrement(void* self, std::int32_t n, Exception* x);
void FM_FixPt_Decrement64(void* self, std::int64_t n, Exception* x);
void FM_FixPt_Negate(void* self, Exception* x);
std::int32_t FM_FixPt_GetPrecision(const void* self, Exception* x);
void FM_FixPt_SetPrecision(void* self, std::int32_t precision, Exception* x);
void FM_FixPt_Add(const void* self, const FixPt* arg, FixPt* result, Exception* x);
void FM_FixPt_Subtract(const void* self, const FixPt* arg, FixPt* result, Exception* x);
void FM_FixPt_Multiply(const void* self, const FixPt* arg, FixPt* result, Exception* x);
ErrorCode FM_FixPt_Divide(const void* self, const FixPt* arg, FixPt* result, Exception* x);
bool FM_FixPt_AsBool(const void* self, Exception* x);
std::int32_t FM_FixPt_AsLong(const void* self, Exception* x);
std::int64_t FM_FixPt_AsLong64(const void* self, Exception* x);
double FM_FixPt_AsFloat(const void* self, Exception* x);
void FM_FixPt_Delete(void* self, Exception* x);

// DateTime
DateTime* FM_DateTime_Constructor1(Exception* x);
DateTime* FM_DateTime_Constructor2(const char16_t* dateString, std::uint32_t dateLength, const Locale* intl,
                                   Exception* x);
DateTime* FM_DateTime_Constructor3(const Text* dateText, const Locale* intl, Exception* x);
bool FM_DateTime_operatorEQ(const void* self, const DateTime* that, Exception* x);
bool FM_DateTime_operatorNE(const void* self, const DateTime* that, Exception* x);
bool FM_DateTime_IsLeapYear(const void* self, Exception* x);
std::int16_t FM_DateTime_DayOfWeek(const void* self, Exception* x);
std::int16_t FM_DateTime_DayOfYear(const void* self, Exception* x);
std::int16_t FM_DateTime_WeekOfYear(const void* self, Exception* x);
void FM_DateTime_Now(void* self, Exception* x);
void FM_DateTime_SetDate(void* self, const DateTime* datetime, Exception* x);
ErrorCode FM_DateTime_SetNormalizedDate1(void* self, std::int16_t month, std::int16_t day, std::int16_t year,
                                         Exception* x);
ErrorCode FM_DateTime_SetNormalizedDate2(void* self, const FixPt* year, const FixPt* month, const FixPt* day,
                                         Exception* x);
void FM_DateTime_SetDaysSinceEpoch(void* self, std::int64_t days, Exception* x);
void FM_DateTime_SetTime(void* self, const DateTime* datetime, Exception* x);
ErrorCode FM_DateTime_SetNormalizedTime1(void* self, std::int64_t hour, std::int16_t minute, std::int16_t sec,
                                         std::int32_t usec, Exception* x);
ErrorCode FM_DateTime_SetNormalizedTime2(void* self, const FixPt* hour, const FixPt* minute, const FixPt* sec,
                                         Exception* x);
void FM_DateTime_SetSecsSinceMidnight(void* self, const FixPt* secs, Exception* x);
void FM_DateTime_SetSecondsSinceEpoch(void* self, const FixPt* seconds, Exception* x);
std::int16_t FM_DateTime_GetYear(const void* self, Exception* x);
std::int16_t FM_DateTime_GetMonth(const void* self, Exception* x);
std::int16_t FM_DateTime_GetDay(const void* self, Exception* x);
std::int32_t FM_DateTime_GetDaysSinceEpoch(const void* self, Exception* x);
std::int32_t FM_DateTime_GetHour(const void* self, Exception* x);
std::int16_t FM_DateTime_GetMinute(const void* self, Exception* x);
std::int16_t FM_DateTime_GetSec(const void* self, Exception* x);
std::int32_t FM_DateTime_GetUSec(const void* self, Exception* x);
void FM_DateTime_GetSeconds(const void* self, FixPt* results, Exception* x);
void FM_DateTime_GetSecsSinceMidnight(const void* self, FixPt* results, Exception* x);
void FM_DateTime_GetSecondsSinceEpoch(const void* self, FixPt* results, Exception* x);
void FM_DateTime_Delete(void* self, Exception* x);

// ExprEnv
ExprEnv* FM_ExprEnv_Constructor1(Exception* x);
ErrorCode FM_ExprEnv_Evaluate(const void* self, const Text* expression, Data* result, Exception* x);
ErrorCode FM_ExprEnv_RegisterExternalFunction(const QuadChar* pluginId, std::int16_t functionId,
                                              const Text* functionName, const Text* functionPrototype,
                                              std::int16_t minArgs, std::int16_t maxArgs,
                                              std::uint32_t compatibleOnFlags, ExternalFunction funcPtr, Exception* x);
ErrorCode FM_ExprEnv_RegisterExternalFunctionEx(const QuadChar* pluginId, std::int16_t functionId,
                                                const Text* functionName, const Text* functionPrototype,
                                                const Text* functionDescription, std::int16_t minArgs,
                                                std::int16_t maxArgs, std::uint32_t compatibleOnFlags,
                                                ExternalFunction funcPtr, Exception* x);
ErrorCode FM_ExprEnv_UnRegisterExternalFunction(const QuadChar* pluginId, std::int16_t functionId, Exception* x);
std::uintptr_t FM_ExprEnv_SessionID(const void* self, Exception* x);
std::uintptr_t FM_ExprEnv_FileID(const void* self, Exception* x);
ErrorCode FM_ExprEnv_RegisterScriptStep(const QuadChar* pluginId, std::int16_t scriptStepId, const Text* scriptStepName,
                                        const Text* scriptStepDefinition, const Text* scriptStepDescription,
                                        std::uint32_t compatibleOnFlags, ExternalFunction funcPtr, Exception* x);
ErrorCode FM_ExprEnv_UnRegisterScriptStep(const QuadChar* pluginId, std::int16_t scriptStepId, Exception* x);
void FM_ExprEnv_Delete(void* self, Exception* x);

// BinaryData
BinaryData* FM_BinaryData_Constructor1(Exception* x);
std::int32_t FM_BinaryData_GetCount(const void* self, Exception* x);
void FM_BinaryData_Delete(void* self, Exception* x);

}  // extern "C"

}  // namespace fmx
