#pragma once
// Where the nodes and the text of documents live.
//
// An arena holds what one load brought in, or what edits add: nodes in slabs that are aligned to
// their size, so that a node finds its arena; texts and lists of the parser, which go with the
// arena only. A node that is ended becomes free for another one as soon as no handle is on it, and
// an arena without nodes goes.
//
// A store is the arenas of trees that may exchange nodes, with the lock for all of them. When a
// tree of one store is to join a tree of another, that one absorbs the first: nodes stay where they
// are, and who held the absorbed store reaches the other through it.

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <new>
#include <utility>
#include <vector>

#include "xml/tree_info.h"
#include "xml/tree_node.h"

namespace zantrel {

class XmlStore;

/// All allocations throw std::bad_alloc.
class XmlArena final {
 public:
  explicit XmlArena(XmlStore& store) : store_(&store) {}
  ~XmlArena();
  XmlArena(const XmlArena&) = delete;
  XmlArena& operator=(const XmlArena&) = delete;

  static XmlArena& of(const TreeNode* node);
  /// The node has memory of its own from now on, which is to be released with the arena.
  static void noteOwner(const TreeNode* node);

  /// A node without tag, content and parent.
  TreeNode* newNode() {
    if (free_ == nullptr && next_ == slabEnd_) addSlabs();
    TreeNode* const place = free_ != nullptr ? free_ : next_++;
    if (place == free_) free_ = static_cast<TreeNode*>(place->above_);
    ++live_;
    return new (place) TreeNode;
  }
  /// Memory for anything, not initialized, aligned for pointers. XmlSlice::kSlack bytes behind it
  /// can be read.
  void* allocate(std::size_t bytes) {
    bytes = (bytes + alignof(void*) - 1) & ~(alignof(void*) - 1);
    if (bytes > bumpLeft_) return allocateBeyond(bytes);
    void* const result = bump_;
    bump_ += bytes;
    bumpLeft_ -= bytes;
    return result;
  }
  /// Bytes that the arena has taken.
  std::size_t memoryBytes() const { return memoryBytes_; }

 private:
  friend class XmlStore;
  static void noteRoot(const TreeNode* node);
  static constexpr std::size_t kSlabBytes = 4096;
  struct Slab;
  struct Block;

  std::byte* addBlock(std::size_t bytes);
  void addSlabs();
  void* allocateBeyond(std::size_t bytes);
  void bumpIn(std::byte* memory, std::size_t bytes);
  void releaseNodes(Slab& slab);
  void recycle(TreeNode* node);

  XmlStore* store_;
  std::size_t live_ = 0;  // nodes not free, ended ones with handles included
  TreeNode* free_ = nullptr;
  TreeNode* next_ = nullptr;  // the rest of a slab
  TreeNode* slabEnd_ = nullptr;
  Slab* slabs_ = nullptr;      // the last chunk of them
  std::size_t slabsUsed_ = 0;  // of that chunk
  std::size_t slabCount_ = 0;  // of all
  std::byte* bump_ = nullptr;
  std::size_t bumpLeft_ = 0;
  Block* blocks_ = nullptr;
  std::size_t memoryBytes_ = 0;
};

class XmlStore final {
 public:
  /// Keeps a store, and the one that absorbed it, alive.
  class Ref {
   public:
    Ref() = default;
    explicit Ref(XmlStore* store) : store_(store) {
      if (store_ != nullptr) store_->holders_.fetch_add(1, std::memory_order_relaxed);
    }
    Ref(const Ref& other) : Ref(other.store_) {}
    Ref(Ref&& other) noexcept : store_(std::exchange(other.store_, nullptr)) {}
    Ref& operator=(Ref other) noexcept {
      std::swap(store_, other.store_);
      return *this;
    }
    /// How many keep the store, this one included.
    std::uint32_t holders() const { return store_->holders_.load(std::memory_order_acquire); }
    ~Ref() {
      if (store_ != nullptr && store_->holders_.fetch_sub(1, std::memory_order_acq_rel) == 1)
        delete store_;
    }
    explicit operator bool() const { return store_ != nullptr; }
    XmlStore* operator->() const { return store_; }
    XmlStore& operator*() const { return *store_; }
    XmlStore* get() const { return store_; }

   private:
    XmlStore* store_ = nullptr;
  };

  static Ref create() { return Ref(new XmlStore); }
  XmlStore(const XmlStore&) = delete;
  XmlStore& operator=(const XmlStore&) = delete;

  /// The store that this one is part of by now.
  XmlStore& current();
  /// To be held, of the current store, while its trees are looked at or changed.
  std::mutex& mutex() { return mutex_; }

  /// For what a load brings in.
  XmlArena& newArena();
  /// A node of no tree, for edits.
  TreeNode* newNode() { return arenas_.front()->newNode(); }
  /// A tree with this root, which was in no tree.
  TreeInfo* newTree(TreeNode* root);
  /// The same for nodes on which no handle can be yet.
  TreeInfo* newTreeWithoutHandles(TreeNode* root);
  /// A node with a copy of all that another one and those below it hold.
  TreeNode* copy(const TreeNode* node);

  /// Ends a node that is in no tree, with all below it.
  void end(TreeNode* node);
  /// Ends a tree with all its nodes.
  void end(TreeInfo* tree);
  /// The root becomes a node of no tree; declaration and the rest end.
  static TreeNode* dissolve(TreeInfo* tree);

  // Edits that keep what handles are on. They take no locks.

  /// A node that has a parent becomes, with all below it, a tree of its own. The tree that it was
  /// in ends if no handle is left there.
  TreeInfo* detach(TreeNode* node);
  /// Takes a node that has a parent out of its tree: with handles on it or below it becomes a tree
  /// of its own, else it ends.
  void remove(TreeNode* node);
  /// A tree of this store becomes child number `at` of a node of another one; what belongs to its
  /// root alone ends.
  void attach(TreeNode* parent, std::size_t at, TreeInfo* tree);
  /// Two nodes, neither above the other, exchange all that they hold.
  void swap(TreeNode* a, TreeNode* b);

  /// A handle is put on a node, or leaves it. A tree that the last one leaves ends. Who knows the
  /// tree need not have it looked for.
  static void hold(TreeNode* node) { hold(node, node->tree()); }
  static void hold(TreeNode* node, TreeInfo* tree);
  static void release(TreeNode* node) { release(node, node->isAlive() ? node->tree() : nullptr); }
  static void release(TreeNode* node, TreeInfo* tree);
  /// A handle goes from one node to another of the same tree.
  static void moveHandle(TreeNode* from, TreeNode* to) {
    ++to->handles_;
    --from->handles_;
  }
  /// Changes whenever a node that may have a handle gets into another tree.
  std::uint64_t shape() const { return shape_; }

  /// Takes over all that another store has. Both must be current, and locked where others may use
  /// them.
  void absorb(XmlStore& other);
  /// The store that two become, by the rules of absorb(): the larger takes over the other, so that
  /// none is far from what it has become part of.
  static XmlStore& join(XmlStore& a, XmlStore& b);

  std::size_t memoryBytes() const;

 private:
  XmlStore();
  ~XmlStore() = default;
  void dropIfEmpty(XmlArena& arena);
  static std::uint32_t handlesOn(const TreeNode* top);
  void leave(TreeInfo* tree, std::uint32_t handles);

  std::atomic<std::uint32_t> holders_{0};
  std::atomic<XmlStore*> absorber_{nullptr};
  Ref absorberRef_;
  std::mutex mutex_;
  std::uint64_t shape_ = 0;
  std::vector<std::unique_ptr<XmlArena>> arenas_;  // the first one is for edits
};

}  // namespace zantrel
