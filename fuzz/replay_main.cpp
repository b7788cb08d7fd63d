// Runs a fuzz target over the files of its corpus, each whole and cut short at every octet of its first kilobyte.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size);

int main(int count, char** arguments) {
  int files = 0;
  for (int n = 1; n < count; ++n) {
    for (const auto& entry : std::filesystem::directory_iterator(arguments[n])) {
      std::ifstream file(entry.path(), std::ios::binary);
      const std::string bytes((std::istreambuf_iterator<char>(file)), {});
      const auto* begin = reinterpret_cast<const std::uint8_t*>(bytes.data());
      LLVMFuzzerTestOneInput(begin, bytes.size());
      for (std::size_t size = 0; size < std::min<std::size_t>(bytes.size(), 1024); ++size) {
        LLVMFuzzerTestOneInput(begin, size);
      }
      ++files;
    }
  }
  std::printf("%d files\n", files);
  return files > 0 ? 0 : 1;
}
