// Any text given to each setter of Crypt2 that takes a name. Checked: the name that is read back is
// one of the known ones, case and "-" do not matter, and setting what was read back changes
// nothing.

#include <cstdint>
#include <cstdlib>
#include <string>

#include "crypt2/cls_crypt.h"

namespace {

using namespace zantrel;

void check(bool holds) {
  if (!holds) std::abort();
}

/// The same name in another spelling: "-" here and there, letters in the other case.
std::string respelled(const std::string& name) {
  std::string out;
  for (const char c : name) {
    const bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
    out += letter ? static_cast<char>(c ^ 0x20) : c;
    if (letter) out += '-';
  }
  return out;
}

struct TextProperty {
  void (*put)(ClsCrypt&, const XString&);
  void (*get)(ClsCrypt&, XString&);
  bool (*known)(const std::string& name);
};

const TextProperty kProperties[] = {
    {[](ClsCrypt& c, const XString& name) { c.put_HashAlgorithm(name); },
     [](ClsCrypt& c, XString& out) { c.get_HashAlgorithm(out); },
     [](const std::string& name) { return findHashAlgorithm(std::string_view(name)) != nullptr; }},
    {[](ClsCrypt& c, const XString& name) { c.put_CryptAlgorithm(name); },
     [](ClsCrypt& c, XString& out) { c.get_CryptAlgorithm(out); },
     [](const std::string& name) { return CryptAlgorithm::of(name).known; }},
    {[](ClsCrypt& c, const XString& name) { c.put_EncodingMode(name); },
     [](ClsCrypt& c, XString& out) { c.get_EncodingMode(out); },
     [](const std::string& name) { return ClsEncode::nameOf(ClsEncode::modeOf(name)) == name; }},
    {[](ClsCrypt& c, const XString& name) { c.put_CipherModeX(name); },
     [](ClsCrypt& c, XString& out) {
       constexpr const char* kNames[] = {"cbc", "ecb", "cfb"};
       out.setFromUtf8(kNames[c.get_CipherMode()]);
     },
     [](const std::string& name) { return !name.empty(); }},
};

std::string stored(const TextProperty& property, const std::string& name) {
  ClsCrypt crypt;
  property.put(crypt, XString(std::string_view(name)));
  XString out;
  property.get(crypt, out);
  return std::string(out.utf8());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string name(reinterpret_cast<const char*>(data), size);
  for (const TextProperty& property : kProperties) {
    const std::string kept = stored(property, name);
    check(property.known(kept));
    check(stored(property, kept) == kept);
    check(stored(property, respelled(name)) == kept);
  }
  ClsCrypt crypt;
  crypt.put_CryptAlgorithm(XString(std::string_view(name)));
  const int block = crypt.get_BlockSize();
  check(block == 0 || block == 1 || block == 8 || block == 16);
  // Names that are kept as they stand must come back, and fail in a method if they are unknown.
  crypt.settings().charset.setFromUtf8(std::string_view(name));
  DataBuffer digest;
  check(crypt.HashStringX(XString("abc"), digest) == (digest.getSize() == 20));
  return 0;
}
