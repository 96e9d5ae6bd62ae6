#include "compress/ppmd_coder.h"

namespace zantrel {

namespace {

using State = PpmdModel::State;

[[gnu::always_inline]] inline void put(PpmdRange& range, std::uint32_t start, std::uint32_t size,
                                       std::uint8_t*& out) {
  range.narrow(start, size);
  while (range.settles()) {
    *out++ = static_cast<std::uint8_t>(range.low >> 24);
    range.low <<= 8;
    range.range <<= 8;
  }
}

constexpr std::uint32_t kBinaryWhole = 1u << PpmdModel::kBinaryBits;

// Results of looking a symbol up in one context, beside symbols.
constexpr int kEscaped = -3;

}  // namespace

bool PpmdEncoder::start(unsigned order, std::uint32_t memoryBytes, PpmdRestore restore) {
  range_ = {};
  return model_.start(order, memoryBytes, restore);
}

std::size_t PpmdEncoder::encode(ByteSpan& in, std::span<std::uint8_t> out) {
  std::uint8_t* to = out.data();
  const std::uint8_t* const full = to + out.size() - kPpmdSymbolBytes;
  PpmdRange range = range_;
  const std::uint8_t* from = in.data();
  const std::uint8_t* const end = from + in.size();
  while (from != end && to < full) encodeSymbol(*from++, range, to);
  range_ = range;
  in = {from, end};
  return static_cast<std::size_t>(to - out.data());
}

std::size_t PpmdEncoder::finish(std::span<std::uint8_t> out) {
  std::uint8_t* to = out.data();
  encodeSymbol(-1, range_, to);
  for (int shift = 24; shift >= 0; shift -= 8)
    *to++ = static_cast<std::uint8_t>(range_.low >> shift);
  return static_cast<std::size_t>(to - out.data());
}

[[gnu::always_inline]] inline void PpmdEncoder::encodeSymbol(int symbol, PpmdRange& range,
                                                             std::uint8_t*& out) {
  if (encodeInContext(symbol, range, out)) return;
  while (model_.shorten()) {
    if (encodeUnmasked(symbol, range, out)) return;
  }
}

// False after an escape.
[[gnu::always_inline]] inline bool PpmdEncoder::encodeInContext(int symbol, PpmdRange& range,
                                                                std::uint8_t*& out) {
  PpmdModel::Context& context = *model_.context();
  if (context.others == 0) {
    std::uint16_t& probability = model_.binaryProbability();
    range.range >>= PpmdModel::kBinaryBits;
    if (context.only()->symbol == symbol) {
      put(range, 0, probability, out);
      model_.foundOnly(probability);
      return true;
    }
    put(range, probability, kBinaryWhole - probability, out);
    model_.escapeOnly(probability);
    mask_.clear();
    mask_.add(context.only(), 1);
    return false;
  }
  State* const states = model_.states();
  const std::uint32_t total = context.total;
  range.range /= total;
  if (states->symbol == symbol) {
    put(range, 0, states->count, out);
    model_.foundFirst(states);
    return true;
  }
  std::uint32_t below = states->count;
  for (unsigned i = 1; i <= context.others; ++i) {
    if (states[i].symbol == symbol) {
      put(range, below, states[i].count, out);
      model_.foundLater(states + i);
      return true;
    }
    below += states[i].count;
  }
  put(range, below, total - below, out);
  model_.escapeMany();
  mask_.clear();
  mask_.add(states, context.others + 1u);
  return false;
}

// The same among the symbols not ruled out.
[[gnu::always_inline]] inline bool PpmdEncoder::encodeUnmasked(int symbol, PpmdRange& range,
                                                               std::uint8_t*& out) {
  std::uint32_t escapeCount = 0;
  PpmdModel::Escape& escape = model_.escapeOf(escapeCount);
  State* const states = model_.states();
  const unsigned symbols = model_.context()->others + 1u;
  State* found = states;
  State* const end = states + symbols;
  std::uint32_t below = 0;
  for (; found != end && found->symbol != symbol; ++found) below += mask_.count(*found);
  std::uint32_t sum = below;
  for (const State* state = found; state != end; ++state) sum += mask_.count(*state);
  const std::uint32_t total = sum + escapeCount;
  range.range /= total;
  if (found != end) {
    put(range, below, found->count, out);
    escape.succeeded();
    model_.foundAfterEscape(found);
    return true;
  }
  put(range, sum, escapeCount, out);
  escape.failed(total);
  mask_.add(states, symbols);
  return false;
}

bool PpmdDecoder::start(unsigned order, std::uint32_t memoryBytes, PpmdRestore restore,
                        ByteSpan first4) {
  code_ = {};
  for (const std::uint8_t byte : first4) code_.code = code_.code << 8 | byte;
  return model_.start(order, memoryBytes, restore);
}

PpmdDecoder::Status PpmdDecoder::decode(ByteSpan& in, std::span<std::uint8_t> out,
                                        std::size_t& produced) {
  Code code = code_;
  const std::uint8_t* from = in.data();
  const std::uint8_t* const end = from + in.size();
  std::uint8_t* to = out.data();
  std::uint8_t* const full = to + out.size();
  int symbol = 0;
  while (to != full && static_cast<std::size_t>(end - from) >= kPpmdSymbolBytes) {
    symbol = decodeSymbol(code, from);
    if (symbol < 0) break;
    *to++ = static_cast<std::uint8_t>(symbol);
  }
  code_ = code;
  in = {from, end};
  produced = static_cast<std::size_t>(to - out.data());
  return symbol >= 0 ? Status::More : symbol == kEnd ? Status::Finished : Status::Damaged;
}

[[gnu::always_inline]] inline int PpmdDecoder::decodeSymbol(Code& code, const std::uint8_t*& in) {
  int symbol = decodeInContext(code, in);
  while (symbol == kEscaped) {
    if (!model_.shorten()) return kEnd;
    symbol = decodeUnmasked(code, in);
  }
  return symbol;
}

[[gnu::always_inline]] inline int PpmdDecoder::decodeInContext(Code& code,
                                                               const std::uint8_t*& in) {
  PpmdModel::Context& context = *model_.context();
  if (context.others == 0) {
    std::uint16_t& probability = model_.binaryProbability();
    code.range >>= PpmdModel::kBinaryBits;
    const std::uint8_t symbol = context.only()->symbol;
    if (code.code < code.range * probability) {
      code.take(0, probability, in);
      model_.foundOnly(probability);
      return symbol;
    }
    if (code.code >= code.range * kBinaryWhole) return kDamaged;
    code.take(probability, kBinaryWhole - probability, in);
    model_.escapeOnly(probability);
    mask_.clear();
    mask_.add(context.only(), 1);
    return kEscaped;
  }
  State* const states = model_.states();
  const std::uint32_t total = context.total;
  code.range /= total;
  if (code.code < code.range * states->count) {
    const std::uint8_t symbol = states->symbol;
    code.take(0, states->count, in);
    model_.foundFirst(states);
    return symbol;
  }
  const std::uint32_t wanted = code.code / code.range;
  std::uint32_t below = states->count;
  for (unsigned i = 1; i <= context.others; ++i) {
    if (wanted < below + states[i].count) {
      const std::uint8_t symbol = states[i].symbol;
      code.take(below, states[i].count, in);
      model_.foundLater(states + i);
      return symbol;
    }
    below += states[i].count;
  }
  if (wanted >= total) return kDamaged;
  code.take(below, total - below, in);
  model_.escapeMany();
  mask_.clear();
  mask_.add(states, context.others + 1u);
  return kEscaped;
}

[[gnu::always_inline]] inline int PpmdDecoder::decodeUnmasked(Code& code, const std::uint8_t*& in) {
  std::uint32_t escapeCount = 0;
  PpmdModel::Escape& escape = model_.escapeOf(escapeCount);
  State* const states = model_.states();
  const unsigned symbols = model_.context()->others + 1u;
  std::uint32_t sum = 0;
  for (unsigned i = 0; i < symbols; ++i) sum += mask_.count(states[i]);
  const std::uint32_t total = sum + escapeCount;
  code.range /= total;
  const std::uint32_t wanted = code.code / code.range;
  if (wanted >= total) return kDamaged;
  if (wanted >= sum) {
    code.take(sum, escapeCount, in);
    escape.failed(total);
    mask_.add(states, symbols);
    return kEscaped;
  }
  std::uint32_t below = 0;
  State* found = states;
  for (;; ++found) {
    const std::uint32_t above = below + mask_.count(*found);
    if (wanted < above) break;
    below = above;
  }
  const std::uint8_t symbol = found->symbol;
  code.take(below, found->count, in);
  escape.succeeded();
  model_.foundAfterEscape(found);
  return symbol;
}

}  // namespace zantrel
