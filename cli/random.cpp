// zantrel random and derive-key: bytes for keys, IVs and salts, and keys of passwords.

#include <zantrel/crypt2.h>
#include <CLI/CLI.hpp>

#include <algorithm>
#include <memory>

#include "hex_option.h"
#include "secret_source.h"
#include "session.h"

namespace zantrel_cli {
namespace {

struct Output {
  std::string encoding = "hex";
  bool raw = false;
  std::string file = "-";
};

struct RandomOptions {
  int bytes = 16;
  Output output;
};

struct DeriveOptions {
  SecretOptions password;
  std::string salt;
  std::string hash = "sha256";
  int iterations = 600000;
  int bits = 256;
  bool oldScheme = false;
  Output output;
};

void addOutputOptions(CLI::App& command, Output& output) {
  CLI::Option* const encoding =
      command
          .add_option("-e,--encoding", output.encoding, "hex (the default), base64, base32 or url")
          ->check(CLI::IsMember({"hex", "base64", "base32", "url"}));
  command.add_flag("--raw", output.raw, "Write the bytes themselves")->excludes(encoding);
  command.add_option("-o,--output", output.file, "Output file; - is standard output");
}

/// Writes what a member gave in hexadecimal.
bool writeHex(Session<Zantrel::Crypt2>& session, const std::string& hex, const Output& output) {
  if (output.raw) return session.write(output.file, bytesOfHex(hex));
  std::string text = session.component().ReEncode(hex, "hex", output.encoding);
  if (output.encoding == "hex")
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'A' && c <= 'F' ? static_cast<char>(c + 32) : c; });
  return session.write(output.file, Zantrel::bytesOf(text + "\n"));
}

int makeRandom(const Context& context, const RandomOptions& options) {
  Session<Zantrel::Crypt2> session(context);
  session.component().put_EncodingMode("hex");
  std::string hex;
  const bool done = session.report(session.component().GenRandomBytesENC(options.bytes, hex)) &&
                    writeHex(session, hex, options.output);
  return done ? kDone : kFailed;
}

int deriveKey(const Context& context, const DeriveOptions& options) {
  Session<Zantrel::Crypt2> session(context);
  Zantrel::Crypt2& crypt = session.component();
  Zantrel::Bytes password;
  if (!readSecret(session, options.password, password)) return kFailed;
  const std::string_view text(reinterpret_cast<const char*>(password.data()), password.size());
  std::string hex;
  const bool derived = options.oldScheme
                           ? crypt.Pbkdf1(text, "utf-8", options.hash, options.salt,
                                          options.iterations, options.bits, "hex", hex)
                           : crypt.Pbkdf2(text, "utf-8", options.hash, options.salt,
                                          options.iterations, options.bits, "hex", hex);
  std::fill(password.begin(), password.end(), std::uint8_t{0});
  return session.report(derived) && writeHex(session, hex, options.output) ? kDone : kFailed;
}

}  // namespace

void addRandom(CLI::App& parent, Context& context) {
  auto options = std::make_shared<RandomOptions>();
  CLI::App* const command = parent.add_subcommand(
      "random", "Random bytes of the operating system, for keys, IVs and salts");
  command->add_option("bytes", options->bytes, "How many (16 by default)")
      ->check(CLI::Range(1, 1 << 28));
  addOutputOptions(*command, options->output);
  command->callback([&context, options] {
    context.run = [&context, options] { return makeRandom(context, *options); };
  });
}

void addDeriveKey(CLI::App& parent, Context& context) {
  auto options = std::make_shared<DeriveOptions>();
  options->password.what = "password";
  options->password.isLine = true;
  CLI::App* const command =
      parent.add_subcommand("derive-key", "Derive a key from a password (PBKDF2)");
  addSecretOptions(*command, options->password);
  addHexOption(*command, "-s,--salt", options->salt, "Salt in hexadecimal, best 16 random bytes")
      ->required();
  command->add_option("-n,--iterations", options->iterations, "Iterations (600000 by default)")
      ->check(CLI::Range(1, 2147483647));
  command->add_option("--hash", options->hash, "sha256 (the default), sha512, sha384, sha1 or md5")
      ->check(CLI::IsMember({"sha256", "sha512", "sha384", "sha1", "md5", "md2"}));
  command->add_option("-b,--bits", options->bits, "Length of the key (256 by default)")
      ->check(CLI::Range(8, 8 * 65536));
  command->add_flag("--pbkdf1", options->oldScheme, "Derive by PBKDF1, for old data");
  addOutputOptions(*command, options->output);
  command->callback([&context, options] {
    context.run = [&context, options] { return deriveKey(context, *options); };
  });
}

}  // namespace zantrel_cli
