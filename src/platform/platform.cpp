#include "platform/platform.h"

#include <utility>

namespace orlocal {
namespace {

std::shared_ptr<Platform>& current() {
  static auto& instance = *new std::shared_ptr<Platform>;
  return instance;
}

struct ClosesStoresAtTheEnd {
  ~ClosesStoresAtTheEnd() {
    if (current()) { current()->closeStores(); }
  }
};

}  // namespace

Platform& platform() {
  static const ClosesStoresAtTheEnd end;
  auto& instance = current();
  if (!instance) { instance = makeSystemPlatform(); }
  return *instance;
}

void setPlatform(std::shared_ptr<Platform> replacement) { current() = std::move(replacement); }

}  // namespace orlocal
