#include <array>
#include <memory>
#include <string>

#include "measurements.h"
#include "solution.h"

namespace orlocal::bench {
namespace {

constexpr std::size_t kCalls = 200'000;

/// A function of the host's signature that takes its text from the host and gives one back, and does nothing else: what
/// any plug-in's call costs at the least.
fmx::ErrorCode echo(std::int16_t, const fmx::ExprEnv*, const fmx::DataVect* arguments, fmx::Data* result) {
  fmx::Exception x;
  const fmx::Text* argument = fmx::FM_DataVect_AtAsText(arguments, 0, &x);
  std::array<char16_t, 64> units;
  const std::uint32_t size = fmx::FM_Text_GetSize(argument, &x);
  fmx::FM_Text_GetUnicode(argument, units.data(), 0, size, &x);
  fmx::Text* text = fmx::FM_Text_Constructor1(&x);
  fmx::FM_Text_AssignUnicodeWithLength(text, units.data(), size, &x);
  fmx::FM_Data_SetAsText(result, text, fmx::FM_Data_GetLocale(result, &x), fmx::kText, &x);
  fmx::FM_Text_Delete(text, &x);
  return 0;
}

/// The same without any host: one string in, one out.
void answer(const std::u16string& argument, std::u16string& result) { result = argument; }

fmx::ExternalFunction volatile g_echo = &echo;
void (*volatile g_answer)(const std::u16string&, std::u16string&) = &answer;

template <class Body>
double repeated(const Body& body) {
  return seconds([&] {
    for (std::size_t i = 0; i < kCalls; ++i) { body(); }
  });
}

}  // namespace

void measureCallOverhead(Report& report, const Setting& setting) {
  const auto plugin = startPlugin(setting.plugin);
  Call version(u"Orlo_Version", {u"short"});
  Call bare(g_echo, {u"short"});
  Row row = compare(
      "call of a trivial function", setting.rounds, [&] { return repeated([&] { version(); }); },
      [&] { return repeated([&] { bare(); }); });
  row.rows = kCalls;
  row.aim = 4;
  report.add(std::move(row));

  const std::u16string argument = u"short";
  std::u16string result;
  Row plain = compare(
      "the same beside two strings without a host", setting.rounds, [&] { return repeated([&] { version(); }); },
      [&] { return repeated([&] { g_answer(argument, result); }); });
  plain.rows = kCalls;
  report.add(std::move(plain));
}

}  // namespace orlocal::bench
