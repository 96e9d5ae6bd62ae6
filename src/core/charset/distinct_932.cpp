#include "core/charset/distinct_932.h"

#include <algorithm>
#include <iterator>
#include <type_traits>

#include "core/charset/tables/double_byte_tables.h"

namespace zantrel {
namespace {

using tables::Page932;

constexpr char16_t kFirstOwnUnit = 0xD800;
constexpr std::size_t kMostLeads = 60;     // 81 to 9F, E0 to FC
constexpr std::size_t kMostTrails = 0xBD;  // 40 to FC

class Distinct932 {
 public:
  Distinct932() noexcept : table_(Page932::table) {
    std::copy_n(Page932::table.rows, std::size(rows_), rows_);
    std::size_t used = 0;
    for (unsigned lead = 0; lead < std::size(rows_); ++lead) {
      DoubleByteRow& row = rows_[lead];
      row.offset = static_cast<std::uint32_t>(used);
      for (unsigned k = 0; k < row.count; ++k) cells_[used++] = unitOf(lead, row.first + k);
    }
    table_.rows = rows_;
    table_.cells = cells_;
  }
  const DoubleByteTable& table() const noexcept { return table_; }

 private:
  char16_t unitOf(unsigned lead, unsigned trail) noexcept {
    const char16_t unit =
        Page932::table.character(static_cast<std::uint8_t>(lead), static_cast<std::uint8_t>(trail));
    const bool written = reverseOf<Page932>().code(unit) == (lead << 8 | trail);
    return unit == kUndefined || written ? unit : nextOwnUnit_++;
  }

  DoubleByteTable table_;
  DoubleByteRow rows_[0x100];
  char16_t cells_[kMostLeads * kMostTrails];
  char16_t nextOwnUnit_ = kFirstOwnUnit;
};
static_assert(std::is_trivially_destructible_v<Distinct932>);

}  // namespace

const DoubleByteTable& distinct932() noexcept {
  static const Distinct932 page;
  return page.table();
}

const DoubleByteReverse& distinct932Reverse() noexcept {
  static DoubleByteReverse reverse;
  static const bool derived = (deriveReverse(distinct932(), reverse), true);
  (void)derived;
  return reverse;
}

}  // namespace zantrel
