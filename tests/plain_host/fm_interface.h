#pragma once

#include <stdbool.h>
#include <stdint.h>

/* What this host uses of the interface between hosts and plug-ins, as a C program sees it. */

typedef struct ExceptionRecord {
  int32_t version;
  int32_t code;
} ExceptionRecord;

typedef struct QuadChar QuadChar;
typedef struct Text Text;
typedef struct Data Data;
typedef struct DataVect DataVect;
typedef struct Locale Locale;
typedef struct ExprEnv ExprEnv;

typedef int16_t (*ExternalFunction)(int16_t, const ExprEnv*, const DataVect*, Data*);

enum { kCallStartUp = 0, kCallIdle = 1, kCallShutdown = 4 };
enum { kNativeText = 1, kEncodingUtf8 = 1 };

#pragma pack(push, 1)
typedef struct ExternCall {
  int16_t extnVersion;
  int32_t unusedID;
  void (*entryPoint)(struct ExternCall*);
  char unusedFlag;
  uint8_t whichCall;
  char unsafeCalls;
  uint8_t parm1;
  uintptr_t parm2;
  uintptr_t parm3;
  uintptr_t instanceID;
  uintptr_t result;
  uintptr_t unused;
  int16_t (*cStartScript)(const Text*, const Text*, uint8_t, const Data*);
  int16_t (*cCurrentEnv)(ExprEnv*);
} ExternCall;
#pragma pack(pop)
_Static_assert(sizeof(ExternCall) == 74, "the record has no gaps");

Text* FM_Text_Constructor1(ExceptionRecord* x);
uint32_t FM_Text_GetSize(const void* self, ExceptionRecord* x);
uint32_t FM_Text_GetBytesEx(const void* self, char* buffer, uint32_t buffersize, uint32_t position, uint32_t size,
                            int32_t encoding, ExceptionRecord* x);
void FM_Text_AssignWithLength(void* self, const char* s, uint32_t strlength, int32_t encoding, ExceptionRecord* x);
void FM_Text_Delete(void* self, ExceptionRecord* x);

Data* FM_Data_Constructor1(ExceptionRecord* x);
const Text* FM_Data_GetAsText(const void* self, ExceptionRecord* x);
const Locale* FM_Data_GetLocale(const void* self, ExceptionRecord* x);
int16_t FM_Data_SetAsText(void* self, const Text* textData, const Locale* sourceLocale, int32_t nativeType,
                          ExceptionRecord* x);
void FM_Data_Delete(void* self, ExceptionRecord* x);

DataVect* FM_DataVect_Constructor1(ExceptionRecord* x);
void FM_DataVect_PushBack(void* self, const Data* data, ExceptionRecord* x);
void FM_DataVect_Delete(void* self, ExceptionRecord* x);

ExprEnv* FM_ExprEnv_Constructor1(ExceptionRecord* x);
void FM_ExprEnv_Delete(void* self, ExceptionRecord* x);

/* Ours: a host keeps its register itself. It stands before the stand-in library's function of this name. */
int16_t FM_ExprEnv_RegisterExternalFunctionEx(const QuadChar* pluginId, int16_t functionId, const Text* functionName,
                                              const Text* functionPrototype, const Text* functionDescription,
                                              int16_t minArgs, int16_t maxArgs, uint32_t compatibleOnFlags,
                                              ExternalFunction funcPtr, ExceptionRecord* x);
