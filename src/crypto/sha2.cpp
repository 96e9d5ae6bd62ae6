// SHA-2 (FIPS 180-4, sections 6.2 to 6.5): the choice of the block functions, and the context of
// three variants.

#include "crypto/sha2.h"

#include "crypto/sha2_rounds.h"
#include "crypto/sha_kernels.h"

namespace zantrel {

namespace sha {

// The fractional parts of the cube roots of the first 64 and 80 primes.
const std::uint32_t kRound256[64] = {
    0x428A2F98, 0x71374491, 0xB5C0FBCF, 0xE9B5DBA5, 0x3956C25B, 0x59F111F1, 0x923F82A4, 0xAB1C5ED5,
    0xD807AA98, 0x12835B01, 0x243185BE, 0x550C7DC3, 0x72BE5D74, 0x80DEB1FE, 0x9BDC06A7, 0xC19BF174,
    0xE49B69C1, 0xEFBE4786, 0x0FC19DC6, 0x240CA1CC, 0x2DE92C6F, 0x4A7484AA, 0x5CB0A9DC, 0x76F988DA,
    0x983E5152, 0xA831C66D, 0xB00327C8, 0xBF597FC7, 0xC6E00BF3, 0xD5A79147, 0x06CA6351, 0x14292967,
    0x27B70A85, 0x2E1B2138, 0x4D2C6DFC, 0x53380D13, 0x650A7354, 0x766A0ABB, 0x81C2C92E, 0x92722C85,
    0xA2BFE8A1, 0xA81A664B, 0xC24B8B70, 0xC76C51A3, 0xD192E819, 0xD6990624, 0xF40E3585, 0x106AA070,
    0x19A4C116, 0x1E376C08, 0x2748774C, 0x34B0BCB5, 0x391C0CB3, 0x4ED8AA4A, 0x5B9CCA4F, 0x682E6FF3,
    0x748F82EE, 0x78A5636F, 0x84C87814, 0x8CC70208, 0x90BEFFFA, 0xA4506CEB, 0xBEF9A3F7, 0xC67178F2};
alignas(64) const std::uint64_t kRound512[80] = {
    0x428A2F98D728AE22, 0x7137449123EF65CD, 0xB5C0FBCFEC4D3B2F, 0xE9B5DBA58189DBBC,
    0x3956C25BF348B538, 0x59F111F1B605D019, 0x923F82A4AF194F9B, 0xAB1C5ED5DA6D8118,
    0xD807AA98A3030242, 0x12835B0145706FBE, 0x243185BE4EE4B28C, 0x550C7DC3D5FFB4E2,
    0x72BE5D74F27B896F, 0x80DEB1FE3B1696B1, 0x9BDC06A725C71235, 0xC19BF174CF692694,
    0xE49B69C19EF14AD2, 0xEFBE4786384F25E3, 0x0FC19DC68B8CD5B5, 0x240CA1CC77AC9C65,
    0x2DE92C6F592B0275, 0x4A7484AA6EA6E483, 0x5CB0A9DCBD41FBD4, 0x76F988DA831153B5,
    0x983E5152EE66DFAB, 0xA831C66D2DB43210, 0xB00327C898FB213F, 0xBF597FC7BEEF0EE4,
    0xC6E00BF33DA88FC2, 0xD5A79147930AA725, 0x06CA6351E003826F, 0x142929670A0E6E70,
    0x27B70A8546D22FFC, 0x2E1B21385C26C926, 0x4D2C6DFC5AC42AED, 0x53380D139D95B3DF,
    0x650A73548BAF63DE, 0x766A0ABB3C77B2A8, 0x81C2C92E47EDAEE6, 0x92722C851482353B,
    0xA2BFE8A14CF10364, 0xA81A664BBC423001, 0xC24B8B70D0F89791, 0xC76C51A30654BE30,
    0xD192E819D6EF5218, 0xD69906245565A910, 0xF40E35855771202A, 0x106AA07032BBD1B8,
    0x19A4C116B8D2D0C8, 0x1E376C085141AB53, 0x2748774CDF8EEB99, 0x34B0BCB5E19B48A8,
    0x391C0CB3C5C95A63, 0x4ED8AA4AE3418ACB, 0x5B9CCA4F7763E373, 0x682E6FF3D6B2B8A3,
    0x748F82EE5DEFB2FC, 0x78A5636F43172F60, 0x84C87814A1F0AB72, 0x8CC702081A6439EC,
    0x90BEFFFA23631E28, 0xA4506CEBDE82BDE9, 0xBEF9A3F7B2C67915, 0xC67178F2E372532B,
    0xCA273ECEEA26619C, 0xD186B8C721C0C207, 0xEADA7DD6CDE0EB1E, 0xF57D4F7FEE6ED178,
    0x06F067AA72176FBA, 0x0A637DC5A2C898A6, 0x113F9804BEF90DAE, 0x1B710B35131C471B,
    0x28DB77F523047D84, 0x32CAAB7B40C72493, 0x3C9EBE0A15C9BEBC, 0x431D67C49C100D4C,
    0x4CC5D4BECB3E42B6, 0x597F299CFC657E2A, 0x5FCB6FAB3AD6FAEC, 0x6C44198C4A475817};

}  // namespace sha

void Sha256State::compress(const std::uint8_t* blocks, std::size_t count) noexcept {
  compress(blocks, count, nullptr, 0);
}

void Sha256State::compress(const std::uint8_t* blocks, std::size_t count, const std::uint8_t* last,
                           std::size_t lastCount) noexcept {
#if defined(ZT_X86_64)
  const CpuFeatures& cpu = cpuFeatures();
  if (cpu.shaNi) return sha::sha256ShaNi(words_.data(), blocks, count, last, lastCount);
  if (cpu.avx2) {
    sha::sha256Avx2(words_.data(), blocks, count);
    return sha::sha256Avx2(words_.data(), last, lastCount);
  }
#endif
  sha::sha2Blocks(words_.data(), blocks, count);
  sha::sha2Blocks(words_.data(), last, lastCount);
}

void compressSha512(std::uint64_t* state, const std::uint8_t* blocks, std::size_t count) noexcept {
#if defined(ZT_X86_64)
  const CpuFeatures& cpu = cpuFeatures();
  if (cpu.avx512) return sha::sha512Avx512(state, blocks, count);
  if (cpu.avx2) return sha::sha512Avx2(state, blocks, count);
#endif
  sha::sha2Blocks(state, blocks, count);
}

Sha2::Sha2(Variant variant) {
  if (variant == Variant::kSha384) {
    context_.emplace<1>();
  } else if (variant == Variant::kSha512) {
    context_.emplace<2>();
  }
}

std::size_t Sha2::digestBytes() const noexcept {
  return std::visit([](const auto& digest) { return digest.digestBytes(); }, context_);
}

void Sha2::initialize() noexcept {
  std::visit([](auto& digest) { digest.initialize(); }, context_);
}

void Sha2::update(const void* bytes, std::size_t length) {
  std::visit([&](auto& digest) { digest.update(bytes, length); }, context_);
}

void Sha2::finalize(std::uint8_t* out) {
  std::visit([&](auto& digest) { digest.finalize(out); }, context_);
}

void Sha2::finalize(DataBuffer& out) {
  std::visit([&](auto& digest) { digest.finalize(out); }, context_);
}

void Sha2::digestData(const void* bytes, std::size_t length, std::uint8_t* out) {
  std::visit([&](auto& digest) { digest.digestData(bytes, length, out); }, context_);
}

void Sha2::digestData(const void* bytes, std::size_t length, DataBuffer& out) {
  std::visit([&](auto& digest) { digest.digestData(bytes, length, out); }, context_);
}

void Sha2::digestBuffer(const DataBuffer& bytes, std::uint8_t* out) {
  digestData(bytes.getData2(), bytes.getSize(), out);
}

void Sha2::digestBuffer(const DataBuffer& bytes, DataBuffer& out) {
  digestData(bytes.getData2(), bytes.getSize(), out);
}

bool Sha2::digestSource(DataSource& source, ProgressMonitor* progress, LogBase& log,
                        DataBuffer& out) {
  return std::visit([&](auto& digest) { return digest.digestSource(source, progress, log, out); },
                    context_);
}

}  // namespace zantrel
