#pragma once
// References to characters in what is read.

#include <cstddef>
#include <cstdint>

namespace zantrel {

/// Replaces "&lt;", "&gt;", "&quot;", "&apos;" and "&amp;" by their characters, `times` times one
/// after the other: "&amp;lt;" becomes "&lt;", and the second time "<". No other reference is
/// touched. Works in place; the result is the new size. Linear in the text, however many times.
std::size_t decodeReferences(char* text, std::size_t size, std::uint32_t times);

}  // namespace zantrel
