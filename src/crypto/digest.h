#pragma once
// The operations that every digest class offers, over the shared frame of block_hash.h.

#include <cstddef>
#include <cstdint>

#include "core/bytes.h"
#include "core/data_buffer.h"
#include "core/data_source.h"
#include "core/zantrel_object.h"
#include "crypto/block_hash.h"

namespace zantrel {

class LogBase;
class ProgressMonitor;

/// Where a digest takes the blocks of a source to.
struct BlockConsumer {
  void* context;
  void (*absorb)(void* context, ByteSpan block);
};

/// Reads a source to its end in blocks of 20,000 bytes. The monitor, which may be null, hears of
/// each block and may stop the loop: false then, after logging `abortText`, as after a failed read.
bool consumeSource(DataSource& source, ProgressMonitor* progress, LogBase& log,
                   const char* abortText, const BlockConsumer& consumer);

/// Base of the digest classes. A context starts initialized, is finished by finalize(), and may
/// then be used anew. It keeps a copy of unfinished blocks only, and wipes them.
template <class State>
class Digest : public ZantrelObject {
 public:
  static constexpr std::size_t kBlockBytes = State::kBlockBytes;
  static constexpr std::size_t kMaxDigestBytes = State::kMaxDigestBytes;

  Digest() = default;

  std::size_t digestBytes() const noexcept { return hash_.digestBytes(); }

  void initialize() noexcept { hash_.initialize(); }
  void update(const void* bytes, std::size_t length) { update(span(bytes, length)); }
  void update(ByteSpan bytes) { hash_.update(bytes); }
  /// Writes digestBytes() bytes.
  void finalize(std::uint8_t* out) { hash_.finalize(out); }
  /// Appends the digest.
  void finalize(DataBuffer& out) {
    std::uint8_t digest[kMaxDigestBytes];
    hash_.finalize(digest);
    out.append(digest, digestBytes());
    wipeLocal(digest);
  }

  void digestData(const void* bytes, std::size_t length, std::uint8_t* out) {
    initialize();
    hash_.finalizeWith(span(bytes, length), out);
  }
  void digestData(const void* bytes, std::size_t length, DataBuffer& out) {
    std::uint8_t digest[kMaxDigestBytes];
    digestData(bytes, length, digest);
    out.append(digest, digestBytes());
    wipeLocal(digest);
  }
  void digestBuffer(const DataBuffer& bytes, std::uint8_t* out) {
    digestData(bytes.getData2(), bytes.getSize(), out);
  }
  void digestBuffer(const DataBuffer& bytes, DataBuffer& out) {
    digestData(bytes.getData2(), bytes.getSize(), out);
  }

  /// Hashes all that a source yields and appends the digest. False, with the reason in the log and
  /// `out` as it was, when reading failed or the monitor (null for none) asked to stop; then the
  /// log says "Digest MD5 aborted by application", with this algorithm's name.
  bool digestSource(DataSource& source, ProgressMonitor* progress, LogBase& log, DataBuffer& out) {
    return digestSource(source, progress, log, State::kAbortText, out);
  }
  /// The same with another sentence for the abort.
  bool digestSource(DataSource& source, ProgressMonitor* progress, LogBase& log,
                    const char* abortText, DataBuffer& out) {
    initialize();
    const BlockConsumer consumer{&hash_, [](void* context, ByteSpan block) {
                                   static_cast<BlockHash<State>*>(context)->update(block);
                                 }};
    if (!consumeSource(source, progress, log, abortText, consumer)) {
      initialize();
      return false;
    }
    finalize(out);
    return true;
  }

 protected:
  explicit Digest(const State& parameters) : hash_(parameters) {}

  BlockHash<State> hash_;

 private:
  static ByteSpan span(const void* bytes, std::size_t length) noexcept {
    return {static_cast<const std::uint8_t*>(bytes), bytes != nullptr ? length : 0};
  }
};

}  // namespace zantrel
