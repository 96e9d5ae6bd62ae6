#include "compress/deflate_block.h"

#include <algorithm>

namespace zantrel::zee {

void Block::removeFront(std::size_t n) noexcept {
  std::copy(sequences_.begin() + static_cast<std::ptrdiff_t>(n),
            sequences_.begin() + static_cast<std::ptrdiff_t>(count_), sequences_.begin());
  count_ -= n;
}

}  // namespace zantrel::zee
