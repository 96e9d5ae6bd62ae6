#include "compress/ppmd_model.h"

#include <algorithm>
#include <utility>

namespace zantrel {

namespace {

constexpr std::uint32_t unitsFor(unsigned others) {
  return (others + 2) / 2;
}

}  // namespace

bool PpmdModel::start(unsigned order, std::uint32_t memoryBytes, PpmdRestore restore) {
  order_ = order;
  restore_ = restore;
  if (!memory_.create(memoryBytes)) return false;
  restart();
  neverEscapes_ = {0, kPeriodBits, 64};
  return true;
}

void PpmdModel::restart() {
  memory_.restart();
  fall_ = order_;
  runLength_ = initialRunLength_ = -static_cast<std::int32_t>(std::min(order_, 12u)) - 1;
  lastWasLikely_ = 0;

  context_ = longest_ = static_cast<Context*>(memory_.allocateContext());
  auto* states = static_cast<State*>(memory_.allocate(unitsFor(255)));
  *context_ = {255, 0, 256 + 1, memory_.refOf(states), 0};
  found_ = states;
  for (unsigned symbol = 0; symbol < 256; ++symbol)
    states[symbol] = {static_cast<std::uint8_t>(symbol), 1, {}};
  resetEstimates();
}

void PpmdModel::resetEstimates() {
  constexpr std::array<std::uint16_t, 8> kEscapes = {0x3CDD, 0x1F3F, 0x59BF, 0x48F3,
                                                     0x64A1, 0x5ABC, 0x6632, 0x6051};
  unsigned count = 0;  // the last that belongs to the row
  for (unsigned row = 0; row < kBinaryRows; ++row) {
    while (kQuantized.counts[count] == row) ++count;
    for (unsigned column = 0; column < 64; ++column)
      binary_[row][column] =
          static_cast<std::uint16_t>((1u << kBinaryBits) - kEscapes[column % 8] / (count + 1));
  }
  count = 0;
  for (unsigned row = 0; row < kEscapeRows; ++row) {
    while (kQuantized.counts[count + 3] == row + 3) ++count;
    constexpr std::uint8_t kShift = kPeriodBits - 4;
    escapes_[row].fill({static_cast<std::uint16_t>((2 * count + 5) << kShift), kShift, 7});
  }
}

// ---- Learning ----

// Adds the found symbol to every context from the longest down to the one in which it was found,
// and finds or makes the context for the symbol after it.
void PpmdModel::learn() {
  const std::uint8_t symbol = found_->symbol;
  const unsigned count = found_->count;
  Ref foundNext = found_->next();
  State* inSuffix = nullptr;
  if (count < kMaxCount / 4 && context_->suffix != 0) inSuffix = countInSuffix();

  Context* grown = longest_;
  if (fall_ == 0 && foundNext != 0) {
    Context* made = makeContexts(true, inSuffix, context_);
    if (made == nullptr) {
      found_->setNext(0);
      restore(grown);
    } else {
      found_->setNext(memory_.refOf(made));
      longest_ = made;
    }
    return;
  }

  memory_.pushSymbol(symbol);
  Ref place = memory_.text();
  if (memory_.textIsFull()) {
    restore(grown);
    return;
  }
  if (foundNext == 0 || memory_.isText(foundNext)) {
    Context* made =
        foundNext == 0 ? reduceOrder(inSuffix, context_) : makeContexts(false, inSuffix, context_);
    if (made == nullptr) {
      restore(grown);
      return;
    }
    foundNext = memory_.refOf(made);
  }
  if (--fall_ == 0) {
    place = foundNext;
    if (longest_ != context_) memory_.popSymbol();
  }
  for (; grown != context_; grown = at(grown->suffix)) {
    if (!addToLonger(grown, place, count, symbol)) {
      restore(grown);
      return;
    }
  }
  longest_ = context_ = at(foundNext);
}

// Counts the found symbol in the next shorter context too, which gives the state there.
PpmdModel::State* PpmdModel::countInSuffix() {
  Context* suffix = at(context_->suffix);
  if (suffix->others == 0) {
    State* only = suffix->only();
    if (only->count < 32) ++only->count;
    return only;
  }
  State* state = find(suffix, found_->symbol);
  if (state != statesOf(suffix) && state[0].count >= state[-1].count) {
    swap(state[0], state[-1]);
    --state;
  }
  if (state->count < kMaxCount - 9) {
    addCount(state, 2);
    addTotal(suffix, 2);
  }
  return state;
}

// A context that escaped learns the symbol, with a first count by its share in the context where it
// was found.
bool PpmdModel::addToLonger(Context* context, Ref next, unsigned foundCount, unsigned foundSymbol) {
  const unsigned others = context->others;
  const unsigned foundOthers = context_->others;
  if (!makeRoom(context)) return false;
  if (others != 0) {
    addTotal(context, 3 * others + 1 < foundOthers);
  } else {
    State* first = statesOf(context);
    first->count = static_cast<std::uint8_t>(first->count < kMaxCount / 4 - 1 ? 2 * first->count
                                                                              : kMaxCount - 4);
    context->total = static_cast<std::uint16_t>(first->count + escapeStart_ + (foundOthers > 2));
  }
  const std::uint32_t rest = context_->total - foundOthers - foundCount;
  std::uint32_t share = 2 * foundCount * (context->total + 6u);
  const std::uint32_t whole = rest + context->total;
  if (share < 6 * whole) {
    share = 1u + (share > whole) + (share >= 4 * whole);
    addTotal(context, 4);
  } else {
    share = 4u + (share > 9 * whole) + (share > 12 * whole) + (share > 15 * whole);
    addTotal(context, share);
  }
  State& added = statesOf(context)[others + 1];
  added.symbol = static_cast<std::uint8_t>(foundSymbol);
  added.count = static_cast<std::uint8_t>(share);
  added.setNext(next);
  context->flags = static_cast<std::uint8_t>(context->flags | highFlag(foundSymbol));
  context->others = static_cast<std::uint8_t>(others + 1);
  return true;
}

// For one state more.
bool PpmdModel::makeRoom(Context* context) {
  if (context->others == 0) {
    auto* states = static_cast<State*>(memory_.allocate(1));
    if (states == nullptr) return false;
    *states = *context->only();
    context->states = memory_.refOf(states);
  } else if (context->others % 2 != 0) {
    void* states = memory_.expand(statesOf(context), (context->others + 1u) / 2);
    if (states == nullptr) return false;
    context->states = memory_.refOf(states);
  }
  return true;
}

// The found symbol and those of the shorter contexts that know it point into the text: makes the
// contexts that they stand for, each with the one symbol that followed there. The longest is the
// result, null without memory.
PpmdModel::Context* PpmdModel::makeContexts(bool skipFound, State* inSuffix, Context* context) {
  const Ref place = found_->next();
  const std::uint8_t symbol = found_->symbol;
  std::array<State*, kMaxOrder + 1> waiting;
  unsigned count = 0;
  if (!skipFound) waiting[count++] = found_;
  while (context->suffix != 0) {
    context = at(context->suffix);
    State* state = std::exchange(inSuffix, nullptr);
    if (state == nullptr && context->others != 0) {
      state = find(context, symbol);
      if (state->count < kMaxCount - 9) {
        addCount(state, 1);
        addTotal(context, 1);
      }
    } else if (state == nullptr) {
      state = context->only();
      addCount(state, at(context->suffix)->others == 0 && state->count < 24);
    }
    if (state->next() != place) {
      context = at(state->next());
      if (count == 0) return context;
      break;
    }
    waiting[count++] = state;
  }

  const State first = newState(place, context);
  const unsigned flags = (symbol >= kHighSymbol ? kAfterHigh : 0) + highFlag(first.symbol);
  do {
    auto* made = static_cast<Context*>(memory_.allocateContext());
    if (made == nullptr) return nullptr;
    made->others = 0;
    made->flags = static_cast<std::uint8_t>(flags);
    *made->only() = first;
    made->suffix = memory_.refOf(context);
    waiting[--count]->setNext(memory_.refOf(made));
    context = made;
  } while (count != 0);
  return context;
}

// The symbol at a place in the text, counted by its share in the context before it.
PpmdModel::State PpmdModel::newState(Ref place, Context* context) const {
  State made{*memory_.at<std::uint8_t>(place), 0, {}};
  made.setNext(place + 1);
  if (context->others == 0) {
    made.count = context->only()->count;
    return made;
  }
  const std::uint32_t count = find(context, made.symbol)->count - 1u;
  const std::uint32_t rest = context->total - context->others - count;
  const std::uint32_t share =
      2 * count <= rest ? (5 * count > rest) : (count + 2 * rest - 3) / rest;
  made.count = static_cast<std::uint8_t>(1 + share);
  return made;
}

// The found symbol has nothing after it yet: all contexts that know it without knowing what follows
// get the place in the text; the context of the first that does know is the result, null without
// memory.
PpmdModel::Context* PpmdModel::reduceOrder(State* inSuffix, Context* context) {
  Context* const start = context;
  const Ref place = memory_.text();
  const std::uint8_t symbol = found_->symbol;
  State* state = found_;
  state->setNext(place);
  ++fall_;
  for (;;) {
    if (inSuffix == nullptr && context->suffix == 0) return context;
    context = at(context->suffix);
    if (inSuffix != nullptr) {
      state = std::exchange(inSuffix, nullptr);
    } else if (context->others != 0) {
      state = find(context, symbol);
      if (state->count < kMaxCount - 9) {
        addCount(state, 2);
        addTotal(context, 2);
      }
    } else {
      state = context->only();
      addCount(state, state->count < 32);
    }
    if (state->next() != 0) break;
    state->setNext(place);
    ++fall_;
  }
  if (state->next() <= place) {
    State* const kept = std::exchange(found_, state);
    Context* made = makeContexts(false, nullptr, context);
    state->setNext(made != nullptr ? memory_.refOf(made) : 0);
    found_ = kept;
  }
  if (fall_ == 1 && start == longest_) {
    found_->setNext(state->next());
    memory_.popSymbol();
  }
  return state->next() != 0 ? at(state->next()) : nullptr;
}

// ---- Aging ----

// The found symbol's count has grown too large: halves all counts, keeps them in order and drops
// symbols that reach 0.
void PpmdModel::rescale() {
  State* states = this->states();
  std::rotate(states, found_, found_ + 1);
  unsigned escape = context_->total - states->count;
  addCount(states, 4);
  unsigned sum = 0;
  halveCounts(states, escape, sum);
  found_ = states;
  if (states[context_->others].count == 0 && dropUnused(states, escape)) return;
  context_->total = static_cast<std::uint16_t>(sum + escape - (escape >> 1));
  context_->flags = static_cast<std::uint8_t>(context_->flags | kRescaled);
  found_ = this->states();
}

void PpmdModel::halveCounts(State* states, unsigned& escape, unsigned& sum) {
  const unsigned adder = fall_ != 0;
  const unsigned others = context_->others;
  for (unsigned i = 0; i <= others; ++i) {
    if (i != 0) escape -= states[i].count;
    const State halved{
        states[i].symbol,
        static_cast<std::uint8_t>((states[i].count + adder) >> 1),
        {states[i].next_[0], states[i].next_[1], states[i].next_[2], states[i].next_[3]}};
    sum += halved.count;
    unsigned to = i;
    for (; to != 0 && halved.count > states[to - 1].count; --to) states[to] = states[to - 1];
    states[to] = halved;
  }
}

// True when one symbol is left, which leaves nothing to do.
bool PpmdModel::dropUnused(State* states, unsigned& escape) {
  const unsigned oldUnits = unitsFor(context_->others);
  unsigned others = context_->others;
  for (; states[others].count == 0; --others) ++escape;
  context_->others = static_cast<std::uint8_t>(others);
  if (others == 0) {
    State last = *states;
    last.count =
        static_cast<std::uint8_t>(std::min((2u * last.count + escape - 1) / escape, kMaxCount / 3));
    memory_.release(states, oldUnits);
    makeOnly(context_, last);
    found_ = context_->only();
    return true;
  }
  context_->states = memory_.refOf(memory_.shrink(states, oldUnits, unitsFor(others)));
  context_->flags = static_cast<std::uint8_t>(context_->flags & ~kHasHigh);
  setHighFlag(context_);
  return false;
}

void PpmdModel::setHighFlag(Context* context) {
  const State* states = statesOf(context);
  unsigned flags = context->flags;
  for (unsigned i = 0; i <= context->others; ++i) flags |= highFlag(states[i].symbol);
  context->flags = static_cast<std::uint8_t>(flags);
}

void PpmdModel::makeOnly(Context* context, const State& state) {
  context->flags =
      static_cast<std::uint8_t>((context->flags & kAfterHigh) + highFlag(state.symbol));
  *context->only() = state;
}

// ---- Out of memory ----

// `grown` is the context that could not learn the symbol; longer ones have.
void PpmdModel::restore(Context* grown) {
  memory_.clearText();
  undoGrowth(grown);
  for (; grown != context_; grown = at(grown->suffix)) {
    if (grown->others == 0) {
      State* only = grown->only();
      only->count = static_cast<std::uint8_t>(only->count - (only->count >> 1));
      continue;
    }
    addTotal(grown, 4);
    if (grown->total > 128u + 4u * grown->others) refresh(grown, unitsFor(grown->others), 1);
  }
  if (restore_ == PpmdRestore::Restart || memory_.used() < memory_.size() / 2) {
    restart();
    return;
  }
  while (longest_->suffix != 0) longest_ = at(longest_->suffix);
  do {
    cutOff(longest_, 0);
    memory_.expandTextArea();
  } while (memory_.used() > 3 * (memory_.size() / 4));
  memory_.joinSoon();
  fall_ = order_;
}

void PpmdModel::undoGrowth(Context* grown) {
  for (Context* context = longest_; context != grown; context = at(context->suffix)) {
    --context->others;
    if (context->others != 0) {
      refresh(context, unitsFor(context->others + 1u), 0);
      continue;
    }
    State* states = statesOf(context);
    makeOnly(context, *states);
    memory_.releaseNearText(states);
    State* only = context->only();
    only->count = static_cast<std::uint8_t>((only->count + 11) >> 3);
  }
}

// Moves the states to a block that fits and brings total and flags in line with them; a scale of 1
// halves the counts.
void PpmdModel::refresh(Context* context, unsigned oldUnits, unsigned scale) {
  auto* states =
      static_cast<State*>(memory_.shrink(statesOf(context), oldUnits, unitsFor(context->others)));
  context->states = memory_.refOf(states);
  unsigned escape = context->total;
  unsigned sum = 0;
  for (unsigned i = 0; i <= context->others; ++i) {
    escape -= states[i].count;
    states[i].count = static_cast<std::uint8_t>((states[i].count + scale) >> scale);
    sum += states[i].count;
  }
  context->total = static_cast<std::uint16_t>(sum + ((escape + scale) >> scale));
  context->flags =
      static_cast<std::uint8_t>(context->flags & (kAfterHigh + (scale != 0 ? kRescaled : 0)));
  setHighFlag(context);
}

PpmdModel::Ref PpmdModel::cutOffNext(const State* state, unsigned depth) {
  return depth < order_ ? cutOff(at(state->next()), depth + 1) : 0;
}

// Removes contexts that nothing follows in memory, from the longest on; gives what is left of this
// one. As deep as the order at most.
PpmdModel::Ref PpmdModel::cutOff(Context* context, unsigned depth) {
  constexpr unsigned kKeptDepth = 9;
  if (context->others == 0) {
    State* only = context->only();
    if (!memory_.isText(only->next())) {
      only->setNext(cutOffNext(only, depth));
      if (only->next() != 0 || depth <= kKeptDepth) return memory_.refOf(context);
    }
    memory_.releaseNearText(context);
    return 0;
  }
  const std::uint32_t units = unitsFor(context->others);
  auto* states = static_cast<State*>(memory_.moveUp(statesOf(context), units));
  context->states = memory_.refOf(states);
  int last = context->others;
  for (int i = last; i >= 0; --i) {
    if (memory_.isText(states[i].next())) {
      states[i].setNext(0);
      swap(states[i], states[last--]);
    } else {
      states[i].setNext(cutOffNext(&states[i], depth));
    }
  }
  if (last == context->others || depth == 0) return memory_.refOf(context);
  if (last < 0) {
    memory_.release(states, units);
    memory_.releaseNearText(context);
    return 0;
  }
  context->others = static_cast<std::uint8_t>(last);
  if (last == 0) {
    State only = *states;
    only.count = static_cast<std::uint8_t>((only.count + 11) >> 3);
    makeOnly(context, only);
    memory_.release(states, units);
  } else {
    refresh(context, units, context->total > 16 * last);
  }
  return memory_.refOf(context);
}

}  // namespace zantrel
