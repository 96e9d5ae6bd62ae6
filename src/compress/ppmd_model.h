#pragma once
// The prediction model of PPMd variant I (D. Shkarin): a tree of contexts, the last symbols before
// the next one, of which each counts what followed it. A coder looks for the next symbol in the
// longest context that is known, tells where it stands among the counts, and has the model learn
// it; a symbol that a context does not know is coded as an escape to the next shorter one.
//
// Encoder and decoder must agree on every count, so all arithmetic here is part of the format.

#include <array>
#include <cstdint>
#include <cstring>

#include "compress/ppmd_memory.h"

namespace zantrel {

/// What to do when the memory is full.
enum class PpmdRestore : std::uint8_t {
  Restart = 0,  ///< forget everything
  CutOff = 1,   ///< forget long contexts
};

class PpmdModel final {
 public:
  static constexpr unsigned kMaxOrder = 16;
  static constexpr unsigned kBinaryBits = 14;  // probabilities of one-symbol contexts

  /// A symbol with its count and what follows it: a context, a place in the text where that context
  /// is to be read off when it is needed, or 0.
  struct State {
    std::uint8_t symbol;
    std::uint8_t count;
    std::uint8_t next_[4];

    PpmdMemory::Ref next() const {
      PpmdMemory::Ref ref;
      std::memcpy(&ref, next_, sizeof ref);
      return ref;
    }
    void setNext(PpmdMemory::Ref ref) { std::memcpy(next_, &ref, sizeof ref); }
  };
  static_assert(sizeof(State) == 6);

  /// With one symbol its state lies in place of `total` and `states`.
  struct Context {
    std::uint8_t others;  // symbols, less one
    std::uint8_t flags;
    std::uint16_t total;  // of the counts, and of the escape's
    PpmdMemory::Ref states;
    PpmdMemory::Ref suffix;  // the context shorter by one symbol

    State* only() { return reinterpret_cast<State*>(&total); }
  };
  static_assert(sizeof(Context) == PpmdMemory::kUnitBytes);

  /// Adaptive estimate of an escape's count.
  struct Escape {
    std::uint16_t sum;
    std::uint8_t shift;
    std::uint8_t left;  // updates until it adapts more slowly

    void succeeded() {
      if (shift < kPeriodBits && --left == 0) {
        sum = static_cast<std::uint16_t>(sum << 1);
        left = static_cast<std::uint8_t>(3 << shift++);
      }
    }
    void failed(std::uint32_t total) { sum = static_cast<std::uint16_t>(sum + total); }
  };

  /// Starts afresh; false when the memory cannot be had.
  bool start(unsigned order, std::uint32_t memoryBytes, PpmdRestore restore);

  // For the coder: where it stands.
  Context* context() const { return context_; }
  State* states() const { return memory_.at<State>(context_->states); }
  unsigned order() const { return order_; }

  /// The probability, in 2^14, that a one-symbol context's symbol comes.
  std::uint16_t& binaryProbability() {
    const unsigned row = kQuantized.counts[context_->only()->count - 1u];
    const unsigned column = kQuantized.others[at(context_->suffix)->others] + lastWasLikely_ +
                            context_->flags +
                            ((static_cast<std::uint32_t>(runLength_) >> 26) & 0x20);
    return binary_[row][column];
  }

  // The next symbol was found: at the front of a context's states, further back, in a context of
  // one, or after an escape. The context becomes the one for the symbol after it.
  void foundFirst(State* found) {
    memory_.prefetch(found->next());
    found_ = found;
    lastWasLikely_ = 2 * found->count >= context_->total;
    runLength_ += static_cast<std::int32_t>(lastWasLikely_);
    count4(found);
    if (found->count > kMaxCount) rescale();
    advance();
  }
  void foundLater(State* found) {
    memory_.prefetch(found->next());
    lastWasLikely_ = 0;
    count4(found);
    if (found[0].count > found[-1].count) {
      swap(found[0], found[-1]);
      --found;
      found_ = found;
      if (found->count > kMaxCount) rescale();
    } else {
      found_ = found;
    }
    advance();
  }
  void foundOnly(std::uint16_t& probability) {
    memory_.prefetch(context_->only()->next());
    probability = static_cast<std::uint16_t>(probability + (1 << kBinaryShift) - mean(probability));
    found_ = context_->only();
    found_->count = static_cast<std::uint8_t>(found_->count + (found_->count < 196));
    lastWasLikely_ = 1;
    ++runLength_;
    advance();
  }
  void foundAfterEscape(State* found) {
    memory_.prefetch(found->next());
    found_ = found;
    count4(found);
    if (found->count > kMaxCount) rescale();
    runLength_ = initialRunLength_;
    learn();
    context_ = longest_;
  }

  // The next symbol is none of the context's.
  void escapeMany() { lastWasLikely_ = 0; }
  void escapeOnly(std::uint16_t& probability) {
    probability = static_cast<std::uint16_t>(probability - mean(probability));
    escapeStart_ = kEscapeStart[probability >> 10];
    lastWasLikely_ = 0;
  }
  /// Goes to the longest shorter context that knows more symbols; false when there is none.
  bool shorten() {
    masked_ = context_->others;
    do {
      ++fall_;
      if (context_->suffix == 0) return false;
      context_ = at(context_->suffix);
    } while (context_->others == masked_);
    return true;
  }
  /// The estimate of a further escape, from the context after shorten().
  Escape& escapeOf(std::uint32_t& count) {
    if (context_->others == 255) {
      count = 1;
      return neverEscapes_;
    }
    const unsigned others = context_->others;
    const unsigned column = static_cast<unsigned>(context_->total > 11 * (others + 1)) +
                            2u * (2 * others < at(context_->suffix)->others + masked_) +
                            context_->flags;
    Escape& escape = escapes_[kQuantized.counts[others + 2] - 3u][column];
    const unsigned estimate = escape.sum >> escape.shift;
    escape.sum = static_cast<std::uint16_t>(escape.sum - estimate);
    count = estimate + (estimate == 0);
    return escape;
  }

 private:
  using Ref = PpmdMemory::Ref;

  static constexpr unsigned kMaxCount = 124;
  static constexpr unsigned kPeriodBits = 7;
  static constexpr unsigned kBinaryShift = 7;
  static constexpr unsigned kBinaryRows = 25;
  static constexpr unsigned kEscapeRows = 24;
  static constexpr std::array<std::uint8_t, 16> kEscapeStart = {25, 14, 9, 7, 5, 5, 4, 4,
                                                                4,  3,  3, 3, 2, 2, 2, 2};
  // Flags of a context; a state of its suffix and its own states count as high from this symbol on.
  static constexpr std::uint8_t kHighSymbol = 0x40;
  static constexpr unsigned kHasHigh = 0x08;
  static constexpr unsigned kAfterHigh = 0x10;
  static constexpr unsigned kRescaled = 0x04;

  // Rows of the estimates by quantized numbers of symbols or counts.
  struct Quantized {
    std::array<std::uint8_t, 256> others{};
    std::array<std::uint8_t, 260> counts{};
  };
  static constexpr Quantized makeQuantized() {
    Quantized q;
    for (unsigned i = 0; i < 256; ++i)
      q.others[i] = static_cast<std::uint8_t>(2 * (i < 2 ? i : i < 11 ? 2 : 3));
    unsigned value = 0;
    unsigned repeat = 1;
    for (unsigned i = 0; i < 260; ++i) {
      q.counts[i] = static_cast<std::uint8_t>(value);
      if (i < 4) {
        ++value;
      } else if (--repeat == 0) {
        ++value;
        repeat = value - 4;
      }
    }
    return q;
  }
  static const Quantized kQuantized;

  static unsigned mean(unsigned probability) {
    return (probability + (1 << (kPeriodBits - 2))) >> kPeriodBits;
  }
  static void swap(State& a, State& b) {
    const State kept = a;
    a = b;
    b = kept;
  }
  static unsigned highFlag(unsigned symbol) { return symbol >= kHighSymbol ? kHasHigh : 0; }
  static void addTotal(Context* context, unsigned n) {
    context->total = static_cast<std::uint16_t>(context->total + n);
  }
  static void addCount(State* state, unsigned n) {
    state->count = static_cast<std::uint8_t>(state->count + n);
  }

  Context* at(Ref ref) const { return memory_.at<Context>(ref); }
  State* statesOf(const Context* context) const { return memory_.at<State>(context->states); }
  State* find(const Context* context, std::uint8_t symbol) const {
    State* state = statesOf(context);
    while (state->symbol != symbol) ++state;
    return state;
  }
  void count4(State* found) {
    addTotal(context_, 4);
    addCount(found, 4);
  }
  // The usual case: the next context exists already.
  void advance() {
    const Ref next = found_->next();
    if (fall_ == 0 && !memory_.isText(next)) {
      context_ = longest_ = at(next);
    } else {
      learn();
      context_ = longest_;
    }
  }

  void restart();
  void resetEstimates();
  void learn();
  State* countInSuffix();
  bool addToLonger(Context* context, Ref next, unsigned foundCount, unsigned foundSymbol);
  bool makeRoom(Context* context);
  Context* makeContexts(bool skipFound, State* inSuffix, Context* context);
  State newState(Ref place, Context* context) const;
  Context* reduceOrder(State* inSuffix, Context* context);
  void rescale();
  void halveCounts(State* states, unsigned& escape, unsigned& sum);
  bool dropUnused(State* states, unsigned& escape);
  void refresh(Context* context, unsigned oldUnits, unsigned scale);
  void setHighFlag(Context* context);
  void makeOnly(Context* context, const State& state);
  void restore(Context* grown);
  void undoGrowth(Context* grown);
  Ref cutOff(Context* context, unsigned depth);
  Ref cutOffNext(const State* state, unsigned depth);

  PpmdMemory memory_;
  unsigned order_ = 0;
  PpmdRestore restore_ = PpmdRestore::Restart;
  Context* context_ = nullptr;  // where the next symbol is looked for
  Context* longest_ = nullptr;  // the longest that will have learnt it
  State* found_ = nullptr;
  unsigned masked_ = 0;  // symbols, less one, that the last context with an escape had
  unsigned fall_ = 0;    // by how many symbols the context is shorter than the order
  unsigned escapeStart_ = 0;
  unsigned lastWasLikely_ = 0;
  std::int32_t runLength_ = 0;
  std::int32_t initialRunLength_ = 0;
  std::array<std::array<std::uint16_t, 64>, kBinaryRows> binary_{};
  std::array<std::array<Escape, 32>, kEscapeRows> escapes_{};
  Escape neverEscapes_{0, kPeriodBits, 64};
};

inline constexpr PpmdModel::Quantized PpmdModel::kQuantized = PpmdModel::makeQuantized();

}  // namespace zantrel
