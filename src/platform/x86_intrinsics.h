#pragma once
// The compiler's vector intrinsics, inside `#if defined(ZT_X86_64)`: for files named *_x86, and for
// inline code on SSE2, which every such processor has.

#include "platform/cpu_features.h"

#if defined(ZT_X86_64)
#pragma GCC diagnostic push
#if defined(__GNUC__) && !defined(__clang__)
// g++ 12 warns about the deliberately undefined values inside its own header (GCC bug 105593).
#pragma GCC diagnostic ignored "-Wuninitialized"
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif
#include <immintrin.h>
#pragma GCC diagnostic pop
#endif
