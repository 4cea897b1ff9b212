// Runs inputs from files and directories, where no fuzzer makes new ones.
#include "fuzz_input.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

namespace {

void replay(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  const std::vector<char> bytes(std::istreambuf_iterator<char>(file), {});
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
}

} // namespace

int main(int argc, char** argv) {
  int count = 0;
  for (int i = 1; i < argc; ++i) {
    if (std::filesystem::is_directory(argv[i])) {
      for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
        replay(entry.path());
        ++count;
      }
    } else {
      replay(argv[i]);
      ++count;
    }
  }
  std::cerr << count << " inputs" << std::endl;
  return count > 0 ? 0 : 1;
}
