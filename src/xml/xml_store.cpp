#include "xml/xml_store.h"

#include <algorithm>
#include <new>

namespace zantrel {

// ---- XmlArena ----

struct XmlArena::Slab {
  XmlArena* arena;
  bool owners;  // some of its nodes may have memory of their own
  bool roots;   // some may have a TreeInfo

  static Slab* of(const TreeNode* node) {
    return reinterpret_cast<Slab*>(reinterpret_cast<std::uintptr_t>(node) & ~(kSlabBytes - 1));
  }
  // As many as fit behind the head, at the end, so that each has a cache line of its own.
  static constexpr std::size_t kNodes = kSlabBytes / sizeof(TreeNode) - 1;
  static_assert(sizeof(TreeNode) >= sizeof(void*) + 2 * sizeof(bool));

  TreeNode* nodes() {
    return reinterpret_cast<TreeNode*>(reinterpret_cast<std::byte*>(this) + kSlabBytes) - kNodes;
  }
};

XmlArena& XmlArena::of(const TreeNode* node) {
  return *Slab::of(node)->arena;
}

void XmlArena::noteRoot(const TreeNode* node) {
  Slab::of(node)->roots = true;
}
void XmlArena::noteOwner(const TreeNode* node) {
  Slab::of(node)->owners = true;
}

XmlArena::~XmlArena() {
  for (const Chunk& chunk : chunks_) {
    for (std::size_t s = 0; s < chunk.count; ++s) {
      auto* const slab = reinterpret_cast<Slab*>(chunk.slabs + s * kSlabBytes);
      if (!slab->owners && !slab->roots) continue;
      TreeNode* const end =
          slabEnd_ == slab->nodes() + Slab::kNodes ? next_ : slab->nodes() + Slab::kNodes;
      for (TreeNode* node = slab->nodes(); node != end; ++node) {
        if (!node->isAlive()) continue;
        if (node->isRoot()) delete static_cast<TreeInfo*>(node->above_);
        if (slab->owners) node->releaseOwned();
      }
    }
    ::operator delete(chunk.slabs, std::align_val_t(kSlabBytes));
  }
}

// A slab first, so that a small document stays small, then more at a time.
void XmlArena::addSlabs() {
  constexpr std::size_t kMost = 64;
  if (chunks_.empty() || slabsUsed_ == chunks_.back().count) {
    const std::size_t count = chunks_.empty() ? 1 : std::min(kMost, 2 * chunks_.back().count);
    chunks_.push_back({nullptr, 0});
    slabsUsed_ = 0;
    const std::size_t bytes = count * kSlabBytes;
    auto* const slabs =
        static_cast<std::byte*>(::operator new(bytes, std::align_val_t(kSlabBytes)));
    chunks_.back() = {slabs, count};
    for (std::size_t s = 0; s < count; ++s)
      new (chunks_.back().slabs + s * kSlabBytes) Slab{this, false, false};
    memoryBytes_ += count * kSlabBytes;
  }
  auto* const slab = reinterpret_cast<Slab*>(chunks_.back().slabs + slabsUsed_++ * kSlabBytes);
  next_ = slab->nodes();
  slabEnd_ = next_ + Slab::kNodes;
}

TreeNode* XmlArena::newNode() {
  TreeNode* place = free_;
  if (place != nullptr) {
    free_ = static_cast<TreeNode*>(place->above_);
  } else {
    if (next_ == slabEnd_) addSlabs();
    place = next_++;
  }
  ++live_;
  return new (place) TreeNode;
}

void* XmlArena::allocate(std::size_t bytes) {
  constexpr std::size_t kFirstBlock = 1024;
  constexpr std::size_t kBlock = 65536;
  constexpr std::size_t kAlign = alignof(void*);
  bytes = (bytes + kAlign - 1) & ~(kAlign - 1);
  if (bytes > bumpLeft_) {
    // Blocks grow with the arena, so that a small document stays small.
    const std::size_t usual = std::clamp(memoryBytes_, kFirstBlock, kBlock);
    const std::size_t size = bytes >= usual / 4 ? bytes : usual;
    blocks_.push_back(std::unique_ptr<std::byte[]>(new std::byte[size]));
    memoryBytes_ += size;
    if (size == bytes) return blocks_.back().get();  // what is left of the last block still serves
    bump_ = blocks_.back().get();
    bumpLeft_ = size;
  }
  void* const result = bump_;
  bump_ += bytes;
  bumpLeft_ -= bytes;
  return result;
}

void XmlArena::recycle(TreeNode* node) {
  node->above_ = free_;
  free_ = node;
  --live_;
}

// ---- XmlStore ----

XmlStore::XmlStore() {
  newArena();
}

XmlStore& XmlStore::current() {
  XmlStore* store = this;
  while (XmlStore* const absorber = store->absorber_.load(std::memory_order_acquire))
    store = absorber;
  return *store;
}

XmlArena& XmlStore::newArena() {
  if (arenas_.size() == 1 && arenas_.front()->live_ == 0) return *arenas_.front();
  arenas_.push_back(std::make_unique<XmlArena>(*this));
  return *arenas_.back();
}

TreeInfo* XmlStore::newTreeWithoutHandles(TreeNode* root) {
  auto* const tree = new TreeInfo;
  tree->root = root;
  root->above_ = tree;
  root->flags_ |= TreeNode::kRoot;
  XmlArena::noteRoot(root);
  return tree;
}

TreeInfo* XmlStore::newTree(TreeNode* root) {
  TreeInfo* const tree = newTreeWithoutHandles(root);
  for (TreeNode* node = root; node != nullptr; node = node->next(root))
    tree->handles += node->handles_;
  return tree;
}

TreeNode* XmlStore::copy(const TreeNode* node) {
  TreeNode* const top = newNode();
  const TreeNode* from = node;
  TreeNode* to = top;
  for (;;) {
    to->setTag(from->tag());
    to->setContent(from->content());
    to->setCdata(from->isCdata());
    to->editAttributes().copyFrom(from->attributes());
    const TreeNode* const following = from->next(node);
    if (following == nullptr) return top;
    // The copy of the next one's parent is the copy of this one or above it.
    for (const TreeNode* above = from; above != following->parent(); above = above->parent())
      to = to->parent();
    TreeNode* const added = newNode();
    to->appendChild(added);
    from = following;
    to = added;
  }
}

void XmlStore::end(TreeNode* node) {
  TreeNode* waiting = node;
  node->above_ = nullptr;
  while (waiting != nullptr) {
    TreeNode* const ended = waiting;
    waiting = static_cast<TreeNode*>(ended->above_);
    for (std::size_t i = 0; i < ended->childCount_; ++i) {
      ended->children_[i]->above_ = waiting;
      waiting = ended->children_[i];
    }
    const std::uint32_t handles = ended->handles_;
    ended->releaseOwned();
    ended->validity_ = TreeNode::kDead;
    if (handles != 0) continue;
    XmlArena& arena = XmlArena::of(ended);
    arena.recycle(ended);
    dropIfEmpty(arena);
  }
}

TreeNode* XmlStore::dissolve(TreeInfo* tree) {
  TreeNode* const root = tree->root;
  XmlStore& store = *XmlArena::of(root).store_;
  root->flags_ = static_cast<std::uint8_t>(root->flags_ & ~TreeNode::kRoot);
  root->above_ = nullptr;
  if (tree->declaration != nullptr) store.end(tree->declaration);
  for (TreeNode* instruction : tree->processingInstructions) store.end(instruction);
  delete tree;
  return root;
}

void XmlStore::end(TreeInfo* tree) {
  end(dissolve(tree));
}

void XmlStore::hold(TreeNode* node) {
  ++node->handles_;
  if (TreeInfo* const tree = node->tree()) ++tree->handles;
}

void XmlStore::release(TreeNode* node) {
  XmlArena& arena = XmlArena::of(node);
  --node->handles_;
  if (!node->isAlive()) {
    if (node->handles_ != 0) return;
    arena.recycle(node);
    arena.store_->dropIfEmpty(arena);
    return;
  }
  TreeInfo* const tree = node->tree();
  if (tree != nullptr && --tree->handles == 0) arena.store_->end(tree);
}

void XmlStore::absorb(XmlStore& other) {
  if (&other == this) return;
  arenas_.reserve(arenas_.size() + other.arenas_.size());
  for (std::unique_ptr<XmlArena>& arena : other.arenas_) {
    arena->store_ = this;
    if (arena->live_ != 0) arenas_.push_back(std::move(arena));
  }
  other.arenas_.clear();
  other.absorberRef_ = Ref(this);
  other.absorber_.store(this, std::memory_order_release);
}

// Arenas come and go with whole documents, so that there are few of them.
void XmlStore::dropIfEmpty(XmlArena& arena) {
  if (arena.live_ != 0 || &arena == arenas_.front().get()) return;
  const auto found = std::find_if(arenas_.begin(), arenas_.end(),
                                  [&arena](const auto& one) { return one.get() == &arena; });
  arenas_.erase(found);
}

std::size_t XmlStore::memoryBytes() const {
  std::size_t sum = sizeof *this;
  for (const auto& arena : arenas_) sum += sizeof *arena + arena->memoryBytes();
  return sum;
}

}  // namespace zantrel
