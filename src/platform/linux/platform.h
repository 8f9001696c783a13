#pragma once

#include <memory>

namespace orlocal {

class AddressBook;
class EventKit;
class StoreAccess;

// The store in the shapes that the platform gives it; all of them work on the same open store.

std::unique_ptr<EventKit> makeEventKit(std::shared_ptr<StoreAccess> access);
std::unique_ptr<AddressBook> makeAddressBook(std::shared_ptr<StoreAccess> access);

}  // namespace orlocal
