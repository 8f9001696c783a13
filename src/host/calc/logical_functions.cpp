#include <array>
#include <chrono>
#include <cstdlib>
#include <random>
#include <string>

#include <fmt/format.h>
#include <unistd.h>

#include "host/calc/arguments.h"
#include "host/calc/builtins.h"
#include "host/fmwrapper/unicode.h"

namespace orlocal::host::calc {

namespace {

/// Empty, or a value that could not be made.
Value isEmpty(CallContext&, Arguments a) { return truth(a[0].isEmpty() || !a[0].isValid()); }
Value isValid(CallContext&, Arguments a) { return truth(a[0].isValid()); }

Value evaluateText(CallContext& context, Arguments a) { return a[0].isValid() ? context.evaluate(a[0].utf8()) : a[0]; }
Value isValidExpression(CallContext& context, Arguments a) { return truth(context.isValidExpression(a[0].utf8())); }

Value yes(CallContext&, Arguments) { return truth(true); }
Value no(CallContext&, Arguments) { return truth(false); }

Value currentDate() { return Value::ofDate(DateTime::now()); }
Value currentTime() { return Value::ofTime(DateTime::now()); }
Value currentTimestamp() { return Value::ofTimestamp(DateTime::now()); }

/// Milliseconds since the beginning of year 1, in UTC.
Value currentUtcMilliseconds() {
  constexpr std::int64_t kUnixEpoch = 62'135'596'800'000;
  return Value::ofNumber(std::chrono::floor<std::chrono::milliseconds>(DateTime::currentMoment()).count() + kUnixEpoch);
}

Value hostName() {
  std::array<char, 256> name{};
  return Value::ofUtf8(::gethostname(name.data(), name.size() - 1) == 0 ? name.data() : "");
}

Value userName() {
  const char* user = std::getenv("USER");
  return Value::ofUtf8(user == nullptr ? "" : user);
}

/// The host's number for Linux.
Value systemPlatform() { return Value::ofNumber(5); }

Value applicationVersion() { return Value::ofUtf8("Orlocal 3.0"); }

/// A random identifier (RFC 9562, version 4).
Value uuid() {
  std::random_device random;
  std::array<std::uint32_t, 4> bits{random(), random(), random(), random()};
  bits[1] = (bits[1] & 0xFFFF0FFFU) | 0x00004000U;
  bits[2] = (bits[2] & 0x3FFFFFFFU) | 0x80000000U;
  return Value::ofUtf8(fmt::format("{:08X}-{:04X}-{:04X}-{:04X}-{:04X}{:08X}", bits[0], bits[1] >> 16U,
                                   bits[1] & 0xFFFFU, bits[2] >> 16U, bits[2] & 0xFFFFU, bits[3]));
}

constexpr Builtin kFunctions[] = {
    {"Case", "Case ( test1 ; result1 {; test2 ; result2 ; ... ; defaultResult} )", 2, -1, Form::kCase, nullptr},
    {"Choose", "Choose ( test ; result0 {; result1 ; result2...} )", 2, -1, Form::kChoose, nullptr},
    {"Evaluate", "Evaluate ( expression )", 1, 1, Form::kFunction, evaluateText},
    {"False", "False", 0, 0, Form::kFunction, no},
    {"Get", "Get ( functionName )", 1, 1, Form::kGet, nullptr},
    {"If", "If ( test ; resultOne {; resultTwo} )", 2, 3, Form::kCase, nullptr},
    {"IsEmpty", "IsEmpty ( value )", 1, 1, Form::kFunction, isEmpty},
    {"IsValid", "IsValid ( value )", 1, 1, Form::kFunction, isValid},
    {"IsValidExpression", "IsValidExpression ( expression )", 1, 1, Form::kFunction, isValidExpression},
    {"Let", "Let ( {[} var1 = expression1 {; var2 = expression2...]} ; calculation )", 2, 2, Form::kLet, nullptr},
    {"True", "True", 0, 0, Form::kFunction, yes},
    {"While", "While ( [ initialVariable ] ; condition ; [ logic ] ; result )", 4, 4, Form::kWhile, nullptr},
};

constexpr GetEntry kGets[] = {
    {"ApplicationVersion", applicationVersion},
    {"CurrentDate", currentDate},
    {"CurrentHostTimestamp", currentTimestamp},
    {"CurrentTime", currentTime},
    {"CurrentTimestamp", currentTimestamp},
    {"CurrentTimeUTCMilliseconds", currentUtcMilliseconds},
    {"HostName", hostName},
    {"SystemPlatform", systemPlatform},
    {"UserName", userName},
    {"UUID", uuid},
};

}  // namespace

std::span<const Builtin> logicalFunctions() { return kFunctions; }
std::span<const GetEntry> allGets() { return kGets; }

}  // namespace orlocal::host::calc
