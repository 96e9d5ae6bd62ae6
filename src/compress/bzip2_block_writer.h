#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "compress/bzip2_bit_output.h"
#include "compress/bzip2_format.h"
#include "compress/bzip2_move_to_front.h"
#include "compress/bzip2_rotation_sort.h"
#include "core/bytes.h"

namespace zantrel {

/// Writes a block whose runs are shortened: what stands between its checksum and the next mark.
class Bzip2BlockWriter {
 public:
  Bzip2BlockWriter();

  void write(ByteSpan block, Bzip2BitOutput& out);

 private:
  using CodeLengths = std::array<std::uint8_t, bzip2::kMaxAlphabet>;
  struct Choice {
    std::array<CodeLengths, bzip2::kMaxTables> lengths;
    std::array<std::uint8_t, bzip2::kMaxSelectors> selectors;
  };

  void makeSymbols(ByteSpan column) noexcept;
  void addRun(std::size_t size) noexcept;
  void addSymbol(unsigned symbol) noexcept;
  void chooseTables();
  void improveChoice(int rounds);
  void startByAlphabet();
  void startByLevel();
  void selectTables() noexcept;
  void fitTables();
  void countGroup(std::size_t group, std::size_t table) noexcept;
  std::uint64_t choiceBits() const noexcept;
  Bzip2MoveToFront tablesInOrder() const noexcept;
  std::size_t groupCount() const noexcept;
  std::size_t groupEnd(std::size_t group) const noexcept;
  void putUsedBytes(Bzip2BitOutput& out) const noexcept;
  void putSelectors(Bzip2BitOutput& out) const noexcept;
  void putCodeLengths(const CodeLengths& lengths, Bzip2BitOutput& out) const noexcept;
  void putSymbols(Bzip2BitOutput& out) const noexcept;

  Bzip2RotationSort sort_;
  std::unique_ptr<std::uint8_t[]> column_;
  std::unique_ptr<std::uint16_t[]> symbols_;
  std::size_t symbolCount_ = 0;
  std::array<bool, 256> used_;
  unsigned alphabetSize_ = 0;
  std::array<std::uint32_t, bzip2::kMaxAlphabet> frequencies_;

  std::size_t tableCount_ = 0;
  Choice choice_;
  Choice best_;
  std::array<std::array<std::uint32_t, bzip2::kMaxAlphabet>, bzip2::kMaxTables> tableFrequencies_;
};

}  // namespace zantrel
