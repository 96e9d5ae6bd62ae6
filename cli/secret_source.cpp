#include "secret_source.h"

#include <zantrel/zt_string.h>
#include <CLI/CLI.hpp>

#include <optional>
#include <string_view>

#include "console.h"

namespace zantrel_cli {
namespace {

void assign(Zantrel::Bytes& out, std::string_view text) {
  out.assign(text.begin(), text.end());
}

void dropLineEnd(Zantrel::Bytes& text) {
  if (!text.empty() && text.back() == '\n') text.pop_back();
  if (!text.empty() && text.back() == '\r') text.pop_back();
}

/// Gets the bytes from where the options say, before any decoding.
bool fetch(Streams& streams, const SecretOptions& options, Zantrel::Bytes& out) {
  if (!options.file.empty()) {
    // Standard input is for the data.
    return isStandardStream(options.file)
               ? streams.complain("the " + options.what + " is not read from standard input")
               : streams.read(options.file, out);
  }
  if (!options.variable.empty()) {
    const std::optional<std::string> value = environmentVariable(options.variable);
    if (!value) return streams.complain("the environment has no variable " + options.variable);
    assign(out, *value);
    return true;
  }
  if (!options.argument.empty()) {
    assign(out, options.argument);
    return true;
  }
  std::string typed;
  if (!promptSecret("Enter " + options.what + ": ", typed))
    return streams.complain("no " + options.what +
                            " was given, and there is no terminal to ask for it");
  assign(out, typed);
  return true;
}

bool decode(Streams& streams, const SecretOptions& options, Zantrel::Bytes& secret) {
  std::string_view text(reinterpret_cast<const char*>(secret.data()), secret.size());
  while (text.ends_with('\n') || text.ends_with('\r')) text.remove_suffix(1);
  Zantrel::ZtString encoded;
  Zantrel::Bytes decoded;
  if (!encoded.setFromUtf8(text) || !encoded.getBytes(options.encoding, decoded))
    return streams.complain("there is not enough memory to decode the " + options.what);
  encoded.wipe();
  secret = std::move(decoded);
  return true;
}

}  // namespace

void addSecretOptions(CLI::App& command, SecretOptions& options) {
  const std::string& what = options.what;
  CLI::App* const sources = command.add_option_group(what);
  sources->add_option(
      "--" + what + "-file", options.file,
      "File that holds the " + what +
          (options.isLine ? "; a line end behind it does not count" : "; every byte counts"));
  sources->add_option("--" + what + "-env", options.variable,
                      "Environment variable that holds the " + what);
  sources->add_flag("--" + what + "-prompt", options.prompt,
                    "Ask for the " + what + " (done too when no source is given)");
  sources->add_option("--insecure-" + what, options.argument,
                      "The " + what + " itself, which the list of processes then shows");
  sources->require_option(0, 1);
  command
      .add_option("--" + what + "-encoding", options.encoding,
                  "Encoding that the " + what +
                      " is written in: hex, base64, base32, url or qp; "
                      "without it the bytes are taken as they are")
      ->check(CLI::IsMember({"hex", "base64", "base32", "url", "qp"}));
}

bool isSecretGiven(const SecretOptions& options) {
  return options.prompt || !options.file.empty() || !options.variable.empty() ||
         !options.argument.empty();
}

bool readSecret(Streams& streams, const SecretOptions& options, Zantrel::Bytes& out) {
  if (!fetch(streams, options, out)) return false;
  if (options.isLine) dropLineEnd(out);
  if (!options.encoding.empty() && !decode(streams, options, out)) return false;
  return !out.empty() || streams.complain("the " + options.what + " is empty");
}

}  // namespace zantrel_cli
