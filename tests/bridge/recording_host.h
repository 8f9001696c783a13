#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/host/fm_api.h"

namespace orlocal::fakes {

/// What one registration told the host.
struct Registration {
  std::string pluginId;
  std::int16_t id = 0;
  std::string name;
  std::string prototype;
  std::string description;
  int minArgs = 0;
  int maxArgs = 0;
  std::uint32_t flags = 0;
  std::string xml;
  fmx::ExternalFunction function = nullptr;
};

/// Stands before the host's library: notes the calls that the plug-in makes and passes them on. Registrations are noted
/// instead of passed on.
class RecordingHost {
 public:
  static RecordingHost& instance();
  void clear() { *this = RecordingHost(); }

  std::vector<Registration> functions;    ///< without descriptions
  std::vector<Registration> functionsEx;  ///< with descriptions
  std::vector<Registration> steps;
  std::vector<std::int16_t> unregisteredFunctions;
  std::vector<std::int16_t> unregisteredSteps;

  /// What the host answers to registrations and unregistrations.
  fmx::ErrorCode registrationAnswer = 0;

  /// Names of the calls made, with the telling argument where there is one; noted while `isRecording`.
  std::vector<std::string> calls;
  bool isRecording = false;

  /// The call of this name fails with `failureCode`; with an ID, only for that ID.
  std::string failingCall;
  std::int32_t failureCode = 0;
  std::int16_t failingId = 0;

  void note(const std::string& call) {
    if (isRecording) { calls.push_back(call); }
  }
  bool fails(const std::string& call, std::int16_t id, fmx::Exception* x) const {
    if (failingCall != call || (failingId != 0 && failingId != id)) { return false; }
    x->code = failureCode;
    return true;
  }
};

}  // namespace orlocal::fakes
