// zantrel charset convert: from one charset to another.

#include <CLI/CLI.hpp>

#include <algorithm>
#include <iterator>
#include <map>

#include "long_streams.h"

namespace zantrel_cli {
namespace {

struct Options {
  std::string from, to, onError = "fail", replacement, alternative;
  std::string input = "-", output = "-";
  bool mark = false;
};

// Numbers of Charset's ErrorAction. "fail" takes the one that goes through to the end, so that the
// log counts everything that would be lost.
const std::map<std::string, int> kActions{{"fail", 0}, {"drop", 1}, {"replace", 2},
                                          {"hex", 3},  {"dec", 4},  {"alt", 5}};

bool configure(Session<Zantrel::Charset>& session, const Options& options) {
  Zantrel::Charset& charset = session.component();
  charset.put_FromCharset(options.from);
  charset.put_ToCharset(options.to);
  charset.put_ErrorAction(kActions.at(options.onError));
  if (options.onError == "replace") {
    // By default the character made for it, or "?" where the target has none.
    const bool set = options.replacement.empty()
                         ? charset.put_DefaultString(u8"\uFFFD") || charset.put_DefaultString("?")
                         : charset.put_DefaultString(options.replacement);
    if (!set) return session.complain("the target charset lacks the replacement text");
  }
  if (options.onError == "alt" && !charset.put_AltToCharset(options.alternative)) {
    return session.complain("unknown charset: " + options.alternative);
  }
  if (options.mark) charset.put_ToCharset("bom:" + options.to);
  return true;
}

/// Does for data what the library does for files: where the source is a form of Unicode, a
/// byte-order mark says which.
void obeyMark(Zantrel::Charset& charset, const Options& options, Zantrel::ByteView in) {
  static constexpr int kUnicode[] = {1200, 1201, 65001, 65005, 65006};
  const int from = charset.CharsetToCodePage(options.from);
  if (std::find(std::begin(kUnicode), std::end(kUnicode), from) == std::end(kUnicode)) return;
  // So few bytes have room for a mark and for no declaration. Three tell UTF-16 from UTF-8 but not
  // from UTF-32, which a text that is said to be UTF-16 is not.
  const std::size_t most = from == kUnicode[0] || from == kUnicode[1] ? 3 : 4;
  const std::string marked = charset.GetHtmlCharset(in.first(std::min(most, in.size())));
  if (!marked.empty()) charset.put_FromCharset(marked);
}

int convert(const Context& context, const Options& options) {
  Session<Zantrel::Charset> session(context);
  Zantrel::Charset& charset = session.component();
  if (!configure(session, options)) return kFailed;
  const Progress progress(charset, context);
  const Conversion conversion{[&](const std::string& input, const std::string& output) {
                                return session.report(charset.ConvertFile(input, output));
                              },
                              [&](const Zantrel::Bytes& in, Zantrel::Bytes& out) {
                                obeyMark(charset, options, in);
                                return session.report(charset.ConvertData(in, out));
                              }};
  return convertStreams(session, options.input, options.output, conversion) ? kDone : kFailed;
}

}  // namespace

void addCharsetConvert(CLI::App& parent, Context& context) {
  auto options = std::make_shared<Options>();
  CLI::App* command = parent.add_subcommand("convert", "Convert text from one charset to another");
  command->add_option("-f,--from", options->from, "Charset of the input")->required();
  command->add_option("-t,--to", options->to, "Charset of the output")->required();
  command
      ->add_option("--on-error", options->onError,
                   "What becomes of invalid input and of characters that the output lacks: fail "
                   "(the default), drop, replace, hex or dec (an HTML entity), alt")
      ->check(CLI::IsMember({"fail", "drop", "replace", "hex", "dec", "alt"}));
  command->add_option("--replacement", options->replacement, "Text that --on-error=replace writes");
  command->add_option("--alt", options->alternative, "Charset that --on-error=alt writes");
  command->add_flag("--bom", options->mark, "Begin the output with a byte-order mark");
  command->add_option("-o,--output", options->output, "Output file; - is standard output");
  command->add_option("file", options->input, "Input file; - is standard input");
  command->callback([&context, options] {
    context.run = [&context, options] { return convert(context, *options); };
  });
}

}  // namespace zantrel_cli
