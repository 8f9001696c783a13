#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

/// Runs every file of the folders given as one input: what was found once stays found in the ordinary builds.
int main(int count, char** words) {
  std::size_t inputs = 0;
  for (int i = 1; i < count; ++i) {
    for (const auto& entry : std::filesystem::directory_iterator(words[i])) {
      std::ifstream file(entry.path(), std::ios::binary);
      const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
      std::cout << entry.path().filename().string() << std::endl;  // flushed: the last line names a crashing input
      LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
      ++inputs;
    }
  }
  if (inputs == 0) { std::cerr << "no inputs found\n"; }
  return inputs > 0 ? 0 : 1;
}
