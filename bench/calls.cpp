#include <memory>
#include <string>

#include "measurements.h"
#include "solution.h"

namespace orlocal::bench {
namespace {

/// The same texts in and out with nothing in between: what any call through a pointer costs.
using BareFunction = void (*)(const std::u16string& argument, std::u16string& result);

void answer(const std::u16string& argument, std::u16string& result) {
  result.assign(argument.size() == 5 ? u"3.0.0.1" : u"Orlocal 3.0.0.1");
}

BareFunction volatile g_bare = &answer;

}  // namespace

void measureCallOverhead(Report& report, const Setting& setting) {
  constexpr std::size_t kCalls = 200'000;
  const auto plugin = startPlugin(setting.plugin);
  Call version(u"Orlo_Version", {u"short"});
  Row row = compare(
      "call of a trivial function", setting.rounds,
      [&] {
        return seconds([&] {
          for (std::size_t i = 0; i < kCalls; ++i) version();
        });
      },
      [&] {
        return seconds([&] {
          for (std::size_t i = 0; i < kCalls; ++i) {
            // The host makes the argument and the result anew, and so does the floor: objects of their own.
            const auto argument = std::make_unique<std::u16string>(u"short");
            const auto result = std::make_unique<std::u16string>();
            g_bare(*argument, *result);
          }
        });
      });
  row.rows = kCalls;
  row.aim = 4;
  report.add(std::move(row));
}

}  // namespace orlocal::bench
