// Seals a text with a password, so that nobody else can read it or change it unnoticed, shows what
// would be sent, and opens it again:
//   PASSWORD=... seal_text "some text"

#include <zantrel/crypt2.h>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

/// All that the other side gets; none of it is secret.
struct Sealed {
  std::string salt;
  Zantrel::Bytes iv;
  std::string text;
  std::string code;
};

/// Makes two keys of the password: one for the cipher, one for the authentication code.
bool useKeys(Zantrel::Crypt2& crypt, const std::string& password, const std::string& salt) {
  crypt.put_CryptAlgorithm("aes");
  crypt.put_KeyLength(256);
  crypt.put_HashAlgorithm("sha256");
  crypt.put_EncodingMode("hex");
  std::string keys;
  return crypt.Pbkdf2(password, "utf-8", "sha256", salt, 600000, 512, "hex", keys) &&
         crypt.SetEncodedKey(keys.substr(0, 64), "hex") &&
         crypt.SetHmacKeyEncoded(keys.substr(64), "hex");
}

/// The code covers the IV too.
bool makeCode(Zantrel::Crypt2& crypt, const std::string& text, std::string& code) {
  return crypt.HmacStringENC(crypt.GetEncodedIV("hex") + text, code);
}

bool seal(Zantrel::Crypt2& crypt, const std::string& password, const std::string& text,
          Sealed& sealed) {
  crypt.put_EncodingMode("hex");
  const bool done = crypt.GenRandomBytesENC(16, sealed.salt) &&
                    useKeys(crypt, password, sealed.salt) && crypt.RandomizeIV() &&
                    crypt.EncryptStringENC(text, sealed.text) &&
                    makeCode(crypt, sealed.text, sealed.code);
  sealed.iv = crypt.get_IV();
  return done;
}

/// Compares without telling by its time how much is alike.
bool areEqual(const std::string& a, const std::string& b) {
  unsigned different = a.size() == b.size() ? 0 : 1;
  for (std::size_t i = 0; i < a.size() && i < b.size(); ++i)
    different |= static_cast<unsigned>(a[i] ^ b[i]);
  return different == 0;
}

bool open(Zantrel::Crypt2& crypt, const std::string& password, const Sealed& sealed,
          std::string& text) {
  std::string code;
  crypt.put_IV(sealed.iv);
  return useKeys(crypt, password, sealed.salt) && makeCode(crypt, sealed.text, code) &&
         areEqual(code, sealed.code) && crypt.DecryptStringENC(sealed.text, text);
}

}  // namespace

int main(int argc, char** argv) {
  const char* const password = std::getenv("PASSWORD");
  if (argc != 2 || password == nullptr) {
    std::fputs("usage: PASSWORD=... seal_text TEXT\n", stderr);
    return 2;
  }
  Sealed sealed;
  Zantrel::Crypt2 sender, receiver;
  if (!seal(sender, password, argv[1], sealed)) {
    std::fputs(sender.get_LastErrorText().c_str(), stderr);
    return 1;
  }
  std::printf("salt %s\ntext %s\ncode %s\n", sealed.salt.c_str(), sealed.text.c_str(),
              sealed.code.c_str());
  std::string text;
  if (!open(receiver, password, sealed, text)) {
    std::fputs("The password is wrong, or the text was changed.\n", stderr);
    return 1;
  }
  std::printf("opened: %s\n", text.c_str());
  sealed.text.front() = sealed.text.front() == '0' ? '1' : '0';
  if (open(receiver, password, sealed, text)) return 1;
  std::puts("changed: refused");
  return 0;
}
