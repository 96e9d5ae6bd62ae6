// The text is a walk through the rows that jumps in memory at each byte and so waits for the cache.
// Sixteen walks at a time wait together: besides the row where the text begins, rows spread over
// the block are starting points; a walk that meets a starting point has found one segment of the
// text and goes on at the next point not yet taken. The segments joined in order are the text. Rows
// are a permutation, so every walk meets a starting point, if only its own, and no row is walked
// twice. Blocks that repeat themselves have several cycles; the one of the origin is then walked on
// and on.

#include "compress/bzip2_inverse.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <type_traits>

#include "compress/bzip2_format.h"
#include "core/byte_order.h"

namespace zantrel {

namespace {

using namespace bzip2;

constexpr std::size_t kLanes = 16;
// Enough that the last walks under way are short, few enough that changing walks costs little.
constexpr std::size_t kSegments = 1024;
constexpr std::size_t kWorthLanes = 1 << 14;  // smaller blocks lie in the inner caches

constexpr std::uint32_t kStart = 0x8000'0000;  // marks a row that is a starting point
constexpr unsigned kRowShift = 8;
static_assert(kMaxBlock + 1 < kStart >> kRowShift);

// A lane may walk alone through the whole block. Lanes are written at the same pace, so their
// distance must not be near a multiple of the page size.
constexpr std::size_t kLaneSize = kMaxBlock;
static_assert(kLaneSize % 4096 > 256 && kLaneSize % 4096 < 4096 - 256);

}  // namespace

struct Bzip2Inverse::Segment {
  std::uint32_t firstRow;  // content of the row where it starts
  const std::uint8_t* text;
  std::uint32_t size;
  std::uint32_t next;  // the segment that follows in the text
};

Bzip2Inverse::Bzip2Inverse()
    : rows_(std::make_unique_for_overwrite<std::uint32_t[]>(kMaxBlock + 1)),
      segments_(std::make_unique_for_overwrite<Segment[]>(kSegments)) {}

Bzip2Inverse::~Bzip2Inverse() = default;

void Bzip2Inverse::run(std::uint8_t* block, std::size_t size, std::size_t origin) {
  makeRows({block, size});
  if (size < kWorthLanes)
    followOneChain(block, size, origin);
  else
    followLanes(block, size, origin);
}

// Calls run(byte, count) for the bytes of a column in order, eight equal ones at once: a counter
// for each byte would else wait for its own last store all along a run.
template <class Run>
void Bzip2Inverse::byRuns(ByteSpan column, const Run& run) noexcept {
  constexpr std::uint64_t kOnes = 0x0101010101010101;
  using Eight = std::integral_constant<std::uint32_t, 8>;
  using One = std::integral_constant<std::uint32_t, 1>;
  const std::uint8_t* p = column.data();
  const std::uint8_t* const end = p + column.size();
  for (; end - p >= 8; p += 8) {
    if (loadWord<std::uint64_t, std::endian::little>(p) == kOnes * *p)
      run(*p, Eight{});
    else
      for (int i = 0; i < 8; ++i) run(p[i], One{});
  }
  for (; p < end; ++p) run(*p, One{});
}

void Bzip2Inverse::makeRows(ByteSpan column) noexcept {
  std::array<std::uint32_t, 256> place{};
  byRuns(column, [&](std::uint8_t byte, auto count) { place[byte] += count; });
  std::uint32_t sum = 0;
  for (std::uint32_t& entry : place) {
    const std::uint32_t count = entry;
    entry = sum;
    sum += count;
  }
  std::uint32_t row = 0;
  byRuns(column, [&](std::uint8_t byte, auto count) {
    std::uint32_t* const to = &rows_[place[byte]];
    for (std::uint32_t i = 0; i < count; ++i) to[i] = row++ << kRowShift | byte;
    place[byte] += count;
  });
}

void Bzip2Inverse::followOneChain(std::uint8_t* text, std::size_t size,
                                  std::size_t origin) const noexcept {
  std::uint32_t row = rows_[origin];
  for (std::size_t i = 0; i < size; ++i, row = rows_[row >> kRowShift])
    text[i] = static_cast<std::uint8_t>(row);
}

void Bzip2Inverse::followLanes(std::uint8_t* text, std::size_t size, std::size_t origin) {
  if (lanes_ == nullptr)
    lanes_ = std::make_unique_for_overwrite<std::uint8_t[]>(kLanes * kLaneSize);
  std::uint32_t count = 0;
  const auto addStart = [&](std::size_t row) {
    if (rows_[row] >= kStart) return;
    segments_[count].firstRow = rows_[row];
    rows_[row] = kStart | count++;
  };
  addStart(origin);
  for (std::size_t i = 1; i < kSegments; ++i) addStart(size / kSegments * i);

  // A lane without work stays in a row of its own behind all others.
  const auto idle = static_cast<std::uint32_t>(size << kRowShift);
  rows_[size] = idle;
  std::array<std::uint32_t, kLanes> current;
  std::array<std::uint32_t, kLanes> segment;
  std::uint32_t taken = 0;
  std::size_t step = 0;
  std::size_t busy = 0;
  const auto takeSegment = [&](std::size_t lane) {
    current[lane] = idle;
    if (taken == count) return;
    segment[lane] = taken++;
    Segment& s = segments_[segment[lane]];
    s.text = &lanes_[lane * kLaneSize + step];
    current[lane] = s.firstRow;
    ++busy;
  };
  for (std::size_t lane = 0; lane < kLanes; ++lane) takeSegment(lane);

  while (busy > 0) {
    std::uint32_t any = 0;
    for (std::size_t lane = 0; lane < kLanes; ++lane) {
      lanes_[lane * kLaneSize + step] = static_cast<std::uint8_t>(current[lane]);
      current[lane] = rows_[current[lane] >> kRowShift];
      any |= current[lane];
    }
    ++step;
    if (any < kStart) continue;
    for (std::size_t lane = 0; lane < kLanes; ++lane) {
      if (current[lane] < kStart) continue;
      Segment& s = segments_[segment[lane]];
      s.size = static_cast<std::uint32_t>(&lanes_[lane * kLaneSize + step] - s.text);
      s.next = current[lane] & ~kStart;
      --busy;
      takeSegment(lane);
    }
  }
  joinSegments(text, size);
}

void Bzip2Inverse::joinSegments(std::uint8_t* text, std::size_t size) const noexcept {
  for (std::uint32_t i = 0; size > 0; i = segments_[i].next) {
    const std::size_t part = std::min<std::size_t>(segments_[i].size, size);
    std::memcpy(text, segments_[i].text, part);
    text += part;
    size -= part;
  }
}

}  // namespace zantrel
