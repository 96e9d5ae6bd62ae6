#pragma once
// A place in a tree that somebody outside keeps, and the lock under which it may be used.

#include <cstdint>
#include <mutex>

#include "xml/xml_store.h"

namespace zantrel {

/// Keeps a node, with the tree that it is in, as long as it is there. One that was never set is on
/// the root of a new tree from its first use on. Its owner moves it from one thread at a time;
/// another thread may lock it together with a handle of its own meanwhile.
class XmlHandle final {
 public:
  XmlHandle() = default;
  ~XmlHandle();
  XmlHandle(const XmlHandle&) = delete;
  XmlHandle& operator=(const XmlHandle&) = delete;

  // Under an XmlLock.

  XmlStore& store() const { return *store_; }
  TreeNode* node() const { return node_; }
  TreeInfo* tree();
  /// To a node of the same tree.
  void moveTo(TreeNode* node);
  /// To a node in the tree of another handle, or to the root of another tree of that store. Both
  /// are locked, unless this one was never set and only its owner knows it.
  void moveTo(XmlHandle& from, TreeNode* node);

  /// Goes to the root of a tree of a store that nobody else has yet. Takes the locks that it needs.
  void replace(const XmlStore::Ref& store, TreeInfo* tree);
  /// Becomes what another handle is, which its owner alone knows. Takes the locks that it needs.
  void take(XmlHandle& other);
  /// Makes one store of those of two handles; both are locked.
  static void join(XmlHandle& a, XmlHandle& b);
  /// The node of a handle, with all below it, goes from its tree to the end of the children of
  /// another one's, which is not among them; both are locked.
  static void moveNode(XmlHandle& added, XmlHandle& parent);

 private:
  friend class XmlLock;
  XmlStore::Ref storeToLock();
  void setStore(XmlStore::Ref store);
  void leave();
  bool isSmallAndAlone();

  std::mutex mutex_;  // of store_ only, inside all other locks
  XmlStore::Ref store_;
  TreeNode* node_ = nullptr;  // changes under the lock of the store
  // The tree that the node was in when the store had this shape.
  TreeInfo* tree_ = nullptr;
  std::uint64_t shape_ = 0;
};

/// Holds the lock of the trees that one handle or two are on: of two stores in a fixed order, so
/// that threads that use the same two never wait for each other.
class XmlLock final {
 public:
  explicit XmlLock(XmlHandle& handle) : XmlLock(handle, handle) {}
  XmlLock(XmlHandle& a, XmlHandle& b);
  ~XmlLock() { unlock(); }
  XmlLock(const XmlLock&) = delete;
  XmlLock& operator=(const XmlLock&) = delete;

 private:
  bool tryLock(XmlHandle& a, XmlHandle& b);
  void unlock();

  // They live as long as they are locked, even if a handle leaves them.
  XmlStore::Ref first_;
  XmlStore::Ref second_;  // empty when both handles are in one store
};

}  // namespace zantrel
