#include "host/fmwrapper/call.h"

#include <exception>
#include <string>

#include <cxxabi.h>

#include "host/fmwrapper/handles.h"
#include "host/fmwrapper/unicode.h"

namespace orlocal::host {

namespace {

std::string countText(std::int16_t count) { return std::to_string(count) + (count == 1 ? " value" : " values"); }

/// What a function takes, for the sentence that refuses anything else.
std::string arity(const RegisteredFunction& function) {
  if (function.maxArgs == -1) { return "at least " + countText(function.minArgs); }
  if (function.minArgs == function.maxArgs) { return countText(function.minArgs); }
  return std::to_string(function.minArgs) + " to " + countText(function.maxArgs);
}

Failed callFailure(ErrorCode code, std::u16string_view name, const std::string& reason) {
  return failure(code, toUtf8(name) + " " + reason);
}

Result<Value> call(const RegisteredFunction& function, const std::vector<Value>& arguments,
                   const Environment& environment) {
  const std::u16string_view name = function.name;
  Value result;
  try {
    const fmx::ErrorCode code = function.function(function.key.id, handleOf<fmx::ExprEnv>(environment),
                                                  handleOf<fmx::DataVect>(arguments), handleOf<fmx::Data>(result));
    if (code != 0) {
      return callFailure(ErrorCode::kRefused, name, "answered the error " + std::to_string(code) + ".");
    }
    return result;
  } catch (const std::exception& exception) {
    return callFailure(ErrorCode::kIo, name, std::string("failed with an exception: ") + exception.what());
  } catch (abi::__forced_unwind&) {
    throw;  // the thread is being cancelled
  } catch (...) { return callFailure(ErrorCode::kIo, name, "failed with an exception of an unknown kind."); }
}

}  // namespace

Result<Value> callFunction(const RegisteredFunction& function, const std::vector<Value>& arguments,
                           const Environment& environment) {
  const std::size_t count = arguments.size();
  const bool tooFew = count < static_cast<std::size_t>(function.minArgs);
  const bool tooMany = function.maxArgs != -1 && count > static_cast<std::size_t>(function.maxArgs);
  if (tooFew || tooMany) {
    return callFailure(ErrorCode::kInvalid, function.name,
                       "takes " + arity(function) + ", not " + std::to_string(count) + ".");
  }
  return call(function, arguments, environment);
}

}  // namespace orlocal::host
