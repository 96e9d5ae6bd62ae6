// zantrel encode and decode: bytes as text and back.

#include <zantrel/zt_string.h>
#include <CLI/CLI.hpp>

#include <algorithm>

#include "console.h"
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

bool encodePiece(Streams& streams, const Options& options, Zantrel::ByteView in, std::string& out) {
  Zantrel::ZtString text;
  return (text.setFromBytes(in, options.encoding) && text.getUtf8(out)) ||
         streams.complain("there is not enough memory for the encoded text");
}

bool encodeWhole(Streams& streams, const Options& options) {
  Zantrel::Bytes in;
  std::string out;
  if (!streams.read(options.input, in) || !encodePiece(streams, options, in, out)) return false;
  if (isOneLine(options.encoding)) out += '\n';
  return streams.write(options.output, Zantrel::bytesOf(out));
}

/// From standard input to standard output in constant memory, which the encodings of one line
/// allow: their text is made of pieces that stand alone, of three bytes, five or one.
bool encodeInBlocks(Streams& streams, const Options& options) {
  constexpr std::size_t kBlock = std::size_t{15} << 16;  // a multiple of all these pieces
  Zantrel::Bytes pending;
  std::string out;
  const auto encodePending = [&] {
    if (!encodePiece(streams, options, pending, out)) return false;
    pending.clear();
    return streams.write(options.output, Zantrel::bytesOf(out));
  };
  bool good = true;
  const bool read = readStandardInput([&](Zantrel::ByteView block) {
    while (good && !block.empty()) {
      const std::size_t taken = std::min(block.size(), kBlock - pending.size());
      pending.insert(pending.end(), block.begin(),
                     block.begin() + static_cast<std::ptrdiff_t>(taken));
      block = block.subspan(taken);
      if (pending.size() == kBlock) good = encodePending();
    }
    return good;
  });
  if (!good) return false;
  if (!read) return streams.complain("standard input cannot be read");
  if (!encodePending()) return false;
  return streams.write(options.output, Zantrel::bytesOf("\n"));
}

int encode(const Context& context, const Options& options) {
  Streams streams(context);
  const bool inBlocks = isStandardStream(options.input) && isStandardStream(options.output) &&
                        isOneLine(options.encoding);
  return (inBlocks ? encodeInBlocks(streams, options) : encodeWhole(streams, options)) ? kDone
                                                                                       : kFailed;
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
