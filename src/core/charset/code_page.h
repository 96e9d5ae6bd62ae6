#pragma once
// The code pages that the library can convert, one row each.

#include <cstdint>
#include <span>

#include "core/charset/codec.h"

namespace zantrel {

/// Numbers of the code pages that the code itself names, as in the Windows list.
namespace codepage {
inline constexpr int kUnknown = 0;
inline constexpr int kUtf16Le = 1200;
inline constexpr int kUtf16Be = 1201;
inline constexpr int kWindows1252 = 1252;
inline constexpr int kMacArabic = 10004;
inline constexpr int kUsAscii = 20127;
inline constexpr int kLatin1 = 28591;
inline constexpr int kShiftJis = 932;
inline constexpr int kGb2312 = 936;
inline constexpr int kKorean = 949;
inline constexpr int kBig5 = 950;
inline constexpr int kIso2022JpFirst = 50220;
inline constexpr int kIso2022JpLast = 50222;
inline constexpr int kIso2022Kr = 50225;
inline constexpr int kUtf7 = 65000;
inline constexpr int kUtf8 = 65001;
inline constexpr int kUtf32Le = 65005;
inline constexpr int kUtf32Be = 65006;
}  // namespace codepage

struct CodePage {
  int id;
  DecoderPtr (*makeDecoder)();
  EncoderPtr (*makeEncoder)();
};

/// The row of a code page, or null when the library has no table for it.
const CodePage* findCodePage(int id) noexcept;

/// The row of 932 or of an ISO-2022-JP page for conversions among these, in which codes that share
/// a character keep apart (distinct_932.h); null for any other page.
const CodePage* findDistinctCodePage(int id) noexcept;

/// All rows of findCodePage(), by rising number.
std::span<const CodePage> allCodePages() noexcept;

}  // namespace zantrel
