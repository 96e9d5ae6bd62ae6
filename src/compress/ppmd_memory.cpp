#include "compress/ppmd_memory.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace zantrel {

void PpmdMemory::FreeArena::operator()(std::uint8_t* arena) const {
  std::free(arena);
}

bool PpmdMemory::create(std::uint32_t bytes) {
  if (arena_ != nullptr && size_ == bytes) return true;
  owned_.reset();
  // Not cleared, so that a small stream does not pay for a large arena: pages come as they are
  // used.
  owned_.reset(static_cast<std::uint8_t*>(std::malloc(bytes)));
  arena_ = owned_.get();
  size_ = arena_ != nullptr ? bytes : 0;
  return arena_ != nullptr;
}

void PpmdMemory::restart() {
  free_.fill(0);
  freeCount_.fill(0);
  clearText();
  high_ = arena_ + size_;
  low_ = unitsStart_ = high_ - size_ / 8 / kUnitBytes * 7 * kUnitBytes;
  joinCountdown_ = 0;
}

std::uint32_t PpmdMemory::used() const {
  std::uint32_t freeUnits = 0;
  for (unsigned list = 0; list < kLists; ++list)
    freeUnits += freeCount_[list] * kSizes.unitsOf[list];
  return size_ - static_cast<std::uint32_t>(high_ - low_) -
         static_cast<std::uint32_t>(unitsStart_ - text_) - freeUnits * kUnitBytes;
}

void* PpmdMemory::expand(void* block, std::uint32_t units) {
  const unsigned list = listOf(units);
  if (list == listOf(units + 1)) return block;
  void* larger = allocate(units + 1);
  if (larger == nullptr) return nullptr;
  std::memcpy(larger, block, std::size_t{kUnitBytes} * units);
  putFree(block, list);
  return larger;
}

void* PpmdMemory::shrink(void* block, std::uint32_t oldUnits, std::uint32_t newUnits) {
  const unsigned oldList = listOf(oldUnits);
  const unsigned newList = listOf(newUnits);
  if (oldList == newList) return block;
  if (free_[newList] != 0) {
    void* smaller = takeFree(newList);
    std::memcpy(smaller, block, std::size_t{kUnitBytes} * newUnits);
    putFree(block, oldList);
    return smaller;
  }
  const std::uint32_t kept = kSizes.unitsOf[newList];
  putFreeUnits(after(block, kept), kSizes.unitsOf[oldList] - kept);
  return block;
}

// Any number of units up to the largest block, which may take two lists.
void PpmdMemory::putFreeUnits(void* block, std::uint32_t units) {
  unsigned list = listOf(units);
  if (kSizes.unitsOf[list] != units) {
    const std::uint32_t first = kSizes.unitsOf[--list];
    putFree(after(block, first), units - first - 1);  // the rest is small: its list is its size - 1
  }
  putFree(block, list);
}

void* PpmdMemory::allocateRare(unsigned list) {
  if (joinCountdown_ == 0) {
    joinFree();
    if (free_[list] != 0) return takeFree(list);
  }
  const std::uint32_t wanted = kSizes.unitsOf[list];
  for (unsigned larger = list + 1; larger < kLists; ++larger) {
    if (free_[larger] == 0) continue;
    void* block = takeFree(larger);
    putFreeUnits(after(block, wanted), kSizes.unitsOf[larger] - wanted);
    return block;
  }
  --joinCountdown_;
  const std::uint32_t bytes = wanted * kUnitBytes;
  if (static_cast<std::uint32_t>(unitsStart_ - text_) <= bytes) return nullptr;
  return unitsStart_ -= bytes;
}

// So that a walk over neighbouring free blocks stops at the gap.
void PpmdMemory::endUnitsAtGap() {
  if (low_ != high_) reinterpret_cast<FreeBlock*>(low_)->mark = 0;
}

void PpmdMemory::joinFree() {
  joinCountdown_ = 1 << 13;
  freeCount_.fill(0);
  endUnitsAtGap();
  Ref next = chainJoined();
  while (next != 0) {
    auto* block = at<FreeBlock>(next);
    next = block->next;
    std::uint32_t units = block->units;
    if (units == 0) continue;
    std::uint8_t* place = after(block, 0);
    for (; units > kLargestBlock; units -= kLargestBlock, place = after(place, kLargestBlock))
      putFree(place, kLists - 1);
    putFreeUnits(place, units);
  }
}

// Empties all lists into one chain, in their order, each block having swallowed the free blocks
// right behind it, which are left with no units.
PpmdMemory::Ref PpmdMemory::chainJoined() {
  Ref head = 0;
  Ref* link = &head;
  for (Ref& list : free_) {
    Ref next = std::exchange(list, 0);
    while (next != 0) {
      auto* block = at<FreeBlock>(next);
      const Ref following = block->next;
      if (block->units != 0) {
        *link = next;
        link = &block->next;
        for (;;) {
          auto* neighbour = reinterpret_cast<FreeBlock*>(after(block, block->units));
          if (neighbour->mark != kFreeMark) break;
          block->units += neighbour->units;
          neighbour->units = 0;
        }
      }
      next = following;
    }
  }
  *link = 0;
  return head;
}

void PpmdMemory::releaseNearText(void* unit) {
  if (unit == unitsStart_)
    unitsStart_ += kUnitBytes;
  else
    putFree(unit, 0);
}

void* PpmdMemory::moveUp(void* block, std::uint32_t units) {
  const unsigned list = listOf(units);
  constexpr std::uint32_t kNear = 16 * 1024;
  if (block > unitsStart_ + kNear || refOf(block) > free_[list]) return block;
  void* moved = takeFree(list);
  std::memcpy(moved, block, std::size_t{kUnitBytes} * units);
  if (block == unitsStart_)
    unitsStart_ += kUnitBytes * kSizes.unitsOf[list];
  else
    putFree(block, list);
  return moved;
}

// Gives the free blocks at the border to the text and takes them out of their lists.
void PpmdMemory::expandTextArea() {
  std::array<std::uint32_t, kLists> taken{};
  endUnitsAtGap();
  auto* block = reinterpret_cast<FreeBlock*>(unitsStart_);
  while (block->mark == kFreeMark) {
    block->mark = 0;
    ++taken[listOf(block->units)];
    block = reinterpret_cast<FreeBlock*>(after(block, block->units));
  }
  unitsStart_ = after(block, 0);
  for (unsigned list = 0; list < kLists; ++list) {
    Ref* link = &free_[list];
    while (taken[list] != 0) {
      auto* listed = at<FreeBlock>(*link);
      if (listed->mark == 0) {
        *link = listed->next;
        --freeCount_[list];
        --taken[list];
      } else {
        link = &listed->next;
      }
    }
  }
}

}  // namespace zantrel
