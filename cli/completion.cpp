// zantrel completion: a script that teaches a shell to complete this command, made of the tree of
// its sub-commands and options. Names of files are left to the shell.

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "commands.h"

namespace zantrel_cli {
namespace {

/// Options may stand in groups, which are sub-commands without a name.
bool isGroup(const CLI::App& command) {
  return command.get_name().empty();
}

std::vector<const CLI::App*> partsOf(const CLI::App& command) {
  return command.get_subcommands([](const CLI::App*) { return true; });
}

std::vector<std::string> flagsOf(const CLI::Option& option) {
  std::vector<std::string> flags;
  for (const std::string& name : option.get_lnames()) flags.push_back("--" + name);
  for (const std::string& name : option.get_snames()) flags.push_back("-" + name);
  return flags;
}

/// The words that an option takes, between the braces of its type; none where it takes others.
std::string valuesOf(const CLI::Option& option) {
  const std::string type = option.get_type_name();
  const std::size_t first = type.find('{');
  const std::size_t last = type.rfind('}');
  if (first == std::string::npos || last == std::string::npos) return {};
  std::string values = type.substr(first + 1, last - first - 1);
  std::replace(values.begin(), values.end(), ',', ' ');
  return values;
}

std::string arm(const std::string& pattern, const std::string& words) {
  return "    \"" + pattern + "\") words=\"" + words + "\" ;;\n";
}

/// The parts of the script.
class Script {
 public:
  explicit Script(const CLI::App& app) {
    for (const CLI::Option* const option : app.get_options()) {
      if (option == app.get_help_ptr() || option == app.get_version_ptr()) continue;
      for (const std::string& flag : flagsOf(*option)) general_ += flag + " ";
    }
    add(app, "");
  }

  std::string paths;   ///< what is a sub-command of what
  std::string values;  ///< what an option takes
  std::string words;   ///< what may stand behind a command

 private:
  /// Adds a command, whose name and those above it are `path`, and all below it.
  void add(const CLI::App& command, const std::string& path) {
    std::string found;
    addOptions(command, path, found);
    if (!path.empty()) found += general_;
    for (const CLI::App* const below : partsOf(command)) {
      if (isGroup(*below)) continue;
      const std::string name = path.empty() ? below->get_name() : path + " " + below->get_name();
      paths += (paths.empty() ? "\"" : " | \"") + name + "\"";
      found += below->get_name() + " ";
      add(*below, name);
    }
    words += arm(path, found);
  }

  void addOptions(const CLI::App& command, const std::string& path, std::string& found) {
    for (const CLI::Option* const option : command.get_options()) {
      if (isGroup(command) && option == command.get_help_ptr()) continue;
      const std::string takes = valuesOf(*option);
      if (option->get_positional() && !takes.empty()) found += takes + " ";
      for (const std::string& flag : flagsOf(*option)) {
        found += flag + " ";
        if (!takes.empty()) values += arm(path + " " + flag, takes);
      }
    }
    for (const CLI::App* const group : partsOf(command))
      if (isGroup(*group)) addOptions(*group, path, found);
  }

  std::string general_;  // options that every command takes
};

std::string bashScript(const CLI::App& app) {
  const Script script(app);
  return "# Completion of " + app.get_name() + " for bash, made by \"" + app.get_name() +
         " completion bash\".\n"
         "_zantrel() {\n"
         "  local word path= words= before=${COMP_WORDS[COMP_CWORD-1]}\n"
         "  local current=${COMP_WORDS[COMP_CWORD]}\n"
         "  [ \"$current\" != = ] || current=\n"
         "  [ \"$before\" != = ] || before=${COMP_WORDS[COMP_CWORD-2]}\n"
         "  for word in \"${COMP_WORDS[@]:1:COMP_CWORD-1}\"; do\n"
         "    case ${path:+$path }$word in\n"
         "      " +
         script.paths +
         ")\n"
         "        path=${path:+$path }$word ;;\n"
         "    esac\n"
         "  done\n"
         "  case \"$path $before\" in\n" +
         script.values +
         "  esac\n"
         "  [ -n \"$words\" ] || case $path in\n" +
         script.words +
         "  esac\n"
         "  COMPREPLY=($(compgen -W \"$words\" -- \"$current\"))\n"
         "}\n"
         "complete -o default -F _zantrel " +
         app.get_name() + "\n";
}

}  // namespace

void addCompletion(CLI::App& app, Context& context) {
  auto shell = std::make_shared<std::string>();
  CLI::App* command = app.add_subcommand(
      "completion", "Print a script that lets a shell complete this command's words");
  command->add_option("shell", *shell, "bash")->required()->check(CLI::IsMember({"bash"}));
  command->callback([&app, &context, shell] {
    context.run = [&app, shell] {
      const std::string script = bashScript(app);
      return std::fputs(script.c_str(), stdout) >= 0 && std::fflush(stdout) == 0 ? kDone : kFailed;
    };
  });
}

}  // namespace zantrel_cli
