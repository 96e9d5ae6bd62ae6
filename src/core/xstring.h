#pragma once
// The text value of every public argument and result: one text in up to three encodings at once,
// converted into each other when they are read.

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "core/bytes.h"
#include "core/data_buffer.h"
#include "core/string_buffer.h"
#include "core/zantrel_object.h"
#include "platform/clock.h"

namespace zantrel {

class LogBase;

/// Changes are made in one form, normally UTF-8, and drop the other two. Reading may convert and so
/// changes hidden state: an object belongs to one thread at a time even for reading. Pointers and
/// views that reading returns are valid until the next change. Operations that return bool answer
/// false for the reason they give, or when storage cannot be had: the text is then as it was, but
/// empty after a setter.
class XString final : public ZantrelObject {
 public:
  XString() = default;
  explicit XString(std::string_view utf8) { setFromUtf8(utf8); }
  ~XString() override = default;
  XString(const XString& other);
  XString& operator=(const XString& other);
  XString(XString&& other) noexcept;
  XString& operator=(XString&& other) noexcept;

  // Setting. Null and empty clear. The text may be one of this object's own forms.

  bool setFromUtf8(const char* text);
  bool setFromUtf8(std::string_view text);
  bool setFromAnsi(const char* text);
  bool setFromAnsi(std::string_view text);
  bool setFromUnicode2(const char16_t* text);
  bool setFromUnicode2(std::u16string_view text);
  void clear();
  /// Overwrites the UTF-16 form only, deliberately; wipe() overwrites all forms.
  void secureClear();
  /// Overwrites all that this object holds, then clears.
  void wipe();
  /// Keeps one form only and gives back all storage beyond it.
  void minimizeMemory();

  // Reading.

  const char* getUtf8() const { return getUtf8Sb().getString(); }
  const char* getAnsi() const { return ansiForm().getString(); }
  const char16_t* getUnicode() const;
  const StringBuffer& getUtf8Sb() const;
  std::string_view utf8() const { return getUtf8Sb().view(); }
  std::string_view ansi() const { return ansiForm().view(); }
  std::u16string_view unicode() const;
  /// Sizes in bytes, without terminators.
  std::uint32_t getSizeUtf8() const { return getUtf8Sb().getSize(); }
  std::uint32_t getSizeAnsi() const { return ansiForm().getSize(); }
  std::uint32_t getSizeUnicode() const;
  /// Bytes of the ANSI form if that is valid, otherwise UTF-16 code units; deliberately so also for
  /// multi-byte ANSI code pages.
  std::uint32_t getNumChars() const;
  bool isEmpty() const;

  bool isUnicodeValid() const { return unicodeValid_; }
  bool isAnsiValid() const { return ansiValid_; }
  bool isUtf8Valid() const { return utf8Valid_; }
  enum class AnsiState : std::uint8_t {
    Unknown = 0,
    Faithful = 1,  ///< set as such, or converted without loss
    Lossy = 2,     ///< converted, and some characters could not be represented
  };
  AnsiState ansiState() const { return ansiState_; }

  // Appending.

  bool appendUtf8(const char* text);
  bool appendUtf8(std::string_view text);
  bool append(const XString& other) { return appendUtf8(other.utf8()); }
  bool prependUtf8(const char* text);
  bool appendInt(std::int64_t value);
  /// Appends bytes in a charset; null or blank names utf-8. False for an unknown charset, and when
  /// something in the bytes was not valid (the rest is appended all the same).
  bool appendFromEncoding(ByteSpan bytes, const char* charsetName);

  // Converting.

  /// The text in a charset. False with empty output for an unknown charset; false with output when
  /// something could not be represented.
  bool getConverted(const char* charsetName, DataBuffer& out) const;
  bool getConverted(int codePage, DataBuffer& out) const;

  // Comparing and searching. Without case means by Unicode's simple case folding.

  bool equalsUtf8(std::string_view text) const { return utf8() == text; }
  bool equalsIgnoreCaseUtf8(std::string_view text) const;
  bool beginsWithUtf8(std::string_view prefix) const;
  /// False for an empty text to look for.
  bool containsSubstringUtf8(std::string_view text) const;
  bool containsSubstringNoCaseUtf8(std::string_view text) const;

  // Editing. Case is changed by Unicode's simple mappings. Those that return a number tell how many
  // places changed.

  bool trim2();
  bool toCRLF();
  bool toLF();
  bool toLowerCase();
  bool toUpperCase();
  std::uint32_t replaceAllOccurancesUtf8(std::string_view find, std::string_view replacement);
  bool replaceFirstOccuranceUtf8(std::string_view find, std::string_view replacement);
  std::uint32_t replaceChar(char32_t from, char32_t to);
  std::uint32_t removeCharOccurances(char32_t c);
  /// Cuts the text at the first occurrence of a character; false when it has none.
  bool chopAtFirstChar(char32_t c);
  /// Drops the last n UTF-16 code units, and the other half of a pair that would be cut.
  bool shortenNumChars(std::uint32_t n);

  // Encoding in place. Encoders take the text's bytes in a charset; decoders (but for urlDecode)
  // trim the text, and take the bytes that they decode as text in the charset. Null or blank names
  // utf-8. False, the text being as it was, for an unknown charset; false, the text being changed,
  // for characters that cannot be represented or bytes that are not valid.

  bool base64Encode(const char* charsetName);
  bool base64Decode(const char* charsetName);
  bool qpEncode(const char* charsetName);
  bool qpDecode(const char* charsetName);
  bool hexEncode(const char* charsetName);
  bool hexDecode(const char* charsetName);
  bool urlDecode(const char* charsetName);
  /// The five special characters of XML as entities, and back.
  bool encodeXMLSpecial();
  bool decodeXMLSpecial();
  /// Every character beyond ASCII as "&#DDDD;".
  bool entityEncode_A();
  /// Every character reference of HTML as the character.
  bool entityDecode_A();
  /// Makes the URLs in a text links of HTML; see auto_link.h.
  bool autoLinkUrls();
  /// Makes a text unreadable at a glance and back, for passwords in memory. This hides and does not
  /// encrypt: whoever has the program can undo it. unobfus() is false, the text being as it was,
  /// for a text that obfus() did not make.
  bool obfus();
  bool unobfus();

  // Values. A number is read from the start of the text, behind blanks; 0 where there is none. The
  // decimal point is always ".". What is too large becomes the largest number there is.

  std::int32_t intValue() const;
  double doubleValue() const;
  /// The date that the text is, in UTC; false when it is none.
  bool getSystemTime(SystemTime& utc) const;
  /// Sets the text to a date of a mail, "Tue, 03 Jun 2008 18:05:30 +0000".
  bool loadSystemTime(const SystemTime& utc);

  // Files. The charset is as for appendFromEncoding(). A character that the charset cannot
  // represent keeps a file from being written; an invalid one in a file read becomes U+FFFD. Either
  // is logged and answered by false.

  /// With a charset of Unicode, a byte-order mark in the file says which one it is, and is left
  /// out. The text is empty after any other failure than invalid content.
  bool readFile(const char* path, const char* charsetName, LogBase& log);
  /// Without byte-order mark, unless the charset name begins with "bom:".
  bool writeToFile(const char* path, const char* charsetName, LogBase& log) const;
  /// The same, with a byte-order mark also in UTF-16 and UTF-32.
  bool saveToFile(const char* path, const char* charsetName, LogBase& log) const;

 private:
  const StringBuffer& ansiForm() const;
  bool makeUtf8() const;
  bool makeAnsi() const;
  bool makeUnicode() const;
  /// A form known to be lossy is never the source of another.
  bool isAnsiSource() const { return ansiValid_ && ansiState_ != AnsiState::Lossy; }
  bool isUnicodeSource() const { return unicodeValid_ && !unicodeLossy_; }
  void dropAllButUtf8();
  bool beginEdit();
  bool replaceText(StringBuffer&& utf8);
  bool encodeWith(const char* charsetName, bool (*encode)(ByteSpan, StringBuffer&));
  bool decodeWith(const char* charsetName, bool trim,
                  bool (*decode)(std::string_view, DataBuffer&));
  bool rewriteWith(bool (*rewrite)(std::string_view, StringBuffer&));
  bool saveAs(const char* path, const char* charsetName, bool markUnicode, LogBase& log) const;

  mutable AnsiState ansiState_ = AnsiState::Unknown;
  mutable bool unicodeLossy_ = false;  ///< converted, and not all of the text is in it
  mutable bool unicodeValid_ = true;
  mutable bool ansiValid_ = true;
  mutable bool utf8Valid_ = true;
  mutable DataBuffer unicode_;  ///< UTF-16LE with two zero bytes behind it; no bytes when empty
  mutable StringBuffer ansi_;
  mutable StringBuffer utf8_;
};

/// Code page of a charset name as XString takes it: null or blank names utf-8, 0 for an unknown
/// one.
int textCodePage(const char* charsetName);

}  // namespace zantrel
