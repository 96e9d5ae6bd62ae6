#pragma once
// Deflate streams made symbol by symbol, with the output that RFC 1951 gives them.

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace zantrel::test {

/// The lengths of a code and its codes by the rule of section 3.2.2; whether the set is complete is
/// the test's affair.
struct Code {
  explicit Code(std::vector<unsigned> symbolLengths);

  std::vector<unsigned> lengths;
  std::vector<unsigned> codes;
};

/// Complete codes of 286 and 30 symbols: of nearly one length, or with lengths from 1 to 15.
Code flatCode(std::size_t symbols);
Code steepCode(std::size_t symbols, std::mt19937& random);
Code fixedLiterals();
Code fixedDistances();

class DeflateWriter {
 public:
  void bits(std::uint32_t value, unsigned count);
  void symbol(const Code& code, std::size_t symbol);

  void blockHead(bool last, unsigned type);
  void stored(bool last, const std::string& data);
  /// The head of a dynamic block behind its type, every length in a code of four bits.
  void codes(const Code& literals, const Code& distances);
  void literal(const Code& literals, char value);
  /// A distance beyond the start makes a stream to be refused.
  void match(const Code& literals, const Code& distances, unsigned length, unsigned distance);
  void endOfBlock(const Code& literals);
  /// Literals and matches of all kinds, `size` bytes of output or somewhat more.
  void randomSymbols(const Code& literals, const Code& distances, std::mt19937& random,
                     std::size_t size);

  /// So far, the last byte filled up with zeros.
  const std::string& stream() const { return stream_; }
  const std::string& output() const { return output_; }

 private:
  std::string stream_;
  unsigned used_ = 8;  // bits of the last byte
  std::string output_;
};

/// A stream of blocks of every type, their codes flat and steep; `size` bytes of output or more.
DeflateWriter mixedStream(std::uint32_t seed, std::size_t size);

}  // namespace zantrel::test
