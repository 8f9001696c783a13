// What the file says of itself, before it is loaded.
#include <algorithm>

#include <fmt/format.h>

#include "host/check/check.h"
#include "host/check/elf_file.h"
#include "host/check/trial.h"

namespace orlocal::host::check {
namespace {

constexpr std::string_view kEntryPoint = "FMExternCallProc";
constexpr std::string_view kHostLibrary = "libFMWrapper.so";

/// None, and failed, for a file that cannot be read as one.
std::optional<ElfFile> fileOf(Trial& trial) {
  auto file = readElfFile(trial.plugin());
  if (!file) {
    trial.fail(file.error().message + ".");
    return std::nullopt;
  }
  return *std::move(file);
}

bool has(const std::vector<std::string>& names, std::string_view name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

void isForThisMachine(Trial& trial) {
  if (const auto file = fileOf(trial)) {
    trial.expect(file->forThisMachine, "it was built for another processor.");
    trial.expect(file->isSharedObject, "it is no shared object.");
  }
}

void exportsTheEntryPoint(Trial& trial) {
  if (const auto file = fileOf(trial)) {
    trial.expect(has(file->exported, kEntryPoint), fmt::format("{} is not among its exported symbols.", kEntryPoint));
  }
}

void endsInFmx(Trial& trial) {
  trial.expect(trial.plugin().extension() == ".fmx",
               "a host on Linux loads files that end in .fmx; this one ends otherwise.");
  trial.expect(!trial.plugin().filename().string().starts_with("lib"), "its name begins with \"lib\".");
}

void namesTheHostLibrary(Trial& trial) {
  if (const auto file = fileOf(trial)) {
    trial.expect(has(file->needed, kHostLibrary),
                 fmt::format("{} is not among the libraries that it needs (NEEDED), so that a host's loader may find "
                             "none of the interface's functions.",
                             kHostLibrary));
  }
}

void namesNoFolderOfItsBuild(Trial& trial) {
  const auto file = fileOf(trial);
  if (!file) { return; }
  for (const std::string& folder : file->runPath) {
    const bool ofTheSystem = folder.starts_with("/opt/") || folder.starts_with("/usr/") || folder.starts_with("/lib");
    trial.expect(folder.starts_with("$ORIGIN") || ofTheSystem,
                 fmt::format("it looks for libraries in {}, where it was built.", folder));
  }
}

void saysItsVersion(Trial& trial) {
  if (const auto file = fileOf(trial)) {
    const bool isVersion = !file->soname.empty() && file->soname.find_first_not_of("0123456789.") == std::string::npos;
    trial.expect(isVersion, fmt::format("its SONAME is \"{}\"; a host shows that as its version.", file->soname));
  }
}

void exportsLittle(Trial& trial) {
  const auto file = fileOf(trial);
  if (!file) { return; }
  const auto mangled = std::count_if(file->exported.begin(), file->exported.end(),
                                     [](const std::string& name) { return name.starts_with("_Z"); });
  trial.expect(mangled == 0, fmt::format("{} C++ symbols are exported, which may meet others of the same name in the "
                                         "host's process; build with -fvisibility=hidden.",
                                         mangled));
}

void isHardened(Trial& trial) {
  if (const auto file = fileOf(trial)) {
    trial.expect(!file->hasTextRelocations, "its code is changed while it is loaded (TEXTREL).");
    trial.expect(!file->hasExecutableStack, "it asks for an executable stack.");
  }
}

}  // namespace

std::vector<Check> fileChecks() {
  return {
      {"file-for-this-machine", "The file is a shared object for this machine.", Level::kBasic, isForThisMachine},
      {"file-entry-point", "The file exports FMExternCallProc.", Level::kBasic, exportsTheEntryPoint},
      {"file-name", "The file's name is one that hosts load.", Level::kUsual, endsInFmx},
      {"file-host-library", "The file names the library with the host's functions.", Level::kUsual,
       namesTheHostLibrary},
      {"file-run-path", "The file looks for libraries where users have them.", Level::kUsual, namesNoFolderOfItsBuild},
      {"file-version", "The file's SONAME is the version that users are to see.", Level::kStrict, saysItsVersion},
      {"file-exports-little", "The file exports no C++ symbols.", Level::kStrict, exportsLittle},
      {"file-hardened", "The file's code and stack are what modern systems expect.", Level::kStrict, isHardened},
  };
}

}  // namespace orlocal::host::check
