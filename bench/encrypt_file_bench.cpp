// Encryption of a cached file beside its three parts apart: reading the file, ciphering as much in
// memory, and writing as much. Nothing that does them one after the other can take less. Real time
// counts, since reading overlaps with the rest.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "core/data_buffer.h"
#include "core/data_sink.h"
#include "core/log_null.h"
#include "crypt2/cls_crypt.h"
#include "platform/file.h"

namespace {

using namespace zantrel;

constexpr std::size_t kChunk = 800000;

struct Algorithm {
  const char* name;
  int keyLength;
};

constexpr Algorithm kAlgorithms[] = {{"aes", 128},  {"aes", 256}, {"twofish", 256},
                                     {"3des", 168}, {"rc4", 128}, {"none", 128}};

/// A file of some bytes in the folder for temporary files, and the place for what it becomes. A
/// folder in memory keeps the disk out of the figures.
class Files {
 public:
  explicit Files(std::size_t size) {
    namespace fs = std::filesystem;
    const fs::path memory = "/dev/shm";
    const fs::path parent = fs::is_directory(memory) ? memory : fs::temp_directory_path();
    in_ = (parent / "encrypt_file_bench.in").string();
    out_ = (parent / "encrypt_file_bench.out").string();
    OutputFile file;
    file.open(in_);
    const std::vector<std::uint8_t> bytes(size, 0x5A);
    file.write(bytes.data(), size);
    file.commit();
  }
  ~Files() {
    removeFile(in_);
    removeFile(out_);
  }
  const std::string& in() const { return in_; }
  const std::string& out() const { return out_; }

 private:
  std::string in_, out_;
};

void configure(ClsCrypt& crypt, const Algorithm& algorithm) {
  DataBuffer bytes;
  for (std::uint8_t i = 0; i < 32; ++i) bytes.appendChar(i);
  crypt.put_CryptAlgorithm(XString(algorithm.name));
  crypt.settings().keyLength = algorithm.keyLength;
  crypt.put_SecretKey(bytes);
  crypt.put_IV(bytes);
}

using FileMember = bool (ClsCrypt::*)(const XString&, const XString&, ProgressEvent*);

void throughTheComponent(benchmark::State& state, const Algorithm& algorithm, std::size_t size,
                         FileMember member) {
  const Files files(size);
  ClsCrypt crypt;
  configure(crypt, algorithm);
  crypt.settings().paddingScheme = 2;
  for (auto _ : state)
    if (!(crypt.*member)(XString(files.in()), XString(files.out()), nullptr))
      state.SkipWithError("the file was not encrypted");
  state.SetBytesProcessed(static_cast<std::int64_t>(size) * state.iterations());
}

void readAll(const std::string& path, std::vector<std::uint8_t>& buffer) {
  InputFile file;
  file.open(path);
  for (std::size_t got = 1; got > 0;) file.read(buffer.data(), buffer.size(), got);
}

void writeAll(const std::string& path, std::size_t size, const std::vector<std::uint8_t>& buffer) {
  OutputFile file;
  file.open(path);
  for (std::size_t left = size; left > 0;) {
    const std::size_t part = std::min(left, buffer.size());
    file.write(buffer.data(), part);
    left -= part;
  }
  file.commit();
}

void apart(benchmark::State& state, const Algorithm& algorithm, std::size_t size,
           bool (ClsCrypt::*member)(const DataBuffer&, DataBuffer&)) {
  const Files files(size);
  std::vector<std::uint8_t> buffer(kChunk, 0x5A);
  ClsCrypt crypt;
  configure(crypt, algorithm);
  crypt.settings().paddingScheme = 2;
  DataBuffer in, out;
  in.append(buffer.data(), buffer.size());
  for (auto _ : state) {
    readAll(files.in(), buffer);
    for (std::size_t done = 0; done < size; done += kChunk) {
      out.clear();
      (crypt.*member)(in, out);
    }
    writeAll(files.out(), size, buffer);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(size) * state.iterations());
}

const bool kRegistered = [] {
  for (const Algorithm& algorithm : kAlgorithms) {
    const std::string cipher =
        std::string(algorithm.name) + "-" + std::to_string(algorithm.keyLength);
    const bool fast = cipher.starts_with("aes") || cipher.starts_with("none");
    const std::size_t chunks = fast ? 80 : 5;
    const std::size_t size = chunks * kChunk;
    const auto add = [&](const char* operation, const char* implementation, const auto& run) {
      std::string name = operation;
      name.append("/").append(cipher).append("/").append(implementation);
      benchmark::RegisterBenchmark(name.c_str(), run)->UseRealTime();
    };
    add("encrypt_file", "zantrel", [=](benchmark::State& s) {
      throughTheComponent(s, algorithm, size, &ClsCrypt::ZT_EncryptFile);
    });
    add("encrypt_file", "apart",
        [=](benchmark::State& s) { apart(s, algorithm, size, &ClsCrypt::EncryptX); });
    add("decrypt_file", "zantrel", [=](benchmark::State& s) {
      throughTheComponent(s, algorithm, size, &ClsCrypt::ZT_DecryptFile);
    });
    add("decrypt_file", "apart",
        [=](benchmark::State& s) { apart(s, algorithm, size, &ClsCrypt::DecryptX); });
  }
  return true;
}();

}  // namespace
