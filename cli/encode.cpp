// zantrel encode and decode: bytes as text and back.

#include <zantrel/zt_string.h>
#include <CLI/CLI.hpp>

#include "session.h"

namespace zantrel_cli {
namespace {

struct Options {
  std::string encoding = "base64";
  std::string input = "-", output = "-";
};

/// The encodings whose text is one line: it gets an end when written, and loses it when read.
bool isOneLine(const std::string& encoding) {
  return encoding != "qp" && encoding != "uu";
}

int encode(const Context& context, const Options& options) {
  Streams streams(context);
  Zantrel::Bytes in;
  if (!streams.read(options.input, in)) return kFailed;
  Zantrel::ZtString text;
  if (!text.setFromBytes(in, options.encoding)) {
    streams.complain("there is not enough memory for the encoded text");
    return kFailed;
  }
  std::string out;
  text.getUtf8(out);
  if (isOneLine(options.encoding)) out += '\n';
  return streams.write(options.output, Zantrel::bytesOf(out)) ? kDone : kFailed;
}

int decode(const Context& context, const Options& options) {
  Streams streams(context);
  Zantrel::Bytes in, out;
  if (!streams.read(options.input, in)) return kFailed;
  std::string_view encoded(reinterpret_cast<const char*>(in.data()), in.size());
  if (isOneLine(options.encoding)) {
    while (encoded.ends_with('\n') || encoded.ends_with('\r')) encoded.remove_suffix(1);
  }
  Zantrel::ZtString text;
  if (!text.setFromUtf8(encoded) || !text.getBytes(options.encoding, out)) {
    streams.complain("there is not enough memory for the decoded bytes");
    return kFailed;
  }
  return streams.write(options.output, out) ? kDone : kFailed;
}

void add(CLI::App& parent, Context& context, const char* name, const char* description,
         int (*run)(const Context&, const Options&)) {
  auto options = std::make_shared<Options>();
  CLI::App* command = parent.add_subcommand(name, description);
  command
      ->add_option("-e,--encoding", options->encoding,
                   "base64 (the default), base32, hex, qp (quoted-printable), url or uu")
      ->check(CLI::IsMember({"base64", "base32", "hex", "qp", "url", "uu"}));
  command->add_option("-o,--output", options->output, "Output file; - is standard output");
  command->add_option("file", options->input, "Input file; - is standard input");
  command->callback([&context, options, run] {
    context.run = [&context, options, run] { return run(context, *options); };
  });
}

}  // namespace

void addEncode(CLI::App& parent, Context& context) {
  add(parent, context, "encode", "Turn bytes into text", encode);
}

void addDecode(CLI::App& parent, Context& context) {
  add(parent, context, "decode", "Turn text back into bytes", decode);
}

}  // namespace zantrel_cli
