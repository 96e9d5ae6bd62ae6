// Feeds a fuzz target the files of the folders named on the command line, and each of them cut
// short at every eighth of its length, in builds without libFuzzer.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

void feed(const std::vector<std::uint8_t>& whole) {
  for (std::size_t eighths = 0; eighths <= 8; ++eighths) {
    // A copy of exactly that size, so that a read past the end is seen by a memory checker.
    const auto size = static_cast<std::ptrdiff_t>(whole.size() * eighths / 8);
    const std::vector<std::uint8_t> part(whole.begin(), whole.begin() + size);
    LLVMFuzzerTestOneInput(part.data(), part.size());
  }
}

}  // namespace

int main(int argc, char** argv) {
  namespace fs = std::filesystem;
  std::size_t count = 0;
  feed({});
  for (int i = 1; i < argc; ++i) {
    std::vector<fs::path> files;
    for (const fs::directory_entry& entry : fs::directory_iterator(argv[i]))
      if (entry.is_regular_file()) files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    for (const fs::path& file : files) {
      std::ifstream in(file, std::ios::binary);
      feed({std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()});
      ++count;
    }
  }
  std::printf("%zu seeds replayed\n", count);
  return 0;
}
