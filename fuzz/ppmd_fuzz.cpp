// PPMd: decoding of anything, whole and in pieces, and decoding of what was coded. The first bytes
// choose the model and the sizes of the pieces.

#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "compress/ppmd_engine.h"
#include "core/log_null.h"

using namespace zantrel;

namespace {

constexpr std::size_t kHeader = 3;
constexpr std::uint64_t kMaxOutput = 1 << 20;

void check(bool holds) {
  if (!holds) std::abort();
}

bool decodeInPieces(PpmdEngine& engine, ByteSpan data, std::size_t piece, DataBuffer& out) {
  LogNull log;
  if (!engine.beginDecompress({}, out, log, nullptr)) return false;
  while (!data.empty()) {
    const ByteSpan block = data.first(std::min(piece, data.size()));
    data = data.subspan(block.size());
    if (!engine.moreDecompress(block, out, log, nullptr)) return false;
  }
  return engine.endDecompress(out, log, nullptr);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < kHeader) return 0;
  const unsigned order = PpmdEngine::kMinOrder + data[0] % 15;
  const PpmdRestore restore = data[0] & 0x80 ? PpmdRestore::CutOff : PpmdRestore::Restart;
  const std::size_t piece = 1 + data[1];
  const unsigned repeat = 1 + data[2] % 64;
  const ByteSpan input(data + kHeader, size - kHeader);
  static PpmdEngine engine;  // its memory is kept, as in an application that packs many small texts
  LogNull log;
  engine.setMaxDecompressedSize(kMaxOutput);

  DataBuffer noise;
  DataBuffer whole;
  DataBuffer pieces;
  noise.appendChar(static_cast<std::uint8_t>(order - 1));
  noise.appendChar(static_cast<std::uint8_t>(restore == PpmdRestore::CutOff ? 0x10 : 0));
  noise.append(input);
  const bool decoded = engine.decompressBuffer(noise.bytes(), whole, log, nullptr);
  check(decodeInPieces(engine, noise.bytes(), piece, pieces) == decoded);
  if (decoded) check(whole.equals(pieces));

  engine.setModel(order, 1, restore);
  DataBuffer coded;
  DataBuffer back;
  DataBuffer plain;
  check(engine.beginCompress({}, coded, log, nullptr));
  for (unsigned i = 0; i < repeat && plain.getSize() < kMaxOutput / 2; ++i) {
    plain.append(input);
    check(engine.moreCompress(input, coded, log, nullptr));
  }
  check(engine.endCompress(coded, log, nullptr));
  check(decodeInPieces(engine, coded.bytes(), piece, back));
  check(back.equals(plain));
  return 0;
}
