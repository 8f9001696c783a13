/* A host in plain C. There is nobody in it who could catch a C++ exception: one that leaves the plug-in ends it.
 *
 * usage: plain_host PLUGIN, then a line for each thing to do, its fields parted by tabs:
 *   FUNCTION ARGUMENT...   calls it; answers with the result, a tab, and the code that Orlo_GetLastError gives
 *   !idle                  sends an idle message
 *   !register FILE SCRIPT  has a script started for each change by others; answers with how many were started so far
 *   !starts                answers with how many scripts were started so far
 *   !full                  from now on no disk has any room
 *   !user ID               becomes another user
 *   !folder PATH           goes to that folder
 * Each is answered with one line. Line breaks in results are shown as "\n". */

#include <dlfcn.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/prctl.h>
#include <unistd.h>

#include "fm_interface.h"
#include "full_disk.h"

enum { kMostFunctions = 64, kMostArguments = 16, kNameRoom = 64 };

typedef struct Function {
  char name[kNameRoom];
  int16_t id;
  ExternalFunction call;
} Function;

static Function functions[kMostFunctions];
static int functionCount;

static void fail(const char* what) {
  fprintf(stderr, "plain_host: %s\n", what);
  exit(2);
}

/* The record of a call of the interface, which must have worked. */
static ExceptionRecord fresh(void) { return (ExceptionRecord){.version = 1, .code = 0}; }
static void check(const ExceptionRecord* x) {
  if (x->code != 0) { fail("the interface failed");
}
}

static char* bytesOf(const Text* text) {
  ExceptionRecord x = fresh();
  const uint32_t units = FM_Text_GetSize(text, &x);
  const uint32_t room = units * 4 + 1;
  char* bytes = malloc(room);
  if (bytes == NULL) { fail("no memory");
}
  const uint32_t written = units == 0 ? 0 : FM_Text_GetBytesEx(text, bytes, room, 0, units, kEncodingUtf8, &x);
  check(&x);
  bytes[written] = '\0';
  return bytes;
}

int16_t FM_ExprEnv_RegisterExternalFunctionEx(const QuadChar* pluginId, int16_t functionId, const Text* functionName,
                                              const Text* functionPrototype, const Text* functionDescription,
                                              int16_t minArgs, int16_t maxArgs, uint32_t compatibleOnFlags,
                                              ExternalFunction funcPtr, ExceptionRecord* x) {
  (void)pluginId, (void)functionPrototype, (void)functionDescription;
  (void)minArgs, (void)maxArgs, (void)compatibleOnFlags, (void)x;
  if (functionCount == kMostFunctions) { return -1;
}
  Function* function = &functions[functionCount++];
  char* name = bytesOf(functionName);
  snprintf(function->name, sizeof function->name, "%s", name);
  free(name);
  function->id = functionId;
  function->call = funcPtr;
  return 0;
}

static const Function* named(const char* name) {
  for (int i = 0; i < functionCount; ++i) {
    if (strcmp(functions[i].name, name) == 0) { return &functions[i];
}
  }
  fail(name);
  return NULL;
}

static void push(DataVect* arguments, const char* bytes) {
  ExceptionRecord x = fresh();
  Text* text = FM_Text_Constructor1(&x);
  FM_Text_AssignWithLength(text, bytes, (uint32_t)strlen(bytes), kEncodingUtf8, &x);
  Data* value = FM_Data_Constructor1(&x);
  FM_Data_SetAsText(value, text, FM_Data_GetLocale(value, &x), kNativeText, &x);
  FM_DataVect_PushBack(arguments, value, &x);
  check(&x);
  FM_Data_Delete(value, &x);
  FM_Text_Delete(text, &x);
}

/* The function's result as text, which the caller frees. */
static char* called(const Function* function, char** words, int count) {
  ExceptionRecord x = fresh();
  DataVect* arguments = FM_DataVect_Constructor1(&x);
  ExprEnv* environment = FM_ExprEnv_Constructor1(&x);
  Data* result = FM_Data_Constructor1(&x);
  check(&x);
  for (int i = 0; i < count; ++i) { push(arguments, words[i]);
}
  if (function->call(function->id, environment, arguments, result) != 0) { fail("a function answered with an error");
}
  char* text = bytesOf(FM_Data_GetAsText(result, &x));
  FM_Data_Delete(result, &x);
  FM_ExprEnv_Delete(environment, &x);
  FM_DataVect_Delete(arguments, &x);
  return text;
}

static void callAndTell(char** words, int count) {
  char* result = called(named(words[0]), words + 1, count - 1);
  char number[] = "number";
  char* form[] = {number};
  char* code = called(named("Orlo_GetLastError"), form, 1);
  for (const char* c = result; *c != '\0'; ++c) {
    if (*c == '\n' || *c == '\r') {
      fputs("\\n", stdout);
    } else {
      putchar(*c);
    }
  }
  printf("\t%s\n", code);
  free(result);
  free(code);
}

static int scriptCount;

static int16_t startScript(const Text* file, const Text* script, uint8_t control, const Data* parameter) {
  (void)file, (void)script, (void)control, (void)parameter;
  ++scriptCount;
  return 0;
}

static void send(void (*entry)(ExternCall*), ExternCall* record, uint8_t message, uintptr_t versionText) {
  record->extnVersion = 62;
  record->unusedID = -1;
  record->entryPoint = entry;
  record->whichCall = message;
  record->parm2 = versionText;
  record->result = 0;
  record->cStartScript = startScript;
  entry(record);
}

int main(int count, char** words) {
  if (count != 2) { fail("usage: plain_host PLUGIN");
}
  void* plugin = dlopen(words[1], RTLD_NOW | RTLD_LOCAL);
  if (plugin == NULL) { fail(dlerror());
}
  void (*entry)(ExternCall*) = NULL;
  *(void**)&entry = dlsym(plugin, "FMExternCallProc");
  if (entry == NULL) { fail("no entry");
}
  static ExternCall record;
  static const uint16_t version[] = {'3', '.', '0', 0};
  send(entry, &record, kCallStartUp, (uintptr_t)version);

  char* line = NULL;
  size_t room = 0;
  while (getline(&line, &room, stdin) > 0) {
    line[strcspn(line, "\n")] = '\0';
    char* fields[kMostArguments];
    int fieldCount = 0;
    for (char *rest = line, *field; fieldCount < kMostArguments && (field = strsep(&rest, "\t")) != NULL;) {
      fields[fieldCount++] = field;
    }
    if (strcmp(fields[0], "!idle") == 0) {
      send(entry, &record, kCallIdle, 0);
      puts("idle");
    } else if (strcmp(fields[0], "!register") == 0 && fieldCount == 3) {
      Function registration = {.name = "Orlo_RegisterUpdateScript", .id = 0};
      *(void**)&registration.call = dlsym(plugin, registration.name);
      if (registration.call == NULL) { fail("no registration");
}
      free(called(&registration, fields + 1, 2));
      printf("%d\n", scriptCount);
    } else if (strcmp(fields[0], "!starts") == 0) {
      printf("%d\n", scriptCount);
    } else if (strcmp(fields[0], "!full") == 0) {
      fillDisk();
      puts("full");
    } else if (strcmp(fields[0], "!user") == 0 && fieldCount == 2) {
      if (setuid((uid_t)strtoul(fields[1], NULL, 10)) != 0) { fail("cannot become another user");
}
      // A process that changed its user may otherwise not be searched for leaks at its end.
      if (prctl(PR_SET_DUMPABLE, 1) != 0) { fail("cannot stay open to tools");
}
      puts("user");
    } else if (strcmp(fields[0], "!folder") == 0 && fieldCount == 2) {
      if (chdir(fields[1]) != 0) { fail("cannot go to the folder");
}
      puts("folder");
    } else {
      callAndTell(fields, fieldCount);
    }
    fflush(stdout);
  }
  free(line);
  send(entry, &record, kCallShutdown, 0);
  puts("ended");
  return 0;
}
