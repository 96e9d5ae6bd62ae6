#include "core/encode/encoded_words.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <utility>

#include "core/ascii_text.h"
#include "core/charset/charset_naming.h"
#include "core/charset/code_page.h"
#include "core/charset/encoding_convert.h"
#include "core/encode/base64.h"
#include "core/encode/hex.h"
#include "core/log_base.h"
#include "core/string_buffer.h"
#include "core/utf8.h"
#include "core/xstring.h"

namespace zantrel {
namespace {

constexpr std::size_t kLongestWord = 75;
constexpr std::string_view kBegin = "=?";
constexpr std::string_view kEnd = "?=";
constexpr std::string_view kSpace = " \t\r\n";
constexpr char kNoMemory[] = "Not enough memory.";

// Each text stands for itself: nothing is left over from the one before. False when there was
// anything invalid or missing in it.
class Converter {
 public:
  Converter(int from, int to)
      : stream_(from, to), fromUtf8_(from == codepage::kUtf8), isUtf8_(from == to) {}

  bool convert(std::string_view in, DataBuffer& out) {
    if (isUtf8_) return copyUtf8(in, out);
    stream_.reset();
    // Streams skip one mark at the start; the text's own characters are to stay.
    if (fromUtf8_ && !stream_.feed(asBytes("\uFEFF"), out)) return false;
    return stream_.feed(asBytes(in), out) && stream_.finish(out) && stream_.invalidCount() == 0 &&
           stream_.unmappableCount() == 0;
  }

 private:
  // Streams do not look at what is to stay in its charset.
  static bool copyUtf8(std::string_view in, DataBuffer& out) {
    bool valid = out.reserve(in.size());
    while (!in.empty()) {
      const Utf8Character character = decodeUtf8(in);
      const bool known = character.value != kNoCharacter;
      valid = out.append(known ? in.substr(0, character.size) : "\uFFFD") && valid && known;
      in.remove_prefix(character.size);
    }
    return valid;
  }

  CharsetStream stream_;
  bool fromUtf8_;
  bool isUtf8_;
};

// ---- Encoding ----

// The characters that need no escape wherever a word may stand (RFC 2047, section 5, rule 3).
bool isPlain(std::uint8_t c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '!' ||
         c == '*' || c == '+' || c == '-' || c == '/';
}

bool appendQ(ByteSpan bytes, StringBuffer& out) {
  return std::all_of(bytes.begin(), bytes.end(), [&](std::uint8_t c) {
    if (c == ' ') return out.appendChar('_');
    if (isPlain(c)) return out.appendChar(static_cast<char>(c));
    const char escape[] = {'=', kHexDigits[c >> 4], kHexDigits[c & 15]};
    return out.append(escape, sizeof escape);
  });
}

// At most `size` bytes from the start of a text that is not empty: whole characters, one at least.
std::size_t wholeCharacters(std::string_view text, std::size_t size) {
  if (size >= text.size()) return text.size();
  while (size > 0 && (static_cast<unsigned char>(text[size]) & 0xC0U) == 0x80U) --size;
  return size > 0 ? size : decodeUtf8(text).size;
}

class WordWriter {
 public:
  WordWriter(int page, std::string_view label, WordCoding coding)
      : label_(label), coding_(coding), converter_(codepage::kUtf8, page) {
    const std::size_t frame = kBegin.size() + label.size() + 3 + kEnd.size();
    room_ = kLongestWord - std::min(frame, kLongestWord - 1);
  }

  // As much of the text as fits into a word; how much that is, or 0.
  std::size_t write(std::string_view text, StringBuffer& out, LogBase& log) {
    std::size_t size = wholeCharacters(text, room_);
    for (;;) {
      if (!encode(text.substr(0, size), log)) return 0;
      const std::size_t fitting = word_.getSize() > room_ ? size * room_ / word_.getSize() : size;
      const std::size_t less = wholeCharacters(text, fitting);
      if (less >= size) break;
      size = less;
    }
    const bool done = out.append(kBegin) && out.append(label_) &&
                      out.append(coding_ == WordCoding::B ? "?B?" : "?Q?") && out.append(word_) &&
                      out.append(kEnd);
    if (!done) log.logError(kNoMemory);
    return done ? size : 0;
  }

 private:
  bool encode(std::string_view text, LogBase& log) {
    bytes_.clear();
    word_.clear();
    if (!converter_.convert(text, bytes_)) {
      log.logError("The charset lacks a character of the text, or the text is not UTF-8.");
      log.logDataStr("Charset", XString(label_));
      return false;
    }
    const bool done = coding_ == WordCoding::B ? base64Encode(bytes_.bytes(), word_)
                                               : appendQ(bytes_.bytes(), word_);
    if (!done) log.logError(kNoMemory);
    return done;
  }

  std::string_view label_;
  WordCoding coding_;
  std::size_t room_;  // for the text of a word
  Converter converter_;
  DataBuffer bytes_;
  StringBuffer word_;
};

// For a blank and a word. Doubles, since the buffer's own small steps would make long texts
// quadratic.
bool makeRoom(StringBuffer& out) {
  const std::size_t room = static_cast<std::size_t>(out.capacity()) - out.getSize();
  return room > kLongestWord + 1 || out.reserve(kLongestWord + 1 + out.getSize());
}

// ---- Decoding ----

struct Word {
  std::string_view charset;
  WordCoding coding;
  std::string_view text;
  std::size_t size;  // of all of it
};

// Reads a word at the start of a text that begins with "=?". None of its parts goes across a "?",
// so that a text takes linear time however many beginnings are in it.
bool readWord(std::string_view text, Word& word) {
  const std::size_t charsetEnd = text.find('?', kBegin.size());
  if (charsetEnd == text.npos || charsetEnd + 2 >= text.size()) return false;
  if (text[charsetEnd + 2] != '?') return false;
  const char coding = asciiLower(text[charsetEnd + 1]);
  if (coding != 'q' && coding != 'b') return false;
  const std::size_t begin = charsetEnd + 3;
  const std::size_t end = text.find('?', begin);
  if (end == text.npos || !text.substr(end).starts_with(kEnd)) return false;
  word.charset = text.substr(kBegin.size(), charsetEnd - kBegin.size());
  word.charset = word.charset.substr(0, word.charset.find('*'));  // a language may follow
  word.coding = coding == 'b' ? WordCoding::B : WordCoding::Q;
  word.text = text.substr(begin, end - begin);
  word.size = end + kEnd.size();
  return true;
}

int digitOf(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  const char lower = asciiLower(c);
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

bool decodeQ(std::string_view text, DataBuffer& out) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    char c = text[i] == '_' ? ' ' : text[i];
    if (c == '=' && i + 2 < text.size()) {
      const int high = digitOf(text[i + 1]);
      const int low = digitOf(text[i + 2]);
      if (high >= 0 && low >= 0) {
        c = static_cast<char>(high << 4 | low);
        i += 2;
      }
    }
    if (!out.appendChar(static_cast<std::uint8_t>(c))) return false;
  }
  return true;
}

class WordReader {
 public:
  WordReader(StringBuffer& out, LogBase& log) : out_(out), log_(log) {}

  bool read(std::string_view text) {
    most_ = text.size();
    std::size_t plain = 0;  // from where on nothing has been taken
    bool behindWord = false;
    for (std::size_t at = 0; (at = text.find(kBegin, at)) != text.npos;) {
      Word word;
      if (!readWord(text.substr(at), word) || !knows(word.charset)) {
        at += kBegin.size();
        continue;
      }
      const std::string_view between = text.substr(plain, at - plain);
      const bool isSpace = between.find_first_not_of(kSpace) == between.npos;
      if (!(behindWord && isSpace) && !(finishWords() && out_.append(between))) return false;
      if (!addWord(word)) return false;
      plain = at = at + word.size;
      behindWord = true;
    }
    return finishWords() && out_.append(text.substr(plain));
  }

 private:
  // Notes the page of the charset.
  bool knows(std::string_view charset) {
    const int page = CharsetNaming::charsetToCodePage(charset);
    if (page == 0 && !std::exchange(toldUnknown_, true)) {
      log_.logInfo("An encoded word in an unknown charset stays as it is.");
      log_.logDataStr("Charset", XString(charset));
    }
    nextPage_ = page;
    return page != 0;
  }

  bool addWord(const Word& word) {
    if (nextPage_ != page_ && !finishWords()) return false;
    if (nextPage_ != page_) converter_.emplace(nextPage_, codepage::kUtf8);
    if (bytes_.capacity() == 0 && !bytes_.reserve(most_)) return false;
    page_ = nextPage_;
    return word.coding == WordCoding::B ? base64Decode(word.text, bytes_)
                                        : decodeQ(word.text, bytes_);
  }

  // The words so far in one charset become text.
  bool finishWords() {
    if (bytes_.getSize() == 0) return true;
    DataBuffer converted;
    if (!converter_->convert(bytes_.text(), converted) && !std::exchange(toldInvalid_, true)) {
      log_.logInfo("Some of the bytes are not text in the charset: U+FFFD stands for them.");
      log_.logDataLong("Charset", page_);
    }
    bytes_.clear();
    return out_.append(converted.text());
  }

  StringBuffer& out_;
  LogBase& log_;
  std::optional<Converter> converter_;  // of the page below
  DataBuffer bytes_;
  std::size_t most_ = 0;  // bytes that all words can come to
  int page_ = 0;
  int nextPage_ = 0;
  bool toldUnknown_ = false;
  bool toldInvalid_ = false;
};

}  // namespace

bool encodeWords(std::string_view utf8, std::string_view charset, WordCoding coding,
                 StringBuffer& out, LogBase& log) {
  const int page = CharsetNaming::charsetToCodePage(charset);
  StringBuffer label;
  if (page == 0 || !CharsetNaming::codePageToCharset(page, label)) {
    log.logError("Unknown charset.");
    log.logDataStr("Charset", XString(charset));
    return false;
  }
  const std::uint32_t before = out.getSize();
  WordWriter writer(page, label.view(), coding);
  for (std::string_view rest = utf8; !rest.empty();) {
    const bool ready = makeRoom(out) && (out.getSize() == before || out.appendChar(' '));
    const std::size_t taken = ready ? writer.write(rest, out, log) : 0;
    if (taken == 0) {
      if (!ready) log.logError(kNoMemory);
      out.truncate(before);
      return false;
    }
    rest.remove_prefix(taken);
  }
  return true;
}

bool decodeWords(std::string_view text, StringBuffer& out, LogBase& log) {
  return out.reserve(text.size()) && WordReader(out, log).read(text);
}

}  // namespace zantrel
