#include "xml/xml_store.h"

#include <algorithm>
#include <new>

namespace zantrel {

// ---- XmlArena ----

struct XmlArena::Slab {
  XmlArena* arena;
  // Of the first slab of a chunk:
  Slab* nextChunk;
  std::size_t chunkSlabs;

  bool owners;  // some of its nodes may have memory of their own
  bool roots;   // some may have a TreeInfo

  static Slab* of(const TreeNode* node) {
    return reinterpret_cast<Slab*>(reinterpret_cast<std::uintptr_t>(node) & ~(kSlabBytes - 1));
  }
  // As many as fit behind the head, at the end, so that each has a cache line of its own.
  static constexpr std::size_t kNodes = kSlabBytes / sizeof(TreeNode) - 1;
  static_assert(sizeof(TreeNode) >= 3 * sizeof(void*) + 2 * sizeof(bool));

  TreeNode* nodes() { return end() - kNodes; }
  TreeNode* end() {
    return reinterpret_cast<TreeNode*>(reinterpret_cast<std::byte*>(this) + kSlabBytes);
  }
  Slab* following(std::size_t slabs) {
    return reinterpret_cast<Slab*>(reinterpret_cast<std::byte*>(this) + slabs * kSlabBytes);
  }
};

// All memory of an arena, in the order in which it goes.
struct XmlArena::Block {
  Block* next;
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
  for (Slab* chunk = slabs_; chunk != nullptr; chunk = chunk->nextChunk) {
    const std::size_t used = chunk == slabs_ ? slabsUsed_ : chunk->chunkSlabs;
    for (std::size_t i = 0; i < used; ++i) releaseNodes(*chunk->following(i));
  }
  while (blocks_ != nullptr) ::operator delete(std::exchange(blocks_, blocks_->next));
}

void XmlArena::releaseNodes(Slab& slab) {
  if (!slab.owners && !slab.roots) return;
  TreeNode* const end = slabEnd_ == slab.end() ? next_ : slab.end();
  for (TreeNode* node = slab.nodes(); node != end; ++node) {
    if (!node->isAlive()) continue;
    if (node->isRoot()) delete static_cast<TreeInfo*>(node->above_);
    if (slab.owners) node->releaseOwned();
  }
}

std::byte* XmlArena::addBlock(std::size_t bytes) {
  const std::size_t whole = sizeof(Block) + bytes + XmlSlice::kSlack;
  blocks_ = new (::operator new(whole)) Block{blocks_};
  memoryBytes_ += whole;
  return reinterpret_cast<std::byte*>(blocks_ + 1);
}

// What remains of the memory that was there before is given up, unless it is more.
void XmlArena::bumpIn(std::byte* memory, std::size_t bytes) {
  if (bytes <= bumpLeft_) return;
  bump_ = memory;
  bumpLeft_ = bytes;
}

// A slab first, so that a small document stays small, then more at a time. Being aligned they leave
// some memory over on both sides; that of the first slab is all that small documents need.
void XmlArena::addSlabs() {
  constexpr std::size_t kLeast = 2;
  constexpr std::size_t kMost = 64;
  if (slabs_ == nullptr || slabsUsed_ == slabs_->chunkSlabs) {
    const std::size_t count = slabs_ == nullptr ? 1 : std::clamp(slabCount_ / 2, kLeast, kMost);
    const std::size_t bytes = (count + 1) * kSlabBytes;
    std::byte* const memory = addBlock(bytes);
    const std::size_t before = -reinterpret_cast<std::uintptr_t>(memory) & (kSlabBytes - 1);
    slabs_ = new (memory + before) Slab{this, slabs_, count, false, false};
    slabCount_ += count;
    slabsUsed_ = 0;
    bumpIn(memory, before);
    const std::size_t within = before + count * kSlabBytes;
    bumpIn(memory + within, bytes - within);
  }
  Slab* const slab = slabs_->following(slabsUsed_);
  if (slabsUsed_++ != 0) new (slab) Slab{this, nullptr, 0, false, false};
  next_ = slab->nodes();
  slabEnd_ = slab->end();
}

// For a size that is aligned, when no memory is left for it.
void* XmlArena::allocateBeyond(std::size_t bytes) {
  constexpr std::size_t kFirstBlock = 1024;
  constexpr std::size_t kBlock = 65536;
  if (slabs_ == nullptr && bytes <= kSlabBytes / 2) {
    addSlabs();
    return allocate(bytes);
  }
  // Blocks grow with the arena, so that a small document stays small. A large text gets one of its
  // own: what is left of the last block still serves.
  const std::size_t usual = std::clamp(memoryBytes_ / 8, kFirstBlock, kBlock);
  if (bytes >= usual / 4) return addBlock(bytes);
  bumpIn(addBlock(usual), usual);
  return allocate(bytes);
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
  tree->handles = handlesOn(root);
  return tree;
}

std::uint32_t XmlStore::handlesOn(const TreeNode* top) {
  std::uint32_t handles = 0;
  for (const TreeNode* node = top; node != nullptr; node = node->next(top))
    handles += node->handles_;
  return handles;
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
      ended->child(i)->above_ = waiting;
      waiting = ended->child(i);
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

// Handles have left a tree, with nodes or by themselves.
void XmlStore::leave(TreeInfo* tree, std::uint32_t handles) {
  if (handles == 0) return;
  tree->handles -= handles;
  if (tree->handles == 0) end(tree);
}

TreeInfo* XmlStore::detach(TreeNode* node) {
  TreeInfo* const before = node->tree();
  TreeInfo* const tree = newTree(node->parent()->takeChild(node->index()));
  ++shape_;
  leave(before, tree->handles);
  return tree;
}

void XmlStore::remove(TreeNode* node) {
  if (handlesOn(node) != 0)
    detach(node);
  else
    end(node->parent()->takeChild(node->index()));
}

void XmlStore::attach(TreeNode* parent, std::size_t at, TreeInfo* tree) {
  TreeInfo* const target = parent->tree();
  const std::uint32_t handles = tree->handles;
  parent->makeRoomForChild();
  parent->insertChild(at, dissolve(tree));
  target->handles += handles;
  ++shape_;
}

void XmlStore::swap(TreeNode* a, TreeNode* b) {
  TreeInfo* const treeA = a->tree();
  TreeInfo* const treeB = b->tree();
  a->swapContent(*b);
  if (treeA == treeB) return;
  // Handles on the two stay there, those below them go with what they are on.
  const std::uint32_t toA = handlesOn(a) - a->handles_;
  const std::uint32_t toB = handlesOn(b) - b->handles_;
  treeA->handles += toA - toB;
  treeB->handles += toB - toA;
  ++shape_;
}

void XmlStore::hold(TreeNode* node, TreeInfo* tree) {
  ++node->handles_;
  if (tree != nullptr) ++tree->handles;
}

void XmlStore::release(TreeNode* node, TreeInfo* tree) {
  XmlArena& arena = XmlArena::of(node);
  --node->handles_;
  if (!node->isAlive()) {
    if (node->handles_ != 0) return;
    arena.recycle(node);
    arena.store_->dropIfEmpty(arena);
    return;
  }
  if (tree != nullptr) arena.store_->leave(tree, 1);
}

void XmlStore::absorb(XmlStore& other) {
  if (&other == this) return;
  arenas_.reserve(arenas_.size() + other.arenas_.size());
  for (std::unique_ptr<XmlArena>& arena : other.arenas_) {
    arena->store_ = this;
    if (arena->live_ != 0) arenas_.push_back(std::move(arena));
  }
  other.arenas_.clear();
  shape_ = std::max(shape_, other.shape_) + 1;
  other.absorberRef_ = Ref(this);
  other.absorber_.store(this, std::memory_order_release);
}

XmlStore& XmlStore::join(XmlStore& a, XmlStore& b) {
  XmlStore& larger = a.arenas_.size() >= b.arenas_.size() ? a : b;
  larger.absorb(&larger == &a ? b : a);
  return larger;
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
