#pragma once
// Code page 932 with all its codes kept apart.
//
// 396 characters have two or three codes in 932: NEC's row 13 repeats row 2, the IBM extensions
// repeat row 13, and NEC's rows 89 to 92 repeat the IBM extensions. By way of Unicode they all come
// back as the one code that Windows writes. Conversions among 932 and the pages of ISO-2022-JP are
// defined on the codes instead. For these, each further code of a character reads as a unit of its
// own. Those units are surrogates, which no other code of these pages reads as, so that everything
// else about a conversion (errors, entities, default bytes) goes on as in Unicode.

#include "core/charset/double_byte.h"

namespace zantrel {

/// Both are derived when first asked for, in storage that outlives every static object.
const DoubleByteTable& distinct932() noexcept;
const DoubleByteReverse& distinct932Reverse() noexcept;

}  // namespace zantrel
