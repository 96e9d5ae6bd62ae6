// Induced sorting (G. Nong, S. Zhang, W. H. Chan, "Two efficient algorithms for linear time suffix
// array construction", 2011), made for rotations: the text is a circle, so there is no end to treat
// apart.
//
// A position descends if its rotation is greater than the next one, else it ascends. Ascending
// positions behind a descending one are valleys. From the valleys in order follow all descending
// positions in one pass over the rows upwards, and from those all ascending ones in a pass down.
// The same two passes over unsorted valleys sort the pieces from valley to valley; numbered by rank
// they are a circle of at most half the length, which is sorted in the same way.
//
// Each circle is turned to begin at a valley, so that only a valley ever has to look around its
// end: valleys start nothing but the first pass, where the first one is listed at the end instead.
// A row holds its position and, above it, the symbol before that, and whether that descends: what a
// visit appends, and where, is known without another look at the text, and in the end those symbols
// are the last column.

#include "compress/bzip2_rotation_sort.h"

#include <algorithm>
#include <bit>
#include <vector>

#include "compress/bzip2_format.h"
#include "core/byte_order.h"

namespace zantrel {

namespace {

using namespace bzip2;

// What is kept in front of a circle's first symbol and behind its last, to be read without a check.
constexpr std::size_t kBefore = 1;
constexpr std::size_t kBehind = 8;

// Storage that only grows and is not cleared.
template <class T>
class Scratch {
 public:
  T* get(std::size_t size) {
    if (size > size_) {
      storage_.reset();
      storage_ = std::make_unique_for_overwrite<T[]>(size);
      size_ = size;
    }
    return storage_.get();
  }

 private:
  std::unique_ptr<T[]> storage_;
  std::size_t size_ = 0;
};

// The first valley of a circle, or its size if there is none.
template <class Symbol>
std::size_t findValley(const Symbol* symbols, std::size_t size) {
  std::size_t floor = size;  // where the last step down led
  std::size_t at = 0;
  for (std::size_t i = 1; i <= 2 * size; ++i) {
    const std::size_t next = at + 1 == size ? 0 : at + 1;
    if (symbols[next] < symbols[at]) floor = next;
    if (symbols[next] > symbols[at] && floor != size) return floor;
    at = next;
  }
  return size;
}

// A circle of symbols below `alphabet`, with the memory to sort its rotations.
template <class Symbol, class Row, unsigned kPositionBits>
class Circle {
 public:
  // Takes symbols, turned to begin at a valley; false if there is none because all are equal.
  bool assign(const Symbol* symbols, std::size_t size, std::size_t alphabet);
  // Where the first symbol of the circle stood.
  std::size_t turn() const noexcept { return turn_; }

  // Sorts the pieces between valleys and numbers them; true if they all differ, and so the valleys
  // are in order.
  bool numberPieces() noexcept;
  std::size_t pieceCount() const noexcept { return valleyCount_; }
  std::size_t differentPieces() const noexcept { return differentPieces_; }
  // The numbers in the order of the text. They stay until the valleys are put in order.
  const std::uint32_t* pieceNumbers() noexcept;

  // Puts the valleys in order: indexAt(i) is the index in the text of the i-th.
  template <class IndexAt>
  void orderValleys(IndexAt indexAt) noexcept {
    for (std::size_t i = 0; i < valleyCount_; ++i)
      sorted_[valleyCount_ - 1 - i] = valleys_[indexAt(i)];
  }
  // Sorts all rotations, the valleys being in order.
  void sortAll() noexcept;

  std::size_t positionAt(std::size_t row) const noexcept { return rows_[row] & kPositionMask; }
  Symbol symbolBefore(std::size_t row) const noexcept {
    return static_cast<Symbol>(rows_[row] >> kPositionBits);
  }

 private:
  static constexpr Row kPositionMask = (Row{1} << kPositionBits) - 1;
  // The two highest bits of a row.
  static constexpr Row kAfterDescent = ~(~Row{0} >> 1);  // the position before descends
  static constexpr Row kAscends = kAfterDescent >> 1;    // this one ascends

  void classify() noexcept;
  void placeValleys() noexcept;
  void sortDescending() noexcept;
  template <bool kListValleys>
  void sortAscending() noexcept;
  bool samePiece(std::size_t a, std::size_t b, std::size_t size) const noexcept;

  Symbol before(std::size_t position) const noexcept {
    return text_[static_cast<std::ptrdiff_t>(position) - 1];
  }
  static Row makeRow(std::size_t position, Symbol before, Row flags) noexcept {
    return static_cast<Row>(Row{before} << kPositionBits | static_cast<Row>(position) | flags);
  }
  std::size_t half(std::size_t valley) const noexcept { return valley == size_ ? 0 : valley / 2; }

  std::size_t size_ = 0;
  std::size_t alphabet_ = 0;
  std::size_t turn_ = 0;
  std::size_t valleyCount_ = 0;
  std::size_t differentPieces_ = 0;
  Symbol* text_ = nullptr;
  Row* rows_ = nullptr;
  std::uint32_t* valleys_ = nullptr;  // in the order of the text; the first, at 0, stands as size_
  std::uint32_t* sorted_ = nullptr;   // from the greatest to the least
  std::uint32_t* atHalf_ = nullptr;   // by half a valley's position: size, then number of its piece
  std::uint32_t* begin_ = nullptr;    // of the rows of each symbol; behind them that of no symbol
  std::uint32_t* next_ = nullptr;     // where a pass goes on

  Scratch<Symbol> textStorage_;
  Scratch<Row> rowStorage_;
  Scratch<std::uint32_t> valleyStorage_;
  Scratch<std::uint32_t> bucketStorage_;
};

template <class S, class R, unsigned B>
bool Circle<S, R, B>::assign(const S* symbols, std::size_t size, std::size_t alphabet) {
  turn_ = findValley(symbols, size);
  if (turn_ == size) return false;
  size_ = size;
  alphabet_ = alphabet;
  text_ = textStorage_.get(kBefore + size + kBehind) + kBefore;
  std::copy(symbols + turn_, symbols + size, text_);
  std::copy(symbols, symbols + turn_, text_ + size - turn_);
  text_[-1] = text_[size - 1];
  for (std::size_t i = 0; i < kBehind; ++i) text_[size + i] = text_[i];
  rows_ = rowStorage_.get(size);
  const std::size_t most = size / 2 + 1;
  valleys_ = valleyStorage_.get(3 * most);
  sorted_ = valleys_ + most;
  atHalf_ = sorted_ + most;
  begin_ = bucketStorage_.get(2 * alphabet + 1);
  next_ = begin_ + alphabet + 1;
  classify();
  return true;
}

// Finds the valleys, backwards, since where symbols are equal the type is that of the next
// position; and the bounds of the buckets.
template <class S, class R, unsigned B>
void Circle<S, R, B>::classify() noexcept {
  std::fill_n(begin_, alphabet_ + 1, 0);
  const std::size_t most = size_ / 2 + 1;
  std::size_t found = most;  // listed from the end
  unsigned nextAscends = 1;
  S nextSymbol = text_[size_];
  for (std::size_t i = size_; i-- > 0;) {
    const S symbol = text_[i];
    const unsigned ascends =
        unsigned{symbol < nextSymbol} | (unsigned{symbol == nextSymbol} & nextAscends);
    ++begin_[symbol];
    // Overwritten by the next one if it is no valley.
    sorted_[found - 1] = static_cast<std::uint32_t>(i + 1);
    found -= nextAscends & ~ascends;
    nextAscends = ascends;
    nextSymbol = symbol;
  }
  valleyCount_ = most - found;
  valleys_[0] = static_cast<std::uint32_t>(size_);
  std::copy(sorted_ + found, sorted_ + most - 1, valleys_ + 1);

  std::uint32_t sum = 0;
  for (std::size_t c = 0; c <= alphabet_; ++c) {
    const std::uint32_t count = begin_[c];
    begin_[c] = sum;
    sum += count;
  }
}

// Valleys go to the ends of their buckets; all other rows are left empty, which is 0.
template <class S, class R, unsigned B>
void Circle<S, R, B>::placeValleys() noexcept {
  std::fill_n(rows_, size_, R{0});
  std::copy(begin_ + 1, begin_ + alphabet_ + 1, next_);
  for (std::size_t i = 0; i < valleyCount_; ++i) {
    const std::size_t position = sorted_[i];
    rows_[--next_[text_[position]]] = makeRow(position, before(position), kAfterDescent);
  }
}

template <class S, class R, unsigned B>
void Circle<S, R, B>::sortDescending() noexcept {
  std::copy(begin_, begin_ + alphabet_, next_);
  for (std::size_t i = 0; i < size_; ++i) {
    if ((rows_[i] & kAfterDescent) == 0) continue;
    const std::size_t position = positionAt(i) - 1;
    const S symbol = symbolBefore(i);
    const S earlier = before(position);
    rows_[next_[symbol]++] = makeRow(position, earlier, earlier >= symbol ? kAfterDescent : R{0});
  }
}

// Valleys are met again as the ascending positions behind a descending one. Their old rows are
// overwritten before the pass comes to them.
template <class S, class R, unsigned B>
template <bool kListValleys>
void Circle<S, R, B>::sortAscending() noexcept {
  std::copy(begin_ + 1, begin_ + alphabet_ + 1, next_);
  std::size_t listed = 0;
  for (std::size_t i = size_; i-- > 0;) {
    if ((rows_[i] & kAfterDescent) == 0) {
      const std::size_t position = positionAt(i) - 1;
      const S symbol = symbolBefore(i);
      const S earlier = before(position);
      rows_[--next_[symbol]] =
          makeRow(position, earlier, earlier > symbol ? kAscends | kAfterDescent : kAscends);
    } else if constexpr (kListValleys) {
      if ((rows_[i] & kAscends) == 0) continue;
      const auto position = static_cast<std::uint32_t>(positionAt(i));
      sorted_[listed++] = position == 0 ? static_cast<std::uint32_t>(size_) : position;
    }
  }
}

template <class S, class R, unsigned B>
void Circle<S, R, B>::sortAll() noexcept {
  placeValleys();
  sortDescending();
  sortAscending<false>();
}

template <class S, class R, unsigned B>
bool Circle<S, R, B>::numberPieces() noexcept {
  std::copy(valleys_, valleys_ + valleyCount_, sorted_);
  placeValleys();
  sortDescending();
  sortAscending<true>();

  std::size_t end = size_;
  for (std::size_t i = valleyCount_; i-- > 0;) {
    const std::size_t begin = i == 0 ? 0 : valleys_[i];
    atHalf_[begin / 2] = static_cast<std::uint32_t>(end - begin);
    end = begin;
  }
  std::uint32_t number = 0;
  std::size_t last = 0, lastSize = 0;  // no piece has that size
  for (std::size_t i = valleyCount_; i-- > 0;) {
    const std::size_t position = sorted_[i] == size_ ? 0 : sorted_[i];
    const std::size_t size = atHalf_[position / 2];
    number += size != lastSize || !samePiece(position, last, size);
    atHalf_[position / 2] = number - 1;
    last = position;
    lastSize = size;
  }
  differentPieces_ = number;
  return differentPieces_ == valleyCount_;
}

// Pieces include the valley behind them.
template <class S, class R, unsigned B>
bool Circle<S, R, B>::samePiece(std::size_t a, std::size_t b, std::size_t size) const noexcept {
  if constexpr (sizeof(S) == 1) {
    const auto word = [this](std::size_t at) {
      return loadWord<std::uint64_t, std::endian::little>(text_ + at);
    };
    for (; size >= 8; size -= 8, a += 8, b += 8)
      if (word(a) != word(b)) return false;
    return (word(a) ^ word(b)) << (56 - 8 * size) == 0;
  } else {
    return std::equal(text_ + a, text_ + a + size + 1, text_ + b);
  }
}

template <class S, class R, unsigned B>
const std::uint32_t* Circle<S, R, B>::pieceNumbers() noexcept {
  for (std::size_t i = 0; i < valleyCount_; ++i) sorted_[i] = atHalf_[half(valleys_[i])];
  return sorted_;
}

// Rows of one word for a block, of two for the circles of its pieces.
constexpr unsigned kBlockPositionBits = 20;
using BlockCircle = Circle<std::uint8_t, std::uint32_t, kBlockPositionBits>;
using PieceCircle = Circle<std::uint32_t, std::uint64_t, 30>;
static_assert(kMaxBlock < 1U << kBlockPositionBits);

}  // namespace

struct Bzip2RotationSort::Memory {
  BlockCircle block;
  std::vector<std::unique_ptr<PieceCircle>> pieces;  // one a level

  template <class SomeCircle>
  void sort(SomeCircle& circle, std::size_t level);
};

// Each level has at most half the symbols of the one above.
template <class SomeCircle>
void Bzip2RotationSort::Memory::sort(SomeCircle& circle, std::size_t level) {
  if (!circle.numberPieces()) {
    if (level == pieces.size()) pieces.push_back(std::make_unique<PieceCircle>());
    PieceCircle& next = *pieces[level];
    const std::size_t count = circle.pieceCount();
    if (next.assign(circle.pieceNumbers(), count, circle.differentPieces())) {
      sort(next, level + 1);
      circle.orderValleys([&](std::size_t i) {
        const std::size_t index = next.positionAt(i) + next.turn();
        return index < count ? index : index - count;
      });
    } else {
      circle.orderValleys([](std::size_t i) { return i; });
    }
  }
  circle.sortAll();
}

Bzip2RotationSort::Bzip2RotationSort() : memory_(std::make_unique<Memory>()) {}
Bzip2RotationSort::~Bzip2RotationSort() = default;

std::size_t Bzip2RotationSort::run(ByteSpan block, std::uint8_t* lastColumn) {
  BlockCircle& circle = memory_->block;
  if (!circle.assign(block.data(), block.size(), 256)) {
    std::copy(block.begin(), block.end(), lastColumn);
    return 0;
  }
  memory_->sort(circle, 0);
  const std::size_t start = circle.turn() == 0 ? 0 : block.size() - circle.turn();
  std::size_t origin = 0;
  for (std::size_t i = 0; i < block.size(); ++i) {
    lastColumn[i] = circle.symbolBefore(i);
    if (circle.positionAt(i) == start) origin = i;
  }
  return origin;
}

}  // namespace zantrel
