#pragma once

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "bridge/function_table.h"
#include "bridge/plugin_error.h"
#include "bridge/state.h"
#include "fakes/fake_event_store.h"
#include "fakes/fake_platform.h"
#include "fakes/host_call.h"
#include "functions/recording_back_ends.h"

namespace orlocal {

using fakes::callWith;
using fakes::kEmpty;
using fakes::WallClock;

enum class BackEnd { kEventKit, kLegacy };

/// Functions over a back end that notes what it is told. The zone is Berlin's.
class FunctionTest : public testing::Test {
 protected:
  FunctionTest() {
    system = std::make_shared<fakes::FakePlatform>();
    system->m_eventKit = std::make_shared<fakes::FakeEventKit>();
    system->m_defaultTimeZone = std::make_shared<fakes::FakeTimeZone>(fakes::FakeTimeZone::berlin());
    setPlatform(system);
    error = &m_error;
    g_llasterror = 0;
    use(BackEnd::kEventKit);
  }
  ~FunctionTest() override {
    g_sharedEKFunctions = nullptr;
    g_sharedFunctions = nullptr;
    error = nullptr;
    setPlatform(nullptr);
  }

  void use(BackEnd backEnd) {
    g_bUseEK = backEnd == BackEnd::kEventKit;
    g_sharedEKFunctions = g_bUseEK ? &eventKit : nullptr;
    g_sharedFunctions = g_bUseEK ? nullptr : &legacy;
  }
  fakes::Notes& notes() { return g_bUseEK ? eventKit.notes : legacy.notes; }

  /// The messages since the last call of this.
  std::vector<std::string> told() {
    auto messages = std::move(notes().messages);
    notes().messages.clear();
    return messages;
  }
  static std::vector<std::string> only(std::string message) { return {std::move(message)}; }
  static std::string lastError() { return callWith(&Orlo_GetLastError); }
  void useZone(int offset) { system->m_defaultTimeZone = std::make_shared<fakes::FakeTimeZone>(offset); }

  std::shared_ptr<fakes::FakePlatform> system;
  fakes::RecordingEKFunctions eventKit;
  fakes::RecordingLegacyFunctions legacy;
  orlo_PluginError m_error;
};

/// What holds on both back ends.
class OnBothBackEnds : public FunctionTest, public testing::WithParamInterface<BackEnd> {
 protected:
  OnBothBackEnds() { use(GetParam()); }
};

inline std::string backEndName(const testing::TestParamInfo<BackEnd>& info) {
  return info.param == BackEnd::kEventKit ? "EventKit" : "Legacy";
}

#define ORLO_ON_BOTH_BACK_ENDS(Fixture) \
  INSTANTIATE_TEST_SUITE_P(BackEnds, Fixture, testing::Values(BackEnd::kEventKit, BackEnd::kLegacy), backEndName)

inline const std::string kFailed = "text !!ERROR!!";
inline const std::string kWorked = "number 0";
inline const std::string kLeftAlone = "empty";
inline const std::vector<std::string> kNoMessage;

}  // namespace orlocal
