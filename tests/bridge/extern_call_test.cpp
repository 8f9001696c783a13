#include <array>
#include <cstring>
#include <new>
#include <numeric>

#include "backend/eventkit/ical_ek_functions.h"
#include "backend/legacy/ical_functions.h"
#include "bridge/bridge_fixture.h"
#include "bridge/function_table.h"

namespace orlocal {
namespace {

constexpr auto kRefused = static_cast<std::uintptr_t>(-1);

std::vector<std::int16_t> idsFrom148To169() {
  std::vector<std::int16_t> ids(22);
  std::iota(ids.begin(), ids.end(), std::int16_t{148});
  return ids;
}

class EntryPoint : public BridgeTest {};

struct VersionCase {
  std::int16_t version;
  std::uintptr_t answer;
};

class AnnouncedVersion : public BridgeTest, public testing::WithParamInterface<VersionCase> {};

TEST_P(AnnouncedVersion, IsAnsweredWithOurVersionOrRefused) {
  m_record.extnVersion = GetParam().version;
  EXPECT_EQ(send(fmx::kCallStartUp), GetParam().answer);
  const bool accepted = GetParam().answer != kRefused;
  EXPECT_EQ(host.functions.size() + host.functionsEx.size(), accepted ? std::size(kFunctions) : 0U);
  EXPECT_EQ(g_sharedEKFunctions != nullptr, accepted);
}

INSTANTIATE_TEST_SUITE_P(Versions, AnnouncedVersion,
                         testing::Values(VersionCase{-32768, kRefused}, VersionCase{-1, kRefused},
                                         VersionCase{0, kRefused}, VersionCase{49, kRefused}, VersionCase{50, 57},
                                         VersionCase{57, 57}, VersionCase{62, 57}, VersionCase{255, 57},
                                         VersionCase{256, kRefused}, VersionCase{32767, kRefused}));

TEST_F(EntryPoint, KeepsTheRecordOfEveryCall) {
  for (const int message : {0, 1, 2, 4, 5, 7, 8, 9, 10, 200}) {
    gFMX_ExternCallPtr = nullptr;
    m_record.parm3 = 0;
    send(static_cast<std::uint8_t>(message));
    EXPECT_EQ(gFMX_ExternCallPtr, &m_record) << message;
  }
}

TEST_F(EntryPoint, ChangesNothingInTheRecordForOtherMessages) {
  for (const int message : {1, 2, 3, 4, 5, 6, 8, 9, 10, 11, 255}) {
    m_record.whichCall = static_cast<std::uint8_t>(message);
    m_record.parm1 = 12;
    m_record.result = 0x1234;
    fmx::ExternCall before = m_record;
    FMExternCallProc(&m_record);
    EXPECT_EQ(std::memcmp(&before, &m_record, sizeof before), 0) << message;
  }
}

TEST_F(EntryPoint, RegistersBeforeItChoosesTheBackEnd) {
  host.failingCall = "FM_ExprEnv_RegisterExternalFunctionEx";
  host.failureCode = 1;
  EXPECT_THROW(send(fmx::kCallStartUp), std::bad_alloc);
  EXPECT_EQ(g_sharedEKFunctions, nullptr);
}

TEST_F(EntryPoint, GoesOnWhenTheHostDeclinesARegistration) {
  host.registrationAnswer = 957;
  EXPECT_EQ(send(fmx::kCallStartUp), 57U);
  EXPECT_EQ(host.functionsEx.size(), std::size(kFunctions));
}

TEST_F(EntryPoint, ChoosesTheLegacyBackEndUpToMinorVersionSeven) {
  system->m_systemVersion->m_minor = 7;
  send(fmx::kCallStartUp);
  EXPECT_FALSE(g_bUseEK);
  EXPECT_EQ(g_sharedFunctions, iCalFunctions::sharedICalFunctions());
  EXPECT_EQ(g_sharedEKFunctions, nullptr);
}

TEST_F(EntryPoint, ChoosesEventKitFromMinorVersionEightOn) {
  for (const long minor : {8L, 15L}) {
    g_sharedEKFunctions = nullptr;
    system->m_systemVersion->m_minor = minor;
    send(fmx::kCallStartUp);
    EXPECT_TRUE(g_bUseEK);
    EXPECT_EQ(g_sharedEKFunctions, iCalEKFunctions::sharedICalFunctions());
    EXPECT_EQ(g_sharedFunctions, nullptr);
  }
}

TEST_F(EntryPoint, ChoosesTheLegacyBackEndWhenTheSystemDoesNotAnswer) {
  system->m_systemVersion->m_minor = std::nullopt;
  send(fmx::kCallStartUp);
  EXPECT_FALSE(g_bUseEK);
  EXPECT_NE(g_sharedFunctions, nullptr);
}

TEST_F(EntryPoint, TellsWhichBackEndTheSystemCallsFor) {
  system->m_systemVersion->m_minor = 7;
  EXPECT_FALSE(UseEKImplementation());
  system->m_systemVersion->m_minor = 8;
  EXPECT_TRUE(UseEKImplementation());
  system->m_systemVersion->m_minor = std::nullopt;
  EXPECT_FALSE(UseEKImplementation());
}

TEST_F(EntryPoint, MakesAClearErrorObject) {
  error = nullptr;
  send(fmx::kCallStartUp);
  ASSERT_NE(error, nullptr);
  EXPECT_EQ(error->getError(), "Success");
}

TEST_F(EntryPoint, RegistersAgainAndReplacesTheErrorObjectOnASecondStartUp) {
  send(fmx::kCallStartUp);
  error->setError(-4, 0, std::nullopt);
  send(fmx::kCallStartUp);
  EXPECT_EQ(host.functionsEx.size(), 2 * std::size(kFunctions));
  EXPECT_EQ(error->getError(), "Success");
}

TEST_F(EntryPoint, KeepsTheBackEndWhateverTheSystemSaysAtASecondStartUp) {
  for (const long first : {7L, 8L}) {
    g_sharedEKFunctions = nullptr;
    g_sharedFunctions = nullptr;
    system->m_systemVersion->m_minor = first;
    send(fmx::kCallStartUp);
    send(fmx::kCallShutdown);
    system->m_systemVersion->m_minor = first == 7 ? 8 : 7;
    send(fmx::kCallStartUp);
    EXPECT_EQ(g_bUseEK, first == 8);
    EXPECT_EQ(g_sharedEKFunctions != nullptr, first == 8);
    EXPECT_EQ(g_sharedFunctions != nullptr, first == 7);
  }
}

TEST_F(EntryPoint, UnregistersTheWholeRangeOnShutdown) {
  send(fmx::kCallStartUp);
  send(fmx::kCallShutdown);
  EXPECT_EQ(host.unregisteredFunctions, idsFrom148To169());
  EXPECT_EQ(host.unregisteredSteps, idsFrom148To169());
}

TEST_F(EntryPoint, ClosesTheStoresOnceAllIsUnregistered) {
  send(fmx::kCallStartUp);
  EXPECT_EQ(system->m_storesClosed, 0);
  send(fmx::kCallShutdown);
  EXPECT_EQ(system->m_storesClosed, 1);
  host.failingCall = "FM_ExprEnv_UnRegisterScriptStep";
  host.failingId = 169;
  host.failureCode = 2;
  EXPECT_THROW(send(fmx::kCallShutdown), std::exception);
  EXPECT_EQ(system->m_storesClosed, 1) << "a failure to unregister ends the shutdown";
}

TEST_F(EntryPoint, KeepsTheBackEndAndTheErrorObjectAfterShutdown) {
  send(fmx::kCallStartUp);
  send(fmx::kCallShutdown);
  EXPECT_NE(g_sharedEKFunctions, nullptr);
  EXPECT_NE(error, nullptr);
}

TEST_F(EntryPoint, UnregistersNoStepsOnHostsUpTo56) {
  for (const std::int16_t version : {std::int16_t{50}, std::int16_t{56}}) {
    host.clear();
    m_record.extnVersion = version;
    send(fmx::kCallShutdown);
    EXPECT_EQ(host.unregisteredFunctions, idsFrom148To169());
    EXPECT_TRUE(host.unregisteredSteps.empty());
  }
}

TEST_F(EntryPoint, DoesNotLookAtWhatUnregisteringAnswers) {
  host.registrationAnswer = 4;
  send(fmx::kCallShutdown);
  EXPECT_EQ(host.unregisteredSteps, idsFrom148To169());
}

TEST_F(EntryPoint, GivesUpShuttingDownWhenTheHostFails) {
  host.failingCall = "FM_ExprEnv_UnRegisterExternalFunction";
  host.failingId = 150;
  host.failureCode = 2;
  EXPECT_THROW(send(fmx::kCallShutdown), std::exception);
  EXPECT_EQ(host.unregisteredFunctions, (std::vector<std::int16_t>{148, 149}));
  EXPECT_TRUE(host.unregisteredSteps.empty());
}

TEST_F(EntryPoint, TurnsTheRunLoopOnceForEachIdleMessage) {
  send(fmx::kCallStartUp);
  send(fmx::kCallIdle);
  EXPECT_EQ(runLoop->turns, 1);
  send(fmx::kCallIdle);
  EXPECT_EQ(runLoop->turns, 2);
}

TEST_F(EntryPoint, DoesNothingWhenIdleAfterShutdown) {
  send(fmx::kCallStartUp);
  send(fmx::kCallShutdown);
  send(fmx::kCallIdle);
  EXPECT_EQ(runLoop->turns, 0);
}

TEST_F(EntryPoint, StaysInertAfterARefusedStartUp) {
  send(fmx::kCallShutdown);
  m_record.extnVersion = 49;
  send(fmx::kCallStartUp);
  send(fmx::kCallIdle);
  EXPECT_EQ(runLoop->turns, 0);
}

TEST_F(EntryPoint, AnswersStringsBeforeStartUp) {
  addString(128, u"Orlocal");
  char16_t buffer[32] = {};
  m_record.whichCall = fmx::kCallGetString;
  m_record.parm1 = 128;
  m_record.parm3 = 32;
  m_record.result = reinterpret_cast<std::uintptr_t>(buffer);
  FMExternCallProc(&m_record);
  EXPECT_EQ(std::u16string(buffer), u"Orlocal");
}

TEST_F(EntryPoint, ReadsTheRoomForAStringInThirtyTwoBitsWithASign) {
  addString(128, u"Orlocal");
  const auto answered = [this](std::uintptr_t room) {
    std::array<char16_t, 32> buffer{};
    m_record.whichCall = fmx::kCallGetString;
    m_record.parm1 = 128;
    m_record.parm3 = room;
    m_record.result = reinterpret_cast<std::uintptr_t>(buffer.data());
    FMExternCallProc(&m_record);
    return std::u16string(buffer.data());
  };
  EXPECT_EQ(answered(0x1'0000'0020), u"Orlocal");
  EXPECT_EQ(answered(0x1'0000'0000), u"");
  EXPECT_EQ(answered(0x8000'0000), u"");
  EXPECT_EQ(answered(0xFFFF'FFFF), u"");
}

}  // namespace
}  // namespace orlocal
