#include "fakes/fake_time_zone.h"
#include "platform/zone_contract.h"

namespace orlocal::contract {
namespace {

INSTANTIATE_TEST_SUITE_P(Fake, TimeZoneContract, testing::Values([]() -> std::shared_ptr<const TimeZone> {
                           return std::make_shared<fakes::FakeTimeZone>(fakes::FakeTimeZone::berlin());
                         }));

}  // namespace
}  // namespace orlocal::contract
