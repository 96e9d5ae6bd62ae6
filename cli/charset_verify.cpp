// zantrel charset verify: whether files are valid in a charset.

#include <CLI/CLI.hpp>

#include <cstdio>

#include "session.h"

namespace zantrel_cli {
namespace {

struct Options {
  std::string charset;
  std::vector<std::string> files{"-"};
};

bool verify(Session<Zantrel::Charset>& session, const Context& context, const std::string& charset,
            const std::string& file) {
  if (!isStandardStream(file)) {
    const Progress progress(session.component(), context);
    return session.report(session.component().VerifyFile(charset, file));
  }
  Zantrel::Bytes in;
  return session.read(file, in) && session.report(session.component().VerifyData(charset, in));
}

int verifyAll(const Context& context, const Options& options) {
  Session<Zantrel::Charset> session(context);
  int status = kDone;
  for (const std::string& file : options.files) {
    const bool valid = verify(session, context, options.charset, file);
    std::printf("%s: %s\n", file.c_str(), valid ? "valid" : "not valid");
    if (!valid) status = kFailed;
  }
  return status;
}

}  // namespace

void addCharsetVerify(CLI::App& parent, Context& context) {
  auto options = std::make_shared<Options>();
  CLI::App* command = parent.add_subcommand("verify", "Tell whether files are valid in a charset");
  command->add_option("-c,--charset", options->charset, "Charset to verify")->required();
  command->add_option("files", options->files, "Files; - is standard input");
  command->callback([&context, options] {
    context.run = [&context, options] { return verifyAll(context, *options); };
  });
}

}  // namespace zantrel_cli
