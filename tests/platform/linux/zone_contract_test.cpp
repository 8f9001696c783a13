#include "platform/zone_contract.h"

#include "platform/linux/zone.h"

namespace orlocal::contract {
namespace {

INSTANTIATE_TEST_SUITE_P(Named, TimeZoneContract, testing::Values([]() -> std::shared_ptr<const TimeZone> {
                           return timeZoneNamed("Europe/Berlin");
                         }));
INSTANTIATE_TEST_SUITE_P(OfTheUser, TimeZoneContract, testing::Values([]() -> std::shared_ptr<const TimeZone> {
                           return makeTimeZone(store::Zone::ofUser());
                         }));

}  // namespace
}  // namespace orlocal::contract
