#include <fstream>
#include <iterator>
#include <set>
#include <string>

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/fmwrapper/registry.h"

namespace {

std::set<std::string> declaredFunctions() {
  std::ifstream header(ORLOCAL_FM_API);
  const std::string source{std::istreambuf_iterator<char>(header), {}};
  std::set<std::string> names;
  for (std::size_t at = source.find("FM_"); at != std::string::npos; at = source.find("FM_", at + 1)) {
    const std::size_t end = source.find('(', at);
    if (end == std::string::npos) { break; }
    names.insert(source.substr(at, end - at));
  }
  return names;
}

TEST(HostInterface, DeclaresEveryFunctionOnce) { EXPECT_EQ(declaredFunctions().size(), 155U); }

TEST(HostInterface, OffersEveryFunctionThatItDeclares) {
  // The library is in the process because the host's side of it is used.
  orlocal::host::Registry::instance();
  for (const std::string& name : declaredFunctions()) { EXPECT_NE(dlsym(RTLD_DEFAULT, name.c_str()), nullptr) << name; }
}

TEST(HostInterface, IsFoundUnderTheNameThatPluginsAskFor) {
  void* library = dlopen("libFMWrapper.so", RTLD_NOW | RTLD_NOLOAD);
  ASSERT_NE(library, nullptr);
  EXPECT_NE(dlsym(library, "FM_Text_Constructor1"), nullptr);
  dlclose(library);
}

}  // namespace
