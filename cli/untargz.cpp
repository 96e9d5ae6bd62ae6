// zantrel untargz: unpacks tar archives that are compressed with gzip.

#include <zantrel/gzip.h>
#include <CLI/CLI.hpp>

#include <cstdio>

#include "byte_size.h"
#include "console.h"
#include "session.h"

namespace zantrel_cli {
namespace {

struct Options {
  std::vector<std::string> files;
  std::string folder = ".";
  std::int64_t maxSize = 0;
};

int run(const Context& context, const Options& options) {
  Session<Zantrel::Gzip> session(context);
  Zantrel::Gzip& gzip = session.component();
  gzip.put_MaxDecompressedSize(options.maxSize);
  int status = kDone;
  for (const std::string& file : options.files) {
    std::string path = file;
    if (isStandardStream(file)) {
      path = standardInputPath().value_or("");
      if (path.empty()) {
        session.complain("standard input cannot be read as an archive here: name a file");
        status = kFailed;
        continue;
      }
    }
    const Progress progress(gzip, context);
    if (!session.report(gzip.UnTarGz(path, options.folder))) status = kFailed;
    if (Progress::interrupted()) break;
  }
  return status;
}

}  // namespace

void addUntargz(CLI::App& parent, Context& context) {
  auto options = std::make_shared<Options>();
  CLI::App* command =
      parent.add_subcommand("untargz", "Unpack tar archives compressed with gzip, safely");
  command->add_option("-C,--directory", options->folder, "Folder to unpack into; made if need be");
  addMaxSize(*command, options->maxSize);
  command->add_option("file", options->files, "Archives; - is standard input")->required();
  command->callback([&context, options] {
    context.run = [&context, options] { return run(context, *options); };
  });
}

}  // namespace zantrel_cli
