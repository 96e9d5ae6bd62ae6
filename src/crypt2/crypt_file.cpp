#include "crypt2/crypt_file.h"

#include "core/data_buffer.h"
#include "core/data_sink.h"
#include "core/data_source.h"
#include "core/log_base.h"
#include "crypt2/crypt_cipher.h"
#include "frame/progress_monitor.h"

namespace zantrel {
namespace {

/// Bytes read at a time: applications count on the pace of the progress reports that this gives.
constexpr std::size_t kChunk = 800000;

bool transform(CryptCipher& cipher, CipherDirection direction, ByteSpan chunk, bool last,
               DataBuffer& out, LogBase& log) {
  if (last ? cipher.finish(chunk, out, log) : cipher.update(chunk, out, log)) return true;
  if (direction == CipherDirection::encrypt)
    log.logError("Failed to encrypt data");
  else
    log.logError("Failed to decrypt data");
  return false;
}

bool isAborted(ProgressMonitor& progress, std::size_t done, LogBase& log) {
  bool abort = false;
  progress.consume(static_cast<std::int64_t>(done), abort);
  if (!abort && !progress.aborted()) return false;
  log.logError("Aborted by the application.");
  return true;
}

}  // namespace

bool cryptSource(const CryptChoice& choice, CipherDirection direction, DataSource& source,
                 DataSink& sink, ProgressMonitor& progress, LogBase& log) {
  CryptCipher cipher;
  DataBuffer result;  // one block serves all pieces
  for (bool first = true, last = false; !last; first = false) {
    ByteSpan chunk;
    if (!source.nextBlock(kChunk, chunk, log)) {
      log.logError("Failed to read next chunk from input file");
      return false;
    }
    last = chunk.size() < kChunk;
    if (first && !cipher.begin(choice, direction, !chunk.empty(), log)) return false;
    result.clear();
    if (!transform(cipher, direction, chunk, last, result, log) ||
        !sink.write(result.bytes(), log) || isAborted(progress, chunk.size(), log))
      return false;
  }
  return true;
}

}  // namespace zantrel
