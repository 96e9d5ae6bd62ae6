#pragma once
// The memory of a PPMd model: one arena, addressed by 32-bit offsets, in which blocks of 1 to 128
// units of 12 bytes grow from both ends of a gap and the recent text stands below them:
//
//     text ... | free | blocks of states ... | gap | ... contexts
//              text() unitsStart             low   high          end
//
// When it is full the model forgets, so which block an allocation gets shows in the coded bytes:
// the order of every step here belongs to the format.

#include <array>
#include <cstdint>
#include <cstring>
#include <memory>

namespace zantrel {

class PpmdMemory final {
 public:
  /// Offset into the arena; 0 means nothing.
  using Ref = std::uint32_t;
  static constexpr std::uint32_t kUnitBytes = 12;

  /// Memory of this many bytes, a multiple of 4; false when it cannot be had. The content of a
  /// model of the same size that was here before is left as it is.
  bool create(std::uint32_t bytes);
  /// Forgets everything.
  void restart();

  template <class T>
  T* at(Ref ref) const {
    return reinterpret_cast<T*>(arena_ + ref);
  }
  /// Says that what is there will be wanted soon.
  void prefetch(Ref ref) const { __builtin_prefetch(arena_ + ref); }
  Ref refOf(const void* place) const {
    return static_cast<Ref>(static_cast<const std::uint8_t*>(place) - arena_);
  }

  // The text: the symbols coded so far, of which contexts still to be made are places.
  void pushSymbol(std::uint8_t symbol) { *text_++ = symbol; }
  void popSymbol() { --text_; }
  void clearText() { text_ = arena_; }
  Ref text() const { return refOf(text_); }
  bool textIsFull() const { return text_ >= unitsStart_; }
  /// Tells a place in the text from a context.
  bool isText(Ref ref) const { return arena_ + ref < unitsStart_; }

  // Blocks. All are null when memory is used up.
  void* allocateContext() {
    if (high_ != low_) return high_ -= kUnitBytes;
    return free_[0] != 0 ? takeFree(0) : allocateRare(0);
  }
  /// A block for this many units.
  void* allocate(std::uint32_t units) {
    const unsigned list = listOf(units);
    if (free_[list] != 0) return takeFree(list);
    const std::uint32_t bytes = kUnitBytes * kSizes.unitsOf[list];
    if (bytes <= static_cast<std::uint32_t>(high_ - low_)) {
      std::uint8_t* block = low_;
      low_ += bytes;
      return block;
    }
    return allocateRare(list);
  }
  void release(void* block, std::uint32_t units) { putFree(block, listOf(units)); }
  /// The block with room for one unit more, its content moved; null, the old block standing, when
  /// memory is used up.
  void* expand(void* block, std::uint32_t units);
  /// The block cut to fewer units, perhaps moved.
  void* shrink(void* block, std::uint32_t oldUnits, std::uint32_t newUnits);

  // For giving back memory under pressure: blocks at the border are joined to the text area.
  void releaseNearText(void* unit);
  void* moveUp(void* block, std::uint32_t units);
  void expandTextArea();
  /// The next failing allocation joins free blocks first.
  void joinSoon() { joinCountdown_ = 0; }

  std::uint32_t size() const { return size_; }
  std::uint32_t used() const;

 private:
  static constexpr unsigned kLists = 38;
  static constexpr std::uint32_t kLargestBlock = 128;
  static constexpr std::uint32_t kFreeMark = 0xFFFFFFFF;  // no context or state begins like this

  struct FreeBlock {
    std::uint32_t mark;
    Ref next;
    std::uint32_t units;
  };
  static_assert(sizeof(FreeBlock) == kUnitBytes);

  // Sizes 1 2 3 4, 6 8 10 12, 15 18 21 24, 28 32 ... 128 have lists; others round up.
  struct Sizes {
    std::array<std::uint8_t, kLists> unitsOf{};
    std::array<std::uint8_t, kLargestBlock> listOf{};
  };
  static constexpr Sizes makeSizes() {
    Sizes sizes;
    unsigned units = 0;
    for (unsigned list = 0; list < kLists; ++list) {
      for (unsigned step = list >= 12 ? 4 : list / 4 + 1; step > 0; --step)
        sizes.listOf[units++] = static_cast<std::uint8_t>(list);
      sizes.unitsOf[list] = static_cast<std::uint8_t>(units);
    }
    return sizes;
  }
  static const Sizes kSizes;
  static unsigned listOf(std::uint32_t units) { return kSizes.listOf[units - 1]; }

  static std::uint8_t* after(void* block, std::uint32_t units) {
    return static_cast<std::uint8_t*>(block) + std::size_t{kUnitBytes} * units;
  }
  void putFree(void* block, unsigned list) {
    auto* freed = static_cast<FreeBlock*>(block);
    *freed = {kFreeMark, free_[list], kSizes.unitsOf[list]};
    free_[list] = refOf(freed);
    ++freeCount_[list];
  }
  void* takeFree(unsigned list) {
    auto* taken = at<FreeBlock>(free_[list]);
    free_[list] = taken->next;
    --freeCount_[list];
    return taken;
  }
  void putFreeUnits(void* block, std::uint32_t units);
  void* allocateRare(unsigned list);
  void joinFree();
  Ref chainJoined();
  void endUnitsAtGap();

  struct FreeArena {
    void operator()(std::uint8_t* arena) const;
  };
  std::unique_ptr<std::uint8_t, FreeArena> owned_;
  std::uint8_t* arena_ = nullptr;
  std::uint8_t* text_ = nullptr;
  std::uint8_t* unitsStart_ = nullptr;
  std::uint8_t* low_ = nullptr;
  std::uint8_t* high_ = nullptr;
  std::uint32_t size_ = 0;
  std::uint32_t joinCountdown_ = 0;
  std::array<Ref, kLists> free_{};
  std::array<std::uint32_t, kLists> freeCount_{};
};

inline constexpr PpmdMemory::Sizes PpmdMemory::kSizes = PpmdMemory::makeSizes();

}  // namespace zantrel
