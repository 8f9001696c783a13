// The strings that a host asks for.
#include <fmt/format.h>

#include "host/check/check.h"
#include "host/check/raw_call.h"
#include "host/check/trial.h"
#include "host/fmwrapper/unicode.h"

namespace orlocal::host::check {
namespace {

constexpr std::uint8_t kAsked[] = {Plugin::kNameString, Plugin::kSettingsString, Plugin::kOptionsString,
                                   Plugin::kHelpString};
constexpr std::uint32_t kRoom = 4'096;

/// What stands before the terminator; the whole room without one.
std::u16string textOf(const AskedString& asked) {
  return asked.touched ? asked.units.substr(0, asked.units.find(u'\0')) : std::u16string();
}

void hasAName(Trial& trial) {
  const auto plugin = trial.opened();
  if (plugin == nullptr) { return; }
  trial.expect(!textOf(askString(*plugin, Plugin::kNameString, kRoom)).empty(), "string 128, its name, is empty.");
}

void hasOptions(Trial& trial) {
  const auto plugin = trial.opened();
  if (plugin == nullptr) { return; }
  const std::u16string options = textOf(askString(*plugin, Plugin::kOptionsString, kRoom));
  if (!trial.expect(options.size() == 11,
                    fmt::format("string 131, the options, is \"{}\", which is {} characters and not 11.",
                                toUtf8(options), options.size()))) {
    return;
  }
  const auto isOneOf = [&](std::size_t at, std::u16string_view allowed) {
    trial.expect(
        allowed.find(options[at]) != std::u16string_view::npos,
        fmt::format("character {} of the options \"{}\" is none of \"{}\".", at + 1, toUtf8(options), toUtf8(allowed)));
  };
  for (std::size_t at = 0; at < 4; ++at) {
    trial.expect(options[at] > 0x20 && options[at] < 0x7F,
                 fmt::format("character {} of its ID is none that can be printed.", at + 1));
  }
  isOneOf(4, u"1");
  isOneOf(5, u"Yn");
  isOneOf(6, u"n");
  isOneOf(7, u"Y");
  isOneOf(8, u"Yn");
  isOneOf(9, u"Yn");
  isOneOf(10, u"n");
}

void explainsItself(Trial& trial) {
  const auto plugin = trial.opened();
  if (plugin == nullptr) { return; }
  trial.expect(!textOf(askString(*plugin, Plugin::kSettingsString, kRoom)).empty(),
               "string 129, the text of its settings, is empty.");
  trial.expect(!textOf(askString(*plugin, Plugin::kHelpString, kRoom)).empty(),
               "string 132, the address of its help, is empty.");
}

void answersBeforeAndAfterStartUp(Trial& trial) {
  const auto plugin = trial.opened();
  if (plugin == nullptr) { return; }
  for (const std::uint8_t id : kAsked) {
    const std::u16string before = textOf(askString(*plugin, id, kRoom));
    if (const auto started = plugin->start(); !started) { trial.fail(started.error().message); }
    trial.expect(textOf(askString(*plugin, id, kRoom)) == before,
                 fmt::format("string {} is another one after start-up.", id));
    if (const Status done = plugin->shutdown(); !done) { trial.fail(done.error().message); }
    trial.expect(textOf(askString(*plugin, id, kRoom)) == before,
                 fmt::format("string {} is another one after shutdown.", id));
  }
}

void answersEveryNumber(Trial& trial) {
  const auto plugin = trial.opened();
  if (plugin == nullptr) { return; }
  for (int id = 0; id <= 255; ++id) {
    trial.step(fmt::format("asking for string {}", id));
    const AskedString asked = askString(*plugin, static_cast<std::uint8_t>(id), kRoom);
    trial.expect(asked.intact, fmt::format("string {} is written beyond its room.", id));
  }
}

void keepsWithinTheRoom(Trial& trial) {
  const auto plugin = trial.opened();
  if (plugin == nullptr) { return; }
  for (const std::uint8_t id : kAsked) {
    const std::size_t whole = textOf(askString(*plugin, id, kRoom)).size();
    for (std::uint32_t capacity = 0; capacity <= whole + 3; ++capacity) {
      trial.step(fmt::format("asking for string {} with room for {}", id, capacity));
      const AskedString asked = askString(*plugin, id, capacity);
      trial.expect(asked.intact, fmt::format("string {} is written beyond a room of {} units.", id, capacity));
      if (asked.touched) {
        trial.expect(asked.units.find(u'\0') != std::u16string::npos,
                     fmt::format("string {} has no end in a room of {} units.", id, capacity));
      }
    }
  }
}

void toleratesNoRoom(Trial& trial) {
  const auto plugin = trial.opened();
  if (plugin == nullptr) { return; }
  for (const std::uint32_t capacity : {0U, 1U, 255U}) {
    trial.step(fmt::format("asking for its name with room for {} at no address", capacity));
    fmx::ExternCall record = messageFor(*plugin, fmx::kCallGetString);
    record.parm1 = Plugin::kNameString;
    record.parm3 = capacity;
    entryOf (*plugin)(&record);
  }
}

void isWellFormed(Trial& trial) {
  const auto plugin = trial.opened();
  if (plugin == nullptr) { return; }
  for (const std::uint8_t id : kAsked) {
    const std::u16string text = textOf(askString(*plugin, id, kRoom));
    trial.expect(toUtf16(toUtf8(text)) == text, fmt::format("string {} is no proper Unicode.", id));
  }
}

void ignoresTheLanguageNumber(Trial& trial) {
  const auto plugin = trial.opened();
  if (plugin == nullptr) { return; }
  for (int language = 0; language <= 0x7FFF; language += 11) {
    trial.step(fmt::format("asking for its name in language {}", language));
    const AskedString asked = askString(*plugin, Plugin::kNameString, kRoom, static_cast<std::uint16_t>(language));
    trial.expect(asked.intact && asked.touched, fmt::format("it has no name in language {}.", language));
  }
}

}  // namespace

std::vector<Check> stringChecks() {
  return {
      {"string-name", "It has a name.", Level::kBasic, hasAName},
      {"string-options", "Its options are eleven characters that hosts know.", Level::kBasic, hasOptions},
      {"string-texts", "It has texts for its settings and its help.", Level::kStrict, explainsItself},
      {"string-any-time", "Strings are the same before start-up, after it and after shutdown.", Level::kUsual,
       answersBeforeAndAfterStartUp},
      {"string-every-number", "Any string may be asked for, and none is written beyond its room.", Level::kBasic,
       answersEveryNumber},
      {"string-every-capacity", "Strings keep within rooms of any size, and have an end there.", Level::kBasic,
       keepsWithinTheRoom},
      {"string-no-room", "A string may be asked for without room.", Level::kUsual, toleratesNoRoom},
      {"string-unicode", "Strings are proper Unicode.", Level::kUsual, isWellFormed},
      {"string-languages", "Its name may be asked for in any language.", Level::kUsual, ignoresTheLanguageNumber},
  };
}

}  // namespace orlocal::host::check
