#include "xml/xml_handle.h"

#include <functional>
#include <utility>

#include "xml/xml_declaration.h"

namespace zantrel {

XmlHandle::~XmlHandle() {
  if (!store_ || node_ == nullptr) return;
  // What nobody else has goes as a whole.
  if (store_.holders() == 1 && &store_->current() == store_.get()) return;
  const XmlLock lock(*this);
  leave();
}

TreeInfo* XmlHandle::tree() {
  if (tree_ == nullptr || shape_ != store_->shape()) {
    tree_ = node_->tree();
    shape_ = store_->shape();
  }
  return tree_;
}

void XmlHandle::leave() {
  if (node_ != nullptr) XmlStore::release(node_, tree());
  node_ = nullptr;
}

void XmlHandle::moveTo(TreeNode* node) {
  XmlStore::moveHandle(node_, node);
  node_ = node;
}

void XmlHandle::replace(const XmlStore::Ref& store, TreeInfo* tree) {
  XmlHandle made;
  XmlStore::hold(tree->root, tree);
  made.node_ = tree->root;
  made.tree_ = tree;
  made.shape_ = store->shape();
  made.setStore(store);
  take(made);
}

void XmlHandle::moveTo(XmlHandle& from, TreeNode* node) {
  if (this == &from) return moveTo(node);
  TreeInfo* const tree = node->isRoot() ? node->tree() : from.tree();
  XmlStore::hold(node, tree);
  leave();
  node_ = node;
  tree_ = tree;
  shape_ = from.store_->shape();
  setStore(from.store_);
}

void XmlHandle::setStore(XmlStore::Ref store) {
  const std::lock_guard lock(mutex_);
  std::swap(store_, store);
}

void XmlHandle::take(XmlHandle& other) {
  const auto exchange = [&] {
    std::swap(store_, other.store_);
    std::swap(node_, other.node_);
    std::swap(tree_, other.tree_);
    std::swap(shape_, other.shape_);
  };
  {
    const std::lock_guard lock(mutex_);
    if (!store_) return exchange();
  }
  const XmlLock locks(*this, other);
  const std::lock_guard lock(mutex_);
  exchange();
}

void XmlHandle::join(XmlHandle& a, XmlHandle& b) {
  if (a.store_.get() == b.store_.get()) return;
  const XmlStore::Ref joined(&XmlStore::join(*a.store_, *b.store_));
  a.setStore(joined);
  b.setStore(joined);
}

// Whether nothing but this handle and its lock is at a small document.
bool XmlHandle::isSmallAndAlone() {
  constexpr std::size_t kSmall = 32768;
  return store_.holders() == 2 && tree()->handles == 1 && node_->isRoot() &&
         store_->memoryBytes() <= kSmall;
}

void XmlHandle::moveNode(XmlHandle& added, XmlHandle& parent) {
  XmlStore& store = *parent.store_;
  TreeNode& above = *parent.node_;
  if (added.store_.get() != &store && added.isSmallAndAlone()) {
    // Thousands of small documents that come together would keep an arena each.
    above.makeRoomForChild();
    TreeNode* const copy = store.copy(added.node_);
    above.appendChild(copy);
    added.moveTo(parent, copy);
    return;
  }
  join(added, parent);
  TreeInfo* const tree = added.node_->isRoot() ? added.tree() : parent.store_->detach(added.node_);
  parent.store_->attach(&above, above.numChildren(), tree);
}

XmlStore::Ref XmlHandle::storeToLock() {
  const std::lock_guard lock(mutex_);
  if (!store_) {
    XmlStore::Ref store = XmlStore::create();
    node_ = store->newNode();
    tree_ = store->newTree(node_);
    makeDeclaration(*store, *tree_);
    XmlStore::hold(node_, tree_);
    shape_ = store->shape();
    store_ = std::move(store);
  }
  return store_;
}

XmlLock::XmlLock(XmlHandle& a, XmlHandle& b) {
  while (!tryLock(a, b)) unlock();
  // From now on they need not look for the store that theirs became part of.
  for (XmlHandle* handle : {&a, &b}) {
    XmlStore& current = handle->store_->current();
    if (&current != handle->store_.get()) handle->setStore(XmlStore::Ref(&current));
  }
}

// False when a store was absorbed, or a handle went elsewhere, before its lock was had.
bool XmlLock::tryLock(XmlHandle& a, XmlHandle& b) {
  const XmlStore::Ref ofA = a.storeToLock();
  const XmlStore::Ref ofB = b.storeToLock();
  XmlStore* first = &ofA->current();
  XmlStore* second = &ofB->current();
  if (std::less<>()(second, first)) std::swap(first, second);
  first_ = XmlStore::Ref(first);
  first_->mutex().lock();
  if (second != first) {
    second_ = XmlStore::Ref(second);
    second_->mutex().lock();
  }
  const auto locked = [&](XmlHandle& handle, const XmlStore::Ref& before) {
    XmlStore* const now = &before->current();
    return handle.storeToLock().get() == before.get() && (now == first || now == second);
  };
  return locked(a, ofA) && locked(b, ofB);
}

void XmlLock::unlock() {
  if (second_) second_->mutex().unlock();
  if (first_) first_->mutex().unlock();
  second_ = XmlStore::Ref();
  first_ = XmlStore::Ref();
}

}  // namespace zantrel
