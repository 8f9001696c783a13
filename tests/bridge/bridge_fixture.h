#pragma once

#include <memory>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "backend/error_codes.h"
#include "bridge/extern_call.h"
#include "bridge/plugin_error.h"
#include "bridge/recording_host.h"
#include "bridge/state.h"
#include "fakes/fake_address_book.h"
#include "fakes/fake_event_store.h"
#include "fakes/fake_platform.h"
#include "fakes/fake_run_loop.h"
#include "platform/exception.h"

namespace orlocal {

class CountingRunLoop : public fakes::FakeRunLoop {
 public:
  int turns = 0;
  void turn() override {
    ++turns;
    FakeRunLoop::turn();
  }
};

/// Asked for one day of the week, throws.
class ThrowingEventKit : public fakes::FakeEventKit {
 public:
  long dayThatThrows = 0;
  std::shared_ptr<EKRecurrenceDayOfWeek> dayOfWeek(long day, long weekNumber) override {
    if (dayThatThrows != 0 && day == dayThatThrows) { throw Exception("NSInvalidArgumentException", "no such day"); }
    return FakeEventKit::dayOfWeek(day, weekNumber);
  }
};

/// A plug-in on a platform of the test's own, with the test as its host.
class BridgeTest : public testing::Test {
 protected:
  BridgeTest() {
    host.clear();
    runLoop = std::make_shared<CountingRunLoop>();
    eventKit = std::make_shared<ThrowingEventKit>();
    system = std::make_shared<fakes::FakePlatform>();
    system->m_eventKit = eventKit;
    system->m_addressBook = std::make_shared<fakes::FakeAddressBook>();
    system->m_runLoop = runLoop;
    setPlatform(system);
    m_record.extnVersion = 62;
    m_record.unusedID = -1;
    m_record.entryPoint = &FMExternCallProc;
    gFMX_ExternCallPtr = &m_record;
    g_llasterror = 0;
    g_bUseEK = false;
    g_sharedEKFunctions = nullptr;
    g_sharedFunctions = nullptr;
    error = &m_error;
  }
  ~BridgeTest() override {
    host.clear();
    error = nullptr;
    g_sharedFunctions = nullptr;
    g_sharedEKFunctions = nullptr;
    gFMX_ExternCallPtr = nullptr;
    setPlatform(nullptr);
  }

  /// Puts string `number` into the plug-in's table.
  void addString(int number, std::u16string text) {
    system->m_bundleStrings->m_strings[{"Orlo", "Orlo " + std::to_string(number)}] = std::move(text);
  }

  /// Sends message `whichCall` and gives the record's answer.
  std::uintptr_t send(std::uint8_t whichCall) {
    m_record.whichCall = whichCall;
    m_record.result = 0;
    FMExternCallProc(&m_record);
    return m_record.result;
  }

  fakes::RecordingHost& host = fakes::RecordingHost::instance();
  std::shared_ptr<fakes::FakePlatform> system;
  std::shared_ptr<CountingRunLoop> runLoop;
  std::shared_ptr<ThrowingEventKit> eventKit;
  fmx::ExternCall m_record{};
  orlo_PluginError m_error;
};

}  // namespace orlocal
