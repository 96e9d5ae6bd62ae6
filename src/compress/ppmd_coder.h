#pragma once
// Symbols of a PPMd model to bytes and back, by a range coder without carries (D. Subbotin's).

#include <array>
#include <cstdint>
#include <span>

#include "compress/ppmd_model.h"
#include "core/bytes.h"

namespace zantrel {

/// The range of 32 bits that both coders narrow down.
struct PpmdRange {
  std::uint32_t low = 0;
  std::uint32_t range = 0xFFFFFFFF;

  /// Whether the top byte is settled, or must be given up early so that the range stays wide.
  bool settles() {
    constexpr std::uint32_t kTop = 1u << 24;
    constexpr std::uint32_t kBottom = 1u << 15;
    if ((low ^ (low + range)) < kTop) return true;
    if (range >= kBottom) return false;
    range = (0 - low) & (kBottom - 1);
    return true;
  }
  void narrow(std::uint32_t start, std::uint32_t size) {
    low += start * range;
    range *= size;
  }
};

/// The symbols that contexts have ruled out for the next one.
class PpmdMask final {
 public:
  void clear() { keep_.fill(0xFF); }
  void add(const PpmdModel::State* states, unsigned count) {
    for (unsigned i = 0; i < count; ++i) keep_[states[i].symbol] = 0;
  }
  /// The count of a state, 0 when it is ruled out.
  std::uint32_t count(const PpmdModel::State& state) const {
    return std::uint32_t{state.count} & keep_[state.symbol];
  }

 private:
  std::array<std::uint8_t, 256> keep_{};
};

/// Most bytes that one symbol can take or need: four for each of the contexts that it may escape
/// from, and for the one that knows it.
inline constexpr std::size_t kPpmdSymbolBytes = 4 * (PpmdModel::kMaxOrder + 2);

class PpmdEncoder final {
 public:
  bool start(unsigned order, std::uint32_t memoryBytes, PpmdRestore restore);
  /// Codes symbols while there is room for any; gives the bytes written. `in` is what remains.
  std::size_t encode(ByteSpan& in, std::span<std::uint8_t> out);
  /// Ends the stream, by an escape from the shortest context, in at most kPpmdSymbolBytes + 4
  /// bytes.
  std::size_t finish(std::span<std::uint8_t> out);

 private:
  void encodeSymbol(int symbol, PpmdRange& range, std::uint8_t*& out);
  bool encodeInContext(int symbol, PpmdRange& range, std::uint8_t*& out);
  bool encodeUnmasked(int symbol, PpmdRange& range, std::uint8_t*& out);

  PpmdModel model_;
  PpmdRange range_;
  PpmdMask mask_;
};

class PpmdDecoder final {
 public:
  enum class Status : std::uint8_t { More, Finished, Damaged };

  bool start(unsigned order, std::uint32_t memoryBytes, PpmdRestore restore, ByteSpan first4);
  /// Decodes while kPpmdSymbolBytes of input are there and there is room; `in` is what remains.
  Status decode(ByteSpan& in, std::span<std::uint8_t> out, std::size_t& produced);

 private:
  static constexpr int kEnd = -1;
  static constexpr int kDamaged = -2;
  struct Code : PpmdRange {
    std::uint32_t code = 0;
    void take(std::uint32_t start, std::uint32_t size, const std::uint8_t*& in) {
      code -= start * range;
      narrow(start, size);
      normalize(in);
    }
    void normalize(const std::uint8_t*& in) {
      while (settles()) {
        code = code << 8 | *in++;
        low <<= 8;
        range <<= 8;
      }
    }
  };

  int decodeSymbol(Code& code, const std::uint8_t*& in);
  int decodeInContext(Code& code, const std::uint8_t*& in);
  int decodeUnmasked(Code& code, const std::uint8_t*& in);

  PpmdModel model_;
  Code code_;
  PpmdMask mask_;
};

}  // namespace zantrel
