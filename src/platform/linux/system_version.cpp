#include "platform/linux/system_version.h"

#include <charconv>
#include <cstdlib>
#include <string_view>
#include <system_error>

#include "base/settings.h"

namespace orlocal {
namespace {

/// The current calendar platform, in its last form.
constexpr long kDefaultMinor = 15;

class LinuxSystemVersion final : public SystemVersion {
 public:
  std::optional<long> minorVersion() const override {
    const char* setting = std::getenv("ORLOCAL_SYSTEM_MINOR");
    const auto inFile = setting == nullptr ? Settings::ofUser().fileValue(Setting::kSystemMinor) : std::nullopt;
    if (setting == nullptr && !inFile) { return kDefaultMinor; }
    const std::string_view text = setting != nullptr ? std::string_view(setting) : inFile->text;
    long minor = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), minor);
    if (error != std::errc() || end != text.data() + text.size()) { return std::nullopt; }
    return minor;
  }
};

}  // namespace

std::unique_ptr<SystemVersion> makeSystemVersion() { return std::make_unique<LinuxSystemVersion>(); }

}  // namespace orlocal
