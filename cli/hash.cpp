// zantrel hash and hmac: digests and authentication codes of files, and checksum files.

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <vector>

#include "checksum_check.h"
#include "checksum_line.h"
#include "console.h"
#include "hasher.h"
#include "secret_source.h"

namespace zantrel_cli {
namespace {

const std::vector<std::string> kAlgorithms = {"sha1",      "sha256",    "sha384",    "sha512",
                                              "md2",       "md4",       "md5",       "ripemd128",
                                              "ripemd160", "ripemd256", "ripemd320", "haval"};
/// Those of which the library makes codes; it would take SHA-1 for the others.
const std::vector<std::string> kKeyedAlgorithms = {"sha1",   "sha256", "sha384",
                                                   "sha512", "md2",    "md5"};

struct Options {
  DigestOptions digest;
  CheckOptions check;
  bool checking = false;
  bool tag = false;
  bool zeroEnded = false;
  bool keyed = false;
  SecretOptions key;
  std::vector<std::string> files{"-"};
};

/// The encodings that break lines; nothing else fits into the lines of such a digest.
bool isManyLines(const std::string& encoding) {
  return encoding == "qp" || encoding == "uu";
}

int listDigests(Hasher& hasher, const Options& options) {
  int status = kDone;
  for (const std::string& file : options.files) {
    std::string digest;
    if (!hasher.hash(file, digest)) {
      status = kFailed;
      if (Progress::interrupted()) break;
      continue;
    }
    std::string line;
    if (isManyLines(options.digest.encoding)) {
      line = digest.ends_with('\n') ? digest : digest + "\n";
    } else {
      line = checksumLine(digest, file, options.tag ? hasher.tag() : "", options.zeroEnded);
    }
    if (!hasher.streams().write("-", Zantrel::bytesOf(line))) return kFailed;
  }
  return status;
}

int run(const Context& context, const Options& options) {
  Hasher hasher(context, options.digest);
  if (options.keyed) {
    Zantrel::Bytes key;
    if (!readSecret(hasher.streams(), options.key, key)) return kFailed;
    hasher.useKey(key);
    std::fill(key.begin(), key.end(), std::uint8_t{0});
  }
  return options.checking ? checkFiles(hasher, options.files, options.check)
                          : listDigests(hasher, options);
}

/// Accepts the algorithms of a list in the spellings that others use.
CLI::Validator algorithmOf(const std::vector<std::string>& known) {
  std::string names;
  for (const std::string& name : known) names += (names.empty() ? "" : ", ") + name;
  return {[known, names](std::string& name) -> std::string {
            const std::string normalised = normalisedAlgorithm(name);
            if (std::find(known.begin(), known.end(), normalised) == known.end())
              return "\"" + name + "\" is none of " + names;
            name = normalised;
            return {};
          },
          "NAME"};
}

void addListOptions(CLI::App& command, Options& options) {
  command
      .add_option("-e,--encoding", options.digest.encoding,
                  "hex (the default), base64, base32, url, qp or uu")
      ->check(CLI::IsMember({"hex", "base64", "base32", "url", "qp", "uu"}));
  command.add_flag("--tag", options.tag, "Write lines in the BSD style, which name the algorithm");
  command.add_flag("-z,--zero", options.zeroEnded,
                   "End lines with a zero byte and escape nothing in names");
}

void addCheckOptions(CLI::App& command, Options& options) {
  CLI::Option* const check = command.add_flag("-c,--check", options.checking,
                                              "Read checksum files and verify the files they list");
  const auto flag = [&](const char* name, bool& value, const char* description) {
    command.add_flag(name, value, description)->needs(check);
  };
  flag("--ignore-missing", options.check.ignoreMissing, "Say nothing of files that do not exist");
  flag("--quiet", options.check.quiet, "Do not write OK for each file");
  flag("--status", options.check.status, "Write nothing; the exit status tells");
  flag("--strict", options.check.strict, "Fail when a line is improperly formatted");
  flag("-w,--warn", options.check.warn, "Complain of each line that is improperly formatted");
}

void add(CLI::App& parent, Context& context, const char* name, const char* description,
         bool keyed) {
  auto options = std::make_shared<Options>();
  options->keyed = keyed;
  CLI::App* const command = parent.add_subcommand(name, description);
  CLI::Option* const algorithm =
      command
          ->add_option("-a,--algorithm", options->digest.algorithm,
                       keyed ? "Digest of the codes: sha256 (the default), sha1, sha384, sha512, "
                               "md5 or md2"
                             : "sha256 (the default), sha1, sha384, sha512, md5, md4, md2, "
                               "ripemd128, ripemd160, ripemd256, ripemd320 or haval")
          ->transform(algorithmOf(keyed ? kKeyedAlgorithms : kAlgorithms));
  if (keyed) {
    options->key.what = "key";
    addSecretOptions(*command, options->key);
  } else {
    command->add_option("--haval-bits", options->digest.havalBits, "Bits of HAVAL's digest")
        ->check(CLI::IsMember({128, 160, 192, 224, 256}));
    command->add_option("--haval-passes", options->digest.havalPasses, "Passes of HAVAL")
        ->check(CLI::Range(3, 5));
  }
  addListOptions(*command, *options);
  addCheckOptions(*command, *options);
  command->add_option("files", options->files, "Files; - is standard input");
  command->callback([&context, options, algorithm] {
    if (options->checking && isManyLines(options->digest.encoding))
      throw CLI::ValidationError("--check", "takes encodings of one line only");
    options->check.algorithmGiven = algorithm->count() > 0;
    options->check.algorithms = options->keyed ? kKeyedAlgorithms : kAlgorithms;
    options->check.keyed = options->keyed;
    options->check.digest = options->digest;
    options->check.zeroEnded = options->zeroEnded;
    context.run = [&context, options] { return run(context, *options); };
  });
}

}  // namespace

void addHash(CLI::App& parent, Context& context) {
  add(parent, context, "hash", "Compute and check digests of files", false);
}

void addHmac(CLI::App& parent, Context& context) {
  add(parent, context, "hmac", "Compute and check authentication codes of files", true);
}

}  // namespace zantrel_cli
