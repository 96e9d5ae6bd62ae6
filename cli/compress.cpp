// zantrel compress and decompress: files and streams in one of several formats.

#include <zantrel/compression.h>
#include <CLI/CLI.hpp>

#include "byte_size.h"
#include "piped.h"

namespace zantrel_cli {
namespace {

struct Options {
  std::string format = "deflate";
  int level = 6;
  std::int64_t maxSize = 0;
  std::string input = "-", output = "-";
};

int run(const Context& context, const Options& options, bool compress) {
  Session<Zantrel::Compression> session(context);
  Zantrel::Compression& compression = session.component();
  compression.put_Algorithm(options.format);
  compression.put_DeflateLevel(options.level);
  compression.put_MaxDecompressedSize(options.maxSize);
  if (compress && isStandardStream(options.output) && outputIsTerminal()) {
    session.complain("compressed data are not written to a terminal");
    return kFailed;
  }
  const Progress progress(compression, context);
  const bool done = runPiped(
      session, options.input, options.output,
      [&](const std::string& in, const std::string& out) {
        return session.report(compress ? compression.CompressFile(in, out)
                                       : compression.DecompressFile(in, out));
      },
      [&](Zantrel::ByteView in, Zantrel::Bytes& out) {
        return session.report(compress ? compression.CompressBytes(in, out)
                                       : compression.DecompressBytes(in, out));
      });
  return done ? kDone : kFailed;
}

CLI::App& add(CLI::App& parent, Context& context, const char* name, const char* description,
              const std::shared_ptr<Options>& options, bool compress) {
  CLI::App* command = parent.add_subcommand(name, description);
  command
      ->add_option("-a,--format", options->format,
                   "deflate (raw, the default), bz2 (bzip2), lzw (.Z), ppmd or none")
      ->check(CLI::IsMember({"deflate", "bz2", "lzw", "ppmd", "none"}));
  command->add_option("-o,--output", options->output, "Output file; - is standard output");
  command->add_option("file", options->input, "Input file; - is standard input");
  command->callback([&context, options, compress] {
    context.run = [&context, options, compress] { return run(context, *options, compress); };
  });
  return *command;
}

}  // namespace

void addCompress(CLI::App& parent, Context& context) {
  auto options = std::make_shared<Options>();
  CLI::App& command =
      add(parent, context, "compress", "Compress in one of several formats", options, true);
  command.add_option("--level", options->level, "Effort of deflate, 0 to 9; 6 is the default")
      ->check(CLI::Range(0, 9));
}

void addDecompress(CLI::App& parent, Context& context) {
  auto options = std::make_shared<Options>();
  addMaxSize(add(parent, context, "decompress", "Expand what compress made", options, false),
             options->maxSize);
}

}  // namespace zantrel_cli
