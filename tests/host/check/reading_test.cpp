// What is read of plug-ins before they run: prototypes, and files that may be anything.
#include <filesystem>
#include <fstream>
#include <iterator>

#include <gmock/gmock.h>
#include <unistd.h>

#include "host/check/elf_file.h"
#include "host/check/prototype.h"

namespace orlocal::host::check {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(PrototypeText, HasANameAndArguments) {
  const Prototype read = readPrototype("Tally_Repeat( text {; times ; other} )");
  EXPECT_EQ(read.name, "Tally_Repeat");
  EXPECT_THAT(read.required, ElementsAre("text"));
  EXPECT_THAT(read.optional, ElementsAre("times", "other"));
  EXPECT_TRUE(read.isWellFormed);
  EXPECT_THAT(readPrototype("Tally( {one {; two}} )").optional, ElementsAre("one", "two"));
  EXPECT_THAT(readPrototype("Tally").required, IsEmpty());
  EXPECT_TRUE(readPrototype("Tally( first ; … )").endsOpen);
}

TEST(PrototypeText, HasBracketsThatMatch) {
  for (const char* text : {"Tally( a", "Tally( a } )", "Tally( { a )", "Tally) a ("}) {
    EXPECT_FALSE(readPrototype(text).isWellFormed) << text;
  }
}

class PluginFile : public testing::Test {
 protected:
  PluginFile() : file(std::filesystem::temp_directory_path() / ("orlocal_elf_" + std::to_string(::getpid()))) {}
  ~PluginFile() override { std::filesystem::remove(file); }
  Result<ElfFile> reading(const std::string& content) {
    std::ofstream(file, std::ios::binary) << content;
    return readElfFile(file);
  }
  static std::string plugin() {
    std::ifstream in(ORLOCAL_TALLY, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
  }
  std::filesystem::path file;
};

TEST_F(PluginFile, SaysWhatItIs) {
  const auto read = readElfFile(ORLOCAL_TALLY);
  ASSERT_TRUE(read) << read.error().message;
  EXPECT_TRUE(read->forThisMachine);
  EXPECT_TRUE(read->isSharedObject);
  EXPECT_EQ(read->soname, "1.0");
  EXPECT_THAT(read->needed, Contains("libFMWrapper.so"));
  EXPECT_THAT(read->exported, ElementsAre("FMExternCallProc"));
  EXPECT_THAT(read->runPath, IsEmpty());
}

TEST_F(PluginFile, IsRefusedWhenItIsNone) {
  for (const char* content : {"", "MZ", "#!/bin/sh\n",
                              "\x7F"
                              "ELF"}) {
    EXPECT_FALSE(reading(content));
  }
}

TEST_F(PluginFile, MayBeCutOffOrBrokenAnywhere) {
  const std::string whole = plugin();
  for (std::size_t size = 64; size < whole.size(); size += whole.size() / 97) { reading(whole.substr(0, size)); }
  // The headers and tables are in front.
  for (std::size_t at = 4; at < 4'096 && at < whole.size(); at += 5) {
    std::string broken = whole;
    broken[at] = static_cast<char>(broken[at] ^ 0xFF);
    reading(broken);
  }
}

}  // namespace
}  // namespace orlocal::host::check
