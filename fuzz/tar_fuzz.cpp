// tar archives: entries are the same however the archive is cut, the data of each are as long as
// its header says, and memory stays within what extended headers may claim.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "compress/tar_reader.h"
#include "core/log_null.h"

namespace {

using namespace zantrel;

void require(bool holds) {
  if (!holds) std::abort();
}

class Recorder final : public TarEntrySink {
 public:
  std::string text;

  bool beginEntry(const TarEntry& entry) override {
    require(!open_);
    open_ = true;
    left_ = entry.size;
    require(!(entry.isFile() && entry.isFolder()));
    text += entry.name + '\n' + entry.linkName + '\n' + entry.type + std::to_string(entry.size) +
            ' ' + std::to_string(entry.modified) + '\n';
    return true;
  }
  bool entryData(ByteSpan bytes) override {
    require(open_ && bytes.size() <= left_);
    left_ -= bytes.size();
    text += asText(bytes);
    return true;
  }
  bool endEntry() override {
    require(open_ && left_ == 0);
    open_ = false;
    return true;
  }

 private:
  bool open_ = false;
  std::uint64_t left_ = 0;
};

bool read(ByteSpan archive, std::size_t piece, std::string& text) {
  LogNull log;
  Recorder recorder;
  TarReader reader(recorder);
  bool ok = true;
  for (std::size_t at = 0; ok && at < archive.size(); at += piece) {
    ok = reader.write(archive.subspan(at, std::min(piece, archive.size() - at)), log);
  }
  ok = ok && reader.finish(log);
  text = recorder.text;
  return ok;
}

/// Makes the checksums of what stand where headers do hold, so that noise gets further.
void repairChecksums(std::string& archive) {
  for (std::size_t at = 0; at + kTarBlock <= archive.size(); at += kTarBlock) {
    if (archive.compare(at + 257, 5, "ustar") != 0) continue;
    archive.replace(at + 148, 8, 8, ' ');
    unsigned sum = 0;
    for (std::size_t i = 0; i < kTarBlock; ++i) sum += static_cast<std::uint8_t>(archive[at + i]);
    for (std::size_t i = 0; i < 6; ++i, sum >>= 3) {
      archive[at + 153 - i] = static_cast<char>('0' + (sum & 7));
    }
    archive[at + 154] = '\0';
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string archive(asText(ByteSpan(data, size)));
  repairChecksums(archive);
  std::string whole, cut;
  const bool ok = read(asBytes(archive), std::max<std::size_t>(archive.size(), 1), whole);
  require(read(asBytes(archive), 7, cut) == ok && cut == whole);
  PaxValues values;
  readPaxRecords(archive, values);
  return 0;
}
