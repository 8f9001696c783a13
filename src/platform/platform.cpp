#include "platform/platform.h"

#include <utility>

namespace orlocal {
namespace {

std::shared_ptr<Platform>& current() {
  static std::shared_ptr<Platform> instance;
  return instance;
}

}  // namespace

Platform& platform() {
  auto& instance = current();
  if (!instance) instance = makeSystemPlatform();
  return *instance;
}

void setPlatform(std::shared_ptr<Platform> replacement) { current() = std::move(replacement); }

}  // namespace orlocal
