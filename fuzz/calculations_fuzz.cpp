#include <cstddef>
#include <cstdint>
#include <string>

#include "host/calc/calc_failure.h"
#include "host/calc/session.h"
#include "temporary_folder.h"

// Any text as a calculation: read, and evaluated within small bounds. Results convert to every type.

namespace {

using namespace orlocal::host;

class NoFunctions : public calc::FunctionLibrary {
 public:
  std::vector<calc::Signature> signatures() const override { return {}; }
  orlocal::Result<Value> call(std::string_view, std::span<const Value>) override {
    return orlocal::failure(orlocal::ErrorCode::kNotFound, "there are none");
  }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > 8'192) { return 0; }
  NoFunctions none;
  calc::Session session(none, {.iterations = 50, .depth = 200, .textLength = 20'000});
  const auto source = orlocal::fuzz::textOf(data, size);
  const auto result = session.evaluate(source);
  if (!result) {
    (void)calc::describe(source, result.error());
    return 0;
  }
  for (const auto type : {fmx::kText, fmx::kNumber, fmx::kDate, fmx::kTime, fmx::kTimeStamp, fmx::kBoolean}) {
    Value value = result->value;
    value.convertTo(type);
    (void)value.utf8();
  }
  return 0;
}
