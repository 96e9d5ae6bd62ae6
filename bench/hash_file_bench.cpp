// Digests of a file in the system's cache, through the public class, beside the digest of the same
// bytes in memory ("memory": what reading must not slow down much) and OpenSSL's with plain reads.

#include <zantrel/crypt2.h>

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#ifdef HAVE_OPENSSL
#include <openssl/evp.h>
#endif

namespace {

/// A file of random bytes that goes with this object.
class CachedFile {
 public:
  explicit CachedFile(std::size_t size)
      : path_((std::filesystem::temp_directory_path() / "zantrel_hash_file_bench").string()) {
    std::mt19937_64 random(1);
    bytes_.resize(size);
    for (auto& byte : bytes_) byte = static_cast<std::uint8_t>(random());
    std::ofstream(path_, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes_.data()), static_cast<std::streamsize>(size));
  }
  ~CachedFile() { std::filesystem::remove(path_); }
  CachedFile(const CachedFile&) = delete;
  CachedFile& operator=(const CachedFile&) = delete;

  const std::string& path() const { return path_; }
  const Zantrel::Bytes& bytes() const { return bytes_; }

 private:
  std::string path_;
  Zantrel::Bytes bytes_;
};

void fromFile(benchmark::State& state, const char* algorithm, const CachedFile& file) {
  Zantrel::Crypt2 crypt;
  crypt.put_HashAlgorithm(algorithm);
  Zantrel::Bytes digest;
  for (auto _ : state) {
    if (!crypt.HashFile(file.path(), digest)) state.SkipWithError("HashFile failed");
  }
}

void fromMemory(benchmark::State& state, const char* algorithm, const CachedFile& file) {
  Zantrel::Crypt2 crypt;
  crypt.put_HashAlgorithm(algorithm);
  Zantrel::Bytes digest;
  for (auto _ : state) crypt.HashBytes(file.bytes(), digest);
}

#ifdef HAVE_OPENSSL
void byOpenssl(benchmark::State& state, const char* algorithm, const CachedFile& file) {
  const EVP_MD* const kind = EVP_get_digestbyname(algorithm);
  EVP_MD_CTX* const context = EVP_MD_CTX_new();
  std::vector<unsigned char> block(1 << 16);
  unsigned char digest[EVP_MAX_MD_SIZE];
  for (auto _ : state) {
    EVP_DigestInit_ex(context, kind, nullptr);
    std::FILE* const in = std::fopen(file.path().c_str(), "rb");
    std::setvbuf(in, nullptr, _IONBF, 0);
    while (const std::size_t got = std::fread(block.data(), 1, block.size(), in))
      EVP_DigestUpdate(context, block.data(), got);
    std::fclose(in);
    EVP_DigestFinal_ex(context, digest, nullptr);
  }
  EVP_MD_CTX_free(context);
}
#endif

using Hashing = void (*)(benchmark::State&, const char*, const CachedFile&);

void add(const char* algorithm, const char* sizeName, std::size_t size, const char* implementation,
         Hashing hashing) {
  const std::string name =
      std::string("hash_file/") + algorithm + "/" + sizeName + "/" + implementation;
  benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
    const CachedFile file(size);
    hashing(state, algorithm, file);
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                            static_cast<std::int64_t>(size));
  });
}

const bool registered = [] {
  const std::pair<const char*, std::size_t> sizes[] = {
      {"64K", 1 << 16}, {"1M", 1 << 20}, {"64M", 1 << 26}};
  for (const char* algorithm : {"sha1", "sha256", "sha512", "md5"}) {
    for (const auto& [name, size] : sizes) {
      add(algorithm, name, size, "zantrel", fromFile);
      add(algorithm, name, size, "memory", fromMemory);
#ifdef HAVE_OPENSSL
      add(algorithm, name, size, "openssl", byOpenssl);
#endif
    }
  }
  return true;
}();

}  // namespace
