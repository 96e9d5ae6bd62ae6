#include "compress/zantrel_compress.h"

#include "compress/bzip2_engine.h"
#include "compress/copy_engine.h"
#include "compress/lzw_engine.h"
#include "compress/ppmd_engine.h"
#include "compress/zantrel_deflate.h"

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
