// Charset conversion beside ICU and iconv, in memory, into reused buffers. Sizes and speeds count
// the input. Row names say from and to; texts are of one script, or of several by turns.

#include <benchmark/benchmark.h>
#include <zantrel/charset.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#if defined(__linux__)
#include <iconv.h>
#include <malloc.h>
#define HAVE_ICONV 1
#endif
#ifdef HAVE_ICU
#include <unicode/ucnv.h>
#include <unicode/ustring.h>
#endif

#include "core/charset/encoding_convert.h"
#include "core/data_buffer.h"
#include "platform/cpu_features.h"

namespace {

using namespace zantrel;

// Words of one script a row; a text takes them in random order, with spaces and line ends.
constexpr std::string_view kEnglish[] = {"The",  "quick", "brown",    "fox", "jumps", "over", "the",
                                         "lazy", "dog.",  "Charsets", "are", "plain", "here;"};
constexpr std::string_view kFrench[] = {"Où",      "est",   "passé",    "l'été", "où",
                                        "l'élève", "naïf",  "mangeait", "des",   "crêpes",
                                        "à",       "Nîmes", "en",       "août?"};
constexpr std::string_view kRussian[] = {"Съешь", "же", "ещё",   "этих", "мягких",  "французских",
                                         "булок", "да", "выпей", "чаю.", "Привет,", "мир!"};
constexpr std::string_view kJapanese[] = {"日本語の",   "文章は", "漢字と",     "ひらがなと",
                                          "カタカナを", "混ぜて", "書きます。", "東京",
                                          "大阪",       "京都へ"};
constexpr std::string_view kChinese[] = {"中文文本", "通常",   "没有",    "空格，",
                                         "所以",     "很长。", "北京",    "上海和",
                                         "其他",     "城市",   "都在这里"};
constexpr std::string_view kTaiwanese[] = {"中文文字", "通常",   "沒有",    "空格，",
                                           "所以",     "很長。", "臺北",    "高雄和",
                                           "其他",     "城市",   "都在這裡"};
constexpr std::string_view kKorean[] = {"한국어", "문장은", "띄어쓰기를",  "합니다.",   "서울과",
                                        "부산은", "큰",     "도시입니다.", "안녕하세요"};
constexpr std::string_view kEmoji[] = {"😀😃", "🚀🌍🎉", "👍", "🐍🦊🐢", "🎵🎶"};

using Words = std::vector<std::vector<std::string_view>>;

template <class... Rows>
Words words(const Rows&... rows) {
  return {std::vector<std::string_view>(std::begin(rows), std::end(rows))...};
}

/// UTF-8 text of about `size` bytes; runs of up to twelve words of one script follow each other.
std::string makeText(const Words& scripts, std::size_t size) {
  std::mt19937 random(7);
  std::string text;
  while (text.size() < size) {
    const auto& script = scripts[random() % scripts.size()];
    for (auto run = 1 + random() % 12; run > 0; --run) {
      text += script[random() % script.size()];
      text += random() % 16 == 0 ? "\r\n" : " ";
    }
  }
  return text;
}

std::string convertedTo(int page, const std::string& text) {
  DataBuffer out;
  EncodingConvert().EncConvert(65001, page, text.data(), text.size(), out);
  return std::string(out.text());
}

/// About `size` bytes of a page, cut between characters.
std::string makeInput(const Words& scripts, std::size_t size, int page) {
  const std::string text = makeText(scripts, 3 * size);
  std::size_t length = std::min(text.size(), size);
  if (page != 65001)
    length =
        std::min(text.size(), length * size / convertedTo(page, text.substr(0, length)).size());
  while (length > 0 && (text[length] & 0xC0) == 0x80) --length;
  return convertedTo(page, text.substr(0, length));
}

struct Job {
  int from;
  int to;
  const char* fromName;  ///< for the peers
  const char* toName;
  std::string in;
};

class Runner {
 public:
  virtual ~Runner() = default;
  virtual std::size_t run() = 0;  ///< converts once; bytes written
};

class Ours final : public Runner {
 public:
  Ours(const Job& job, const CpuFeatures& features) : job_(job), scope_(features) {}
  std::size_t run() override {
    out_.clear();
    convert_.EncConvert(job_.from, job_.to, job_.in.data(), job_.in.size(), out_);
    return out_.getSize();
  }

 private:
  const Job& job_;
  ScopedCpuFeatures scope_;
  EncodingConvert convert_;
  DataBuffer out_;
};

/// The public class, whose output is written into a vector that keeps its capacity.
class Facade final : public Runner {
 public:
  explicit Facade(const Job& job) : job_(job) {
    charset_.put_FromCharset(job.fromName);
    charset_.put_ToCharset(job.toName);
  }
  std::size_t run() override {
    charset_.ConvertData(Zantrel::bytesOf(job_.in), out_);
    return out_.size();
  }

 private:
  const Job& job_;
  Zantrel::Charset charset_;
  Zantrel::Bytes out_;
};

#ifdef HAVE_ICONV
class Iconv final : public Runner {
 public:
  explicit Iconv(const Job& job)
      : job_(job), converter_(iconv_open(job.toName, job.fromName)), out_(4 * job.in.size() + 64) {
    if (converter_ == reinterpret_cast<iconv_t>(-1)) throw std::runtime_error("iconv_open");
  }
  ~Iconv() override { iconv_close(converter_); }
  std::size_t run() override {
    iconv(converter_, nullptr, nullptr, nullptr, nullptr);
    char* in = const_cast<char*>(job_.in.data());
    std::size_t inLeft = job_.in.size();
    char* out = out_.data();
    std::size_t outLeft = out_.size();
    iconv(converter_, &in, &inLeft, &out, &outLeft);
    return out_.size() - outLeft;
  }

 private:
  const Job& job_;
  iconv_t converter_;
  std::vector<char> out_;
};
#endif

#ifdef HAVE_ICU
/// ICU's own functions between UTF-8 and UTF-16, its converters for the rest.
class Icu final : public Runner {
 public:
  explicit Icu(const Job& job) : job_(job), out_(4 * job.in.size() + 64) {
    if (isUnicode()) return;
    UErrorCode error = U_ZERO_ERROR;
    from_ = ucnv_open(job.fromName, &error);
    to_ = ucnv_open(job.toName, &error);
    if (U_FAILURE(error)) throw std::runtime_error("ucnv_open");
  }
  ~Icu() override {
    if (from_ != nullptr) ucnv_close(from_);
    if (to_ != nullptr) ucnv_close(to_);
  }
  std::size_t run() override {
    UErrorCode error = U_ZERO_ERROR;
    std::int32_t length = 0;
    if (job_.to == 1200) {
      u_strFromUTF8(reinterpret_cast<UChar*>(out_.data()),
                    static_cast<std::int32_t>(out_.size() / 2), &length, job_.in.data(),
                    static_cast<std::int32_t>(job_.in.size()), &error);
      return 2 * static_cast<std::size_t>(length);
    }
    if (job_.from == 1200) {
      u_strToUTF8(out_.data(), static_cast<std::int32_t>(out_.size()), &length,
                  reinterpret_cast<const UChar*>(job_.in.data()),
                  static_cast<std::int32_t>(job_.in.size() / 2), &error);
      return static_cast<std::size_t>(length);
    }
    UChar pivot[4096];
    UChar* pivotIn = pivot;
    UChar* pivotOut = pivot;
    const char* in = job_.in.data();
    char* out = out_.data();
    ucnv_convertEx(to_, from_, &out, out_.data() + out_.size(), &in, in + job_.in.size(), pivot,
                   &pivotIn, &pivotOut, pivot + 4096, true, true, &error);
    return static_cast<std::size_t>(out - out_.data());
  }

 private:
  bool isUnicode() const { return job_.from == 1200 || job_.to == 1200; }

  const Job& job_;
  UConverter* from_ = nullptr;
  UConverter* to_ = nullptr;
  std::vector<char> out_;
};
#endif

template <class Make>
void add(const std::string& name, const std::shared_ptr<Job>& job, Make make) {
  benchmark::RegisterBenchmark(name.c_str(), [job, make](benchmark::State& state) {
    const std::unique_ptr<Runner> runner = make(*job);
    if (runner->run() == 0) state.SkipWithError("nothing converted");
    for (auto _ : state) benchmark::DoNotOptimize(runner->run());
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(job->in.size()));
  });
}

struct Size {
  const char* name;
  std::size_t bytes;
};
constexpr Size kSizes[] = {{"1K", 1 << 10}, {"64K", 64 << 10}, {"16M", 16 << 20}};

CpuFeatures withoutAvx512() {
  CpuFeatures features;
  features.ssse3 = detectCpuFeatures().ssse3;
  features.avx2 = detectCpuFeatures().avx2;
  return features;
}

void addAll(const std::string& operation, const Words& scripts, const Job& kind) {
  for (const Size& size : kSizes) {
    const auto job = std::make_shared<Job>(kind);
    job->in = makeInput(scripts, size.bytes, kind.from);
    const std::string name = operation + "/" + size.name + "/";
    const auto addOurs = [&](const char* path, const CpuFeatures& features) {
      add(name + path, job, [features](const Job& j) -> std::unique_ptr<Runner> {
        return std::make_unique<Ours>(j, features);
      });
    };
    addOurs("zantrel", detectCpuFeatures());
    addOurs("zantrel_avx2", withoutAvx512());
    addOurs("zantrel_portable", CpuFeatures{});
    add(name + "facade", job,
        [](const Job& j) -> std::unique_ptr<Runner> { return std::make_unique<Facade>(j); });
#ifdef HAVE_ICU
    add(name + "icu", job,
        [](const Job& j) -> std::unique_ptr<Runner> { return std::make_unique<Icu>(j); });
#endif
#ifdef HAVE_ICONV
    add(name + "iconv", job,
        [](const Job& j) -> std::unique_ptr<Runner> { return std::make_unique<Iconv>(j); });
#endif
  }
}

const bool registered = [] {
#if defined(__linux__)
  // Fresh pages are slower than any conversion: keep what was freed.
  mallopt(M_MMAP_THRESHOLD, 1 << 30);
  mallopt(M_TRIM_THRESHOLD, 2147483647);
#endif
  const std::pair<const char*, Words> texts[] = {
      {"ascii", words(kEnglish)},
      {"french", words(kFrench)},
      {"russian", words(kRussian)},
      {"japanese", words(kJapanese)},
      {"emoji", words(kEmoji)},
      {"mixed", words(kEnglish, kFrench, kRussian, kJapanese, kKorean, kEmoji)},
  };
  for (const auto& [name, scripts] : texts) {
    addAll(std::string("utf8_to_utf16/") + name, scripts, {65001, 1200, "UTF-8", "UTF-16LE", {}});
    addAll(std::string("utf16_to_utf8/") + name, scripts, {1200, 65001, "UTF-16LE", "UTF-8", {}});
  }
  struct Page {
    int id;
    const char* operation;
    const char* name;
    Words scripts;
  };
  const Page pages[] = {
      {1252, "windows1252", "windows-1252", words(kFrench)},
      {1251, "windows1251", "windows-1251", words(kRussian)},
      {932, "shift_jis", "Shift_JIS", words(kJapanese)},
      {54936, "gb18030", "gb18030", words(kChinese)},
      {950, "big5", "Big5", words(kTaiwanese)},
      {51949, "euc_kr", "EUC-KR", words(kKorean)},
      {50220, "iso2022_jp", "ISO-2022-JP", words(kJapanese)},
  };
  for (const Page& page : pages) {
    const std::string name = page.operation;
    addAll(name + "_to_utf8", page.scripts, {page.id, 65001, page.name, "UTF-8", {}});
    addAll("utf8_to_" + name, page.scripts, {65001, page.id, "UTF-8", page.name, {}});
  }
  return true;
}();

}  // namespace
