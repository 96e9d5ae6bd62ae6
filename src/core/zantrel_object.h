#pragma once

namespace zantrel {

/// Root of every owned native object. Owning lists delete their elements through it.
class ZantrelObject {
 public:
  virtual ~ZantrelObject() = default;
};

}  // namespace zantrel
