#include "long_streams.h"

#include "console.h"
#include "temporary_file.h"

namespace zantrel_cli {
namespace {

constexpr std::size_t kMostInMemory = std::size_t{8} << 20;

/// Standard input, in memory or in a file.
class HeldInput {
 public:
  bool read() {
    const auto take = [this](std::span<const std::uint8_t> block) { return add(block); };
    return readStandardInput(take) && file_.finish() && !Progress::interrupted();
  }
  bool isFile() const { return file_.exists(); }
  const std::string& path() const { return file_.path(); }
  const Zantrel::Bytes& bytes() const { return bytes_; }

 private:
  bool add(std::span<const std::uint8_t> block) {
    if (Progress::interrupted()) return false;
    if (!isFile() && bytes_.size() + block.size() <= kMostInMemory) {
      bytes_.insert(bytes_.end(), block.begin(), block.end());
      return true;
    }
    if (!isFile()) {
      if (!file_.create() || !file_.append(bytes_)) return false;
      bytes_ = {};
    }
    return file_.append(block);
  }

  Zantrel::Bytes bytes_;
  TemporaryFile file_;
};

}  // namespace

bool convertStreams(Streams& streams, const std::string& input, const std::string& output,
                    const Conversion& conversion) {
  HeldInput held;
  if (isStandardStream(input)) {
    if (!held.read())
      return streams.complain("standard input cannot be read, or be held in a file");
    if (!held.isFile()) {
      Zantrel::Bytes out;
      return conversion.ofBytes(held.bytes(), out) && streams.write(output, out);
    }
  }
  const std::string& from = isStandardStream(input) ? held.path() : input;
  if (!isStandardStream(output)) return conversion.ofFiles(from, output);
  TemporaryFile result;
  if (!result.create()) return streams.complain("there is no place for a temporary file");
  return conversion.ofFiles(from, result.path()) &&
         (result.copyToStandardOutput() || streams.complain("standard output cannot be written"));
}

}  // namespace zantrel_cli
