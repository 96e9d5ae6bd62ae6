// zantrel encrypt and decrypt: files and streams with a secret key.

#include <zantrel/crypt2.h>
#include <CLI/CLI.hpp>

#include <algorithm>
#include <memory>
#include <string_view>

#include "hex_option.h"
#include "secret_source.h"
#include "session.h"

namespace zantrel_cli {
namespace {

/// The keys that a cipher takes as they are.
struct Cipher {
  const char* name;
  std::size_t fewestBytes;
  std::size_t mostBytes;
  std::size_t step;
};

constexpr Cipher kCiphers[] = {{"aes", 16, 32, 8},  {"twofish", 1, 32, 1}, {"blowfish", 1, 56, 1},
                               {"3des", 16, 24, 8}, {"des", 8, 8, 1},      {"rc2", 1, 128, 1},
                               {"rc4", 1, 256, 1}};
/// In the order of their numbers.
const std::vector<std::string> kPaddings = {"pkcs5", "random-counted", "random",
                                            "zeros", "blanks",         "none"};

struct Options {
  bool encrypts = true;
  std::string algorithm = "aes";
  std::string mode = "cbc";
  std::string padding = "pkcs5";
  std::string iv;
  bool noIv = false;
  int keyBits = 0;  ///< 0 for as many as the key has
  int effectiveBits = 0;
  SecretOptions key;
  std::string encoding;
  std::string input = "-", output = "-";

  bool takesIv() const { return mode == "cbc" && algorithm != "rc4"; }
};

using Encryption = Session<Zantrel::Crypt2>;

/// Whether the cipher takes all of a key and no more, so that neither zeros nor cutting weaken it.
bool checkKey(Encryption& session, const Options& options, const Zantrel::Bytes& key) {
  const Cipher& cipher =
      *std::find_if(std::begin(kCiphers), std::end(kCiphers),
                    [&](const Cipher& c) { return options.algorithm == c.name; });
  if (key.size() >= cipher.fewestBytes && key.size() <= cipher.mostBytes &&
      key.size() % cipher.step == 0)
    return true;
  return session.complain("the key has " + std::to_string(key.size()) +
                          " bytes, which is no size of " + options.algorithm +
                          " (--key-bits has it cut or filled up)");
}

bool setKey(Encryption& session, const Options& options) {
  Zantrel::Crypt2& crypt = session.component();
  Zantrel::Bytes key;
  if (!readSecret(session, options.key, key)) return false;
  const bool fits = options.keyBits != 0 || checkKey(session, options, key);
  const int keyBits = options.keyBits != 0 ? options.keyBits : static_cast<int>(8 * key.size());
  crypt.put_KeyLength(keyBits);
  crypt.put_Rc2EffectiveKeyLength(options.effectiveBits != 0 ? options.effectiveBits : keyBits);
  crypt.put_SecretKey(key);
  std::fill(key.begin(), key.end(), std::uint8_t{0});
  return fits;
}

bool setIv(Encryption& session, const Options& options) {
  if (!options.takesIv() || options.noIv) return true;
  const Zantrel::Bytes iv = bytesOfHex(options.iv);
  if (iv.size() != static_cast<std::size_t>(session.component().get_BlockSize()))
    return session.complain("the IV must have " +
                            std::to_string(session.component().get_BlockSize()) + " bytes");
  session.component().put_IV(iv);
  return true;
}

bool configure(Encryption& session, const Options& options) {
  Zantrel::Crypt2& crypt = session.component();
  crypt.put_CryptAlgorithm(options.algorithm);
  crypt.put_CipherMode(options.mode);
  const auto padding = std::find(kPaddings.begin(), kPaddings.end(), options.padding);
  crypt.put_PaddingScheme(static_cast<int>(padding - kPaddings.begin()));
  if (!options.encoding.empty()) crypt.put_EncodingMode(options.encoding);
  return setIv(session, options) && setKey(session, options);
}

/// From file to file, in constant memory.
bool cryptFile(Encryption& session, const Context& context, const Options& options) {
  Zantrel::Crypt2& crypt = session.component();
  const Progress progress(crypt, context);
  return session.report(options.encrypts ? crypt.ZT_EncryptFile(options.input, options.output)
                                         : crypt.ZT_DecryptFile(options.input, options.output));
}

bool cryptStream(Encryption& session, const Options& options) {
  Zantrel::Crypt2& crypt = session.component();
  Zantrel::Bytes in, out;
  if (!session.read(options.input, in)) return false;
  bool done = false;
  if (options.encoding.empty()) {
    done = options.encrypts ? crypt.Encrypt(in, out) : crypt.Decrypt(in, out);
  } else if (options.encrypts) {
    std::string text;
    done = crypt.EncryptBytesENC(in, text);
    if (!text.ends_with('\n')) text += '\n';
    out.assign(text.begin(), text.end());
  } else {
    std::string_view text(reinterpret_cast<const char*>(in.data()), in.size());
    while (text.ends_with('\n') || text.ends_with('\r')) text.remove_suffix(1);
    done = crypt.DecryptBytesENC(text, out);
  }
  return session.report(done) && session.write(options.output, out);
}

int run(const Context& context, const Options& options) {
  Encryption session(context);
  if (!configure(session, options)) return kFailed;
  const bool files = !isStandardStream(options.input) && !isStandardStream(options.output) &&
                     options.encoding.empty();
  return (files ? cryptFile(session, context, options) : cryptStream(session, options)) ? kDone
                                                                                        : kFailed;
}

std::vector<std::string> cipherNames() {
  std::vector<std::string> names;
  for (const Cipher& cipher : kCiphers) names.emplace_back(cipher.name);
  return names;
}

void addCipherOptions(CLI::App& command, Options& options) {
  command
      .add_option("-a,--algorithm", options.algorithm,
                  "aes (the default), twofish, and for old data blowfish, 3des, des, rc2 or rc4")
      ->check(CLI::IsMember(cipherNames()));
  command.add_option("-m,--mode", options.mode, "cbc (the default) or ecb, for old data")
      ->check(CLI::IsMember({"cbc", "ecb"}));
  command
      .add_option("-p,--padding", options.padding,
                  "pkcs5 (the default), random-counted, random, zeros, blanks or none; only the "
                  "first two are taken off again")
      ->check(CLI::IsMember(kPaddings));
  CLI::Option* const iv = addHexOption(
      command, "--iv", options.iv,
      "Initialization vector in hexadecimal: one block, random, another one for each encryption");
  command.add_flag("--no-iv", options.noIv, "Take an IV of zeros, for old data")->excludes(iv);
  command
      .add_option("--key-bits", options.keyBits,
                  "Length of the key; a key of another size is filled up with zeros or cut")
      ->check(CLI::Range(1, 2048));
  command.add_option("--effective-bits", options.effectiveBits, "Effective key length of rc2")
      ->check(CLI::Range(1, 1024));
  addSecretOptions(command, options.key);
}

void add(CLI::App& parent, Context& context, const char* name, const char* description,
         bool encrypts) {
  auto options = std::make_shared<Options>();
  options->encrypts = encrypts;
  options->key.what = "key";
  CLI::App* const command = parent.add_subcommand(name, description);
  addCipherOptions(*command, *options);
  command
      ->add_option("-e,--encoding", options->encoding,
                   "The encrypted side is text in this encoding: base64, base32, hex, url or uu")
      ->check(CLI::IsMember({"base64", "base32", "hex", "url", "uu"}));
  command->add_option("-o,--output", options->output, "Output file; - is standard output");
  command->add_option("file", options->input, "Input file; - is standard input");
  command->callback([&context, options] {
    if (options->takesIv() && options->iv.empty() && !options->noIv)
      throw CLI::ValidationError("--iv", "is missing (zantrel random 16 makes one)");
    context.run = [&context, options] { return run(context, *options); };
  });
}

}  // namespace

void addEncrypt(CLI::App& parent, Context& context) {
  add(parent, context, "encrypt", "Encrypt with a secret key", true);
}

void addDecrypt(CLI::App& parent, Context& context) {
  add(parent, context, "decrypt", "Decrypt with a secret key", false);
}

}  // namespace zantrel_cli
