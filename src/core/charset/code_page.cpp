#include "core/charset/code_page.h"

#include <algorithm>
#include <iterator>

#include "core/charset/distinct_932.h"
#include "core/charset/double_byte.h"
#include "core/charset/ebcdic_mixed.h"
#include "core/charset/euc_jp.h"
#include "core/charset/euc_tw.h"
#include "core/charset/gb18030.h"
#include "core/charset/iscii.h"
#include "core/charset/iso2022.h"
#include "core/charset/single_byte.h"
#include "core/charset/tables/double_byte_tables.h"
#include "core/charset/tables/single_byte_tables.h"
#include "core/charset/unicode_codecs.h"
#include "core/charset/utf7.h"

namespace zantrel {

namespace {

using namespace tables;

template <const SingleByteTable& kTable>
constexpr CodePage single(int id) {
  return {id, [] { return makeSingleByteDecoder(kTable); },
          [] { return makeSingleByteEncoder(kTable); }};
}

template <class Page>
constexpr CodePage pair(int id) {
  return {id, [] { return makeDoubleByteDecoder(Page::table); },
          [] { return makeDoubleByteEncoder(reverseOf<Page>()); }};
}

template <KanaForm kForm, Duplicates kDuplicates = Duplicates::Merged>
constexpr CodePage iso2022Jp(int id) {
  return {id, [] { return makeIso2022JpDecoder(kDuplicates); },
          [] { return makeIso2022JpEncoder(kForm, kDuplicates); }};
}

// One row a page, by rising number. A family's codecs stand in their own files; here is only who
// serves what.
// clang-format off
constexpr CodePage kPages[] = {
    single<kPage37>(37), single<kPage437>(437), single<kPage500>(500), single<kPage708>(708),
    single<kPage709>(709), single<kPage720>(720), single<kPage737>(737), single<kPage775>(775),
    single<kPage850>(850), single<kPage852>(852), single<kPage855>(855), single<kPage857>(857),
    single<kPage858>(858), single<kPage860>(860), single<kPage861>(861), single<kPage862>(862),
    single<kPage863>(863), single<kPage864>(864), single<kPage865>(865), single<kPage866>(866),
    single<kPage869>(869), single<kPage870>(870), single<kPage874>(874), single<kPage875>(875),
    pair<Page932>(932), pair<Page936>(936), pair<Page949>(949), pair<Page950>(950),
    single<kPage1026>(1026), single<kPage1047>(1047), single<kPage1140>(1140),
    single<kPage1141>(1141), single<kPage1142>(1142), single<kPage1143>(1143),
    single<kPage1144>(1144), single<kPage1145>(1145), single<kPage1146>(1146),
    single<kPage1147>(1147), single<kPage1148>(1148), single<kPage1149>(1149),
    {1200, makeUtf16LeDecoder, makeUtf16LeEncoder},
    {1201, makeUtf16BeDecoder, makeUtf16BeEncoder},
    single<kPage1250>(1250), single<kPage1251>(1251), single<kPage1252>(1252),
    single<kPage1253>(1253), single<kPage1254>(1254), single<kPage1255>(1255),
    single<kPage1256>(1256), single<kPage1257>(1257), single<kPage1258>(1258), pair<Page1361>(1361),
    single<kPage10000>(10000), pair<Page10001>(10001), pair<Page10002>(10002),
    pair<Page10003>(10003), single<kPage10004>(10004), single<kPage10005>(10005),
    single<kPage10006>(10006), single<kPage10007>(10007), pair<Page10008>(10008),
    single<kPage10010>(10010), single<kPage10017>(10017), single<kPage10021>(10021),
    single<kPage10029>(10029), single<kPage10079>(10079), single<kPage10081>(10081),
    single<kPage10082>(10082), pair<Page20000>(20000), pair<Page20001>(20001),
    pair<Page20002>(20002), pair<Page20003>(20003), pair<Page20004>(20004), pair<Page20005>(20005),
    single<kPage20105>(20105), single<kPage20106>(20106), single<kPage20107>(20107),
    single<kPage20108>(20108), single<kPage20127>(20127), pair<Page20261>(20261),
    single<kPage20269>(20269), single<kPage20273>(20273), single<kPage20277>(20277),
    single<kPage20278>(20278), single<kPage20280>(20280), single<kPage20284>(20284),
    single<kPage20285>(20285), single<kPage20290>(20290), single<kPage20297>(20297),
    single<kPage20420>(20420), single<kPage20423>(20423), single<kPage20424>(20424),
    single<kPage20833>(20833), single<kPage20838>(20838), single<kPage20866>(20866),
    single<kPage20871>(20871), single<kPage20880>(20880), single<kPage20905>(20905),
    single<kPage20924>(20924), pair<Page20932>(20932), pair<Page20936>(20936),
    pair<Page20949>(20949), single<kPage21025>(21025), single<kPage21027>(21027),
    single<kPage21866>(21866), single<kPage28591>(28591), single<kPage28592>(28592),
    single<kPage28593>(28593), single<kPage28594>(28594), single<kPage28595>(28595),
    single<kPage28596>(28596), single<kPage28597>(28597), single<kPage28598>(28598),
    single<kPage28599>(28599), single<kPage28603>(28603), single<kPage28605>(28605),
    single<kPage29001>(29001), single<kPage38598>(38598), single<kPage50000>(50000),
    iso2022Jp<KanaForm::FullWidth>(50220), iso2022Jp<KanaForm::Escape>(50221),
    iso2022Jp<KanaForm::Shift>(50222),
    {50225, makeIso2022KrDecoder, makeIso2022KrEncoder},
    {50227, makeIso2022CnDecoder, makeIso2022CnEncoder},
    {50930, makeEbcdicDecoder50930, makeEbcdicEncoder50930},
    {50931, makeEbcdicDecoder50931, makeEbcdicEncoder50931},
    {50933, makeEbcdicDecoder50933, makeEbcdicEncoder50933},
    {50935, makeEbcdicDecoder50935, makeEbcdicEncoder50935},
    {50937, makeEbcdicDecoder50937, makeEbcdicEncoder50937},
    {50939, makeEbcdicDecoder50939, makeEbcdicEncoder50939},
    {51932, makeEucJpDecoder, makeEucJpEncoder},
    pair<Page936>(51936), pair<Page20949>(51949),
    {51950, makeEucTwDecoder, makeEucTwEncoder},
    {52936, makeHzDecoder, makeHzEncoder},
    {54936, makeGb18030Decoder, makeGb18030Encoder},
    {57002, makeIsciiDecoder57002, makeIsciiEncoder57002},
    {57003, makeIsciiDecoder57003, makeIsciiEncoder57003},
    {57004, makeIsciiDecoder57004, makeIsciiEncoder57004},
    {57005, makeIsciiDecoder57005, makeIsciiEncoder57005},
    {57006, makeIsciiDecoder57006, makeIsciiEncoder57006},
    {57007, makeIsciiDecoder57007, makeIsciiEncoder57007},
    {57008, makeIsciiDecoder57008, makeIsciiEncoder57008},
    {57009, makeIsciiDecoder57009, makeIsciiEncoder57009},
    {57010, makeIsciiDecoder57010, makeIsciiEncoder57010},
    {57011, makeIsciiDecoder57011, makeIsciiEncoder57011},
    {65000, makeUtf7Decoder, makeUtf7Encoder},
    {65001, makeUtf8Decoder, makeUtf8Encoder},
    {65005, makeUtf32LeDecoder, makeUtf32LeEncoder},
    {65006, makeUtf32BeDecoder, makeUtf32BeEncoder},
};
// clang-format on

constexpr CodePage kDistinctPages[] = {
    {932, [] { return makeDoubleByteDecoder(distinct932()); },
     [] { return makeDoubleByteEncoder(distinct932Reverse()); }},
    iso2022Jp<KanaForm::FullWidth, Duplicates::Apart>(50220),
    iso2022Jp<KanaForm::Escape, Duplicates::Apart>(50221),
    iso2022Jp<KanaForm::Shift, Duplicates::Apart>(50222),
};

constexpr bool byId(const CodePage& a, const CodePage& b) {
  return a.id < b.id;
}
static_assert(std::is_sorted(std::begin(kPages), std::end(kPages), byId));

}  // namespace

const CodePage* findCodePage(int id) noexcept {
  const auto row =
      std::lower_bound(std::begin(kPages), std::end(kPages), CodePage{id, {}, {}}, byId);
  return row != std::end(kPages) && row->id == id ? row : nullptr;
}

const CodePage* findDistinctCodePage(int id) noexcept {
  const auto row = std::find_if(std::begin(kDistinctPages), std::end(kDistinctPages),
                                [id](const CodePage& page) { return page.id == id; });
  return row != std::end(kDistinctPages) ? row : nullptr;
}

std::span<const CodePage> allCodePages() noexcept {
  return kPages;
}

}  // namespace zantrel
