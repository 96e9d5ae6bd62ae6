#pragma once
// SHA-256, SHA-384 and SHA-512 (FIPS 180-4).

#include <array>
#include <cstddef>
#include <cstdint>
#include <variant>

#include "crypto/digest.h"

namespace zantrel {

class Sha256State final
    : public WordState<Sha256State, std::uint32_t, 8, 64, 32, std::endian::big> {
 public:
  static constexpr const char* kAbortText = "Digest SHA-256 aborted by application";
  static constexpr std::array<std::uint32_t, 8> kInitial = {0x6A09E667, 0xBB67AE85, 0x3C6EF372,
                                                            0xA54FF53A, 0x510E527F, 0x9B05688C,
                                                            0x1F83D9AB, 0x5BE0CD19};
  void compress(const std::uint8_t* blocks, std::size_t count) noexcept;
  void compress(const std::uint8_t* blocks, std::size_t count, const std::uint8_t* last,
                std::size_t lastCount) noexcept;
};

/// Absorbs blocks of 128 bytes into the state that SHA-384 and SHA-512 share.
void compressSha512(std::uint64_t* state, const std::uint8_t* blocks, std::size_t count) noexcept;

class Sha384State final
    : public WordState<Sha384State, std::uint64_t, 8, 128, 48, std::endian::big, 16> {
 public:
  static constexpr const char* kAbortText = "Digest SHA-384 aborted by application";
  static constexpr std::array<std::uint64_t, 8> kInitial = {
      0xCBBB9D5DC1059ED8, 0x629A292A367CD507, 0x9159015A3070DD17, 0x152FECD8F70E5939,
      0x67332667FFC00B31, 0x8EB44A8768581511, 0xDB0C2E0D64F98FA7, 0x47B5481DBEFA4FA4};
  void compress(const std::uint8_t* blocks, std::size_t count) noexcept {
    compressSha512(words_.data(), blocks, count);
  }
};

class Sha512State final
    : public WordState<Sha512State, std::uint64_t, 8, 128, 64, std::endian::big, 16> {
 public:
  static constexpr const char* kAbortText = "Digest SHA-512 aborted by application";
  static constexpr std::array<std::uint64_t, 8> kInitial = {
      0x6A09E667F3BCC908, 0xBB67AE8584CAA73B, 0x3C6EF372FE94F82B, 0xA54FF53A5F1D36F1,
      0x510E527FADE682D1, 0x9B05688C2B3E6C1F, 0x1F83D9ABFB41BD6B, 0x5BE0CD19137E2179};
  void compress(const std::uint8_t* blocks, std::size_t count) noexcept {
    compressSha512(words_.data(), blocks, count);
  }
};

/// One context for the three digests. Its own variant decides the digest's length, whatever its
/// owner has come to want since it was made.
class Sha2 final : public ZantrelObject {
 public:
  enum class Variant { kSha256 = 1, kSha384 = 2, kSha512 = 3 };
  static constexpr std::size_t kMaxDigestBytes = 64;

  explicit Sha2(Variant variant);

  Variant variant() const noexcept { return static_cast<Variant>(context_.index() + 1); }
  std::size_t digestBytes() const noexcept;
  /// Reloads the initial values of the variant.
  void initialize() noexcept;
  void update(const void* bytes, std::size_t length);
  void update(ByteSpan bytes) { update(bytes.data(), bytes.size()); }
  void finalize(std::uint8_t* out);
  void finalize(DataBuffer& out);
  void digestData(const void* bytes, std::size_t length, std::uint8_t* out);
  void digestData(const void* bytes, std::size_t length, DataBuffer& out);
  void digestBuffer(const DataBuffer& bytes, std::uint8_t* out);
  void digestBuffer(const DataBuffer& bytes, DataBuffer& out);
  bool digestSource(DataSource& source, ProgressMonitor* progress, LogBase& log, DataBuffer& out);

 private:
  std::variant<Digest<Sha256State>, Digest<Sha384State>, Digest<Sha512State>> context_;
};

}  // namespace zantrel
