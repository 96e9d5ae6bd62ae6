// zantrel charset list: the charset names and their code pages.

#include <CLI/CLI.hpp>

#include "session.h"

namespace zantrel_cli {
namespace {

int list(const Context& context, const std::string& filter) {
  Session<Zantrel::Charset> session(context);
  std::string names;
  if (!session.report(session.component().CharsetNames(names))) return kFailed;
  std::string out;
  std::size_t at = 0;
  for (std::size_t end; (end = names.find('\n', at)) != std::string::npos; at = end + 1) {
    const std::string line = names.substr(at, end + 1 - at);
    if (line.find(filter) != std::string::npos) out += line;
  }
  if (!session.write("-", Zantrel::bytesOf(out))) return kFailed;
  return out.empty() ? kFailed : kDone;
}

}  // namespace

void addCharsetList(CLI::App& parent, Context& context) {
  auto filter = std::make_shared<std::string>();
  CLI::App* command = parent.add_subcommand(
      "list", "List the charset names: name, code page and canonical name, separated by tabs");
  command->add_option("text", *filter, "List only lines that contain this text");
  command->callback(
      [&context, filter] { context.run = [&context, filter] { return list(context, *filter); }; });
}

}  // namespace zantrel_cli
