#include <array>
#include <memory>
#include <string>

#include "parts.h"
#include "processes.h"
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
  answerWith({units.data(), size}, result);
  return 0;
}

/// The same without any host: one string in, one out.
void answer(const std::u16string& argument, std::u16string& result) { result = argument; }

fmx::ExternalFunction volatile g_echo = &echo;
void (*volatile g_answer)(const std::u16string&, std::u16string&) = &answer;

/// In a process of its own.
template <class Prepare>
Contender repeated(std::string name, const Prepare& prepare) {
  return {std::move(name), [prepare] {
            return inChild([&] {
              auto body = prepare();
              return Outcome{seconds([&] {
                               for (std::size_t i = 0; i < kCalls; ++i) { body(); }
                             }),
                             kCalls};
            });
          }};
}

}  // namespace

void measureCalls(Report& report, const Setting& setting) {
  const auto version = repeated("", [&] {
    return [plugin = std::shared_ptr(startPlugin(setting.plugin)),
            call = std::make_shared<Call>(u"Orlo_Version", std::initializer_list<std::u16string_view>{u"short"})] {
      (*call)();
    };
  });
  const auto bare = repeated("a bare function that hands its text back", [] {
    return [call = std::make_shared<Call>(g_echo, std::initializer_list<std::u16string_view>{u"short"})] { (*call)(); };
  });
  const auto strings = repeated("two strings without a host", [] {
    return [argument = std::u16string(u"short"), result = std::u16string()]() mutable { g_answer(argument, result); };
  });
  Row row = compare(setting.rounds, version, {bare, strings});
  row.name = "call of a trivial function";
  row.aim = 4;
  report.add(std::move(row));
}

}  // namespace orlocal::bench
