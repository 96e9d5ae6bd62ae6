#include "compress/zantrel_compress.h"

#include "compress/bzip2_engine.h"
#include "compress/copy_engine.h"
#include "compress/lzw_engine.h"
#include "compress/ppmd_engine.h"
#include "compress/zantrel_deflate.h"
#include "core/string_buffer.h"

namespace zantrel {

struct ZantrelCompress::Engines {
  CopyEngine copy;
  std::unique_ptr<ZantrelDeflate> deflate;
  std::unique_ptr<Bzip2Engine> bzip2;
  std::unique_ptr<LzwEngine> lzw;
  std::unique_ptr<PpmdEngine> ppmd;
};

namespace {

template <class Engine>
Engine& made(std::unique_ptr<Engine>& engine) {
  if (!engine) engine = std::make_unique<Engine>();
  return *engine;
}

}  // namespace

CompressionAlgorithm compressionAlgorithmOf(std::string_view name) {
  struct Part {
    const char* text;
    CompressionAlgorithm algorithm;
  };
  constexpr Part kParts[] = {{"bz", CompressionAlgorithm::Bzip2},
                             {"none", CompressionAlgorithm::None},
                             {"lz", CompressionAlgorithm::Lzw}};
  StringBuffer key(name);
  key.trim2();
  key.toLowerCase();
  if (key.equals("deflate")) return CompressionAlgorithm::Deflate;
  for (const Part& part : kParts)
    if (key.containsSubstring(part.text)) return part.algorithm;
  return CompressionAlgorithm::Ppmd;
}

const char* compressionAlgorithmName(CompressionAlgorithm algorithm) noexcept {
  constexpr const char* kNames[] = {"none", "deflate", "bz2", "lzw", "ppmd"};
  return kNames[static_cast<int>(algorithm)];
}

ZantrelCompress::ZantrelCompress() : engines_(std::make_unique<Engines>()) {}
ZantrelCompress::~ZantrelCompress() = default;

bool ZantrelCompress::setAlgorithm(std::int32_t id) noexcept {
  const bool known = id >= static_cast<std::int32_t>(CompressionAlgorithm::None) &&
                     id <= static_cast<std::int32_t>(CompressionAlgorithm::Ppmd);
  if (known) algorithm_ = static_cast<CompressionAlgorithm>(id);
  return known;
}

CompressionEngine& ZantrelCompress::chosen() {
  switch (algorithm_) {
    case CompressionAlgorithm::None:
      break;
    case CompressionAlgorithm::Deflate: {
      ZantrelDeflate& deflate = made(engines_->deflate);
      deflate.setLevel(deflateLevel_);
      deflate.setTrace(trace_);
      return deflate;
    }
    case CompressionAlgorithm::Bzip2:
      return made(engines_->bzip2);
    case CompressionAlgorithm::Lzw:
      return made(engines_->lzw);
    case CompressionAlgorithm::Ppmd:
      return made(engines_->ppmd);
  }
  return engines_->copy;
}

CompressionEngine& ZantrelCompress::engine() {
  CompressionEngine& engine = chosen();
  engine.setMaxDecompressedSize(maxDecompressedSize_);
  return engine;
}

}  // namespace zantrel
