#include "temporary_file.h"

#include <utility>
#include <vector>

#include "console.h"

namespace zantrel_cli {

TemporaryFile::~TemporaryFile() {
  finish();
  if (exists()) removeFile(path_);
}

bool TemporaryFile::create() {
  path_ = makeTemporaryFile();
  return exists();
}

bool TemporaryFile::append(std::span<const std::uint8_t> bytes) {
  if (file_ == nullptr) file_ = openFile(path_, "ab");
  return file_ != nullptr && std::fwrite(bytes.data(), 1, bytes.size(), file_) == bytes.size();
}

bool TemporaryFile::finish() {
  std::FILE* const file = std::exchange(file_, nullptr);
  return file == nullptr || std::fclose(file) == 0;
}

bool TemporaryFile::copyToStandardOutput() const {
  std::FILE* const file = openFile(path_, "rb");
  if (file == nullptr) return false;
  std::vector<std::uint8_t> block(std::size_t{1} << 16);
  bool good = true;
  for (std::size_t got = block.size(); good && got == block.size();) {
    got = std::fread(block.data(), 1, block.size(), file);
    good = std::ferror(file) == 0 && writeStandardOutput({block.data(), got});
  }
  std::fclose(file);
  return good;
}

}  // namespace zantrel_cli
