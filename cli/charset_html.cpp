// zantrel charset html: the charset that an HTML document declares, or the document in another one.

#include <CLI/CLI.hpp>

#include <cstdio>

#include "long_streams.h"

namespace zantrel_cli {
namespace {

struct Options {
  std::string to, from;
  std::string input = "-", output = "-";
};

int showCharset(const Context& context, const Options& options) {
  Session<Zantrel::Charset> session(context);
  Zantrel::Charset& charset = session.component();
  std::string name;
  if (isStandardStream(options.input)) {
    Zantrel::Bytes in;
    if (!session.read(options.input, in)) return kFailed;
    if (!session.report(charset.GetHtmlCharset(in, name))) return kFailed;
  } else if (!session.report(charset.GetHtmlFileCharset(options.input, name))) {
    return kFailed;
  }
  if (name.empty()) {
    session.complain("the document declares no charset");
    return kFailed;
  }
  std::printf("%s\n", name.c_str());
  return kDone;
}

int convert(const Context& context, const Options& options) {
  Session<Zantrel::Charset> session(context);
  Zantrel::Charset& charset = session.component();
  charset.put_FromCharset(options.from);
  charset.put_ToCharset(options.to);
  charset.put_ErrorAction(3);  // HTML has an entity for every character
  const Progress progress(charset, context);
  const Conversion conversion{[&](const std::string& input, const std::string& output) {
                                return session.report(charset.ConvertHtmlFile(input, output));
                              },
                              [&](const Zantrel::Bytes& in, Zantrel::Bytes& out) {
                                return session.report(charset.ConvertHtml(in, out));
                              }};
  return convertStreams(session, options.input, options.output, conversion) ? kDone : kFailed;
}

}  // namespace

void addCharsetHtml(CLI::App& parent, Context& context) {
  auto options = std::make_shared<Options>();
  CLI::App* command = parent.add_subcommand(
      "html", "Show the charset that an HTML document declares, or convert it to another one");
  command->add_option("-t,--to", options->to, "Charset to convert to and to declare");
  command->add_option("-f,--from", options->from, "Charset of a document that declares none");
  command->add_option("-o,--output", options->output, "Output file; - is standard output");
  command->add_option("file", options->input, "HTML file; - is standard input");
  command->callback([&context, options] {
    context.run = [&context, options] {
      return options->to.empty() ? showCharset(context, *options) : convert(context, *options);
    };
  });
}

}  // namespace zantrel_cli
