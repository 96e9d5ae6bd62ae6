// zantrel gzip and gunzip, with the habits of the program gzip.

#include <zantrel/gzip.h>
#include <CLI/CLI.hpp>

#include <cstdio>
#include <filesystem>

#include "byte_size.h"
#include "gzip_names.h"
#include "piped.h"

namespace zantrel_cli {
namespace {

namespace fs = std::filesystem;

/// Something was left undone that gzip only warns of.
constexpr int kWarned = 2;

struct Options {
  bool decompress = false;
  bool toStandardOutput = false;
  bool force = false;
  bool keep = false;
  bool list = false;
  bool test = false;
  bool recursive = false;
  bool quiet = false;
  bool name = false;    ///< -N
  bool noName = false;  ///< -n
  int level = 6;
  std::string suffix = ".gz";
  std::int64_t maxSize = 0;
  std::vector<std::string> files;
};

fs::path pathOf(const std::string& utf8) {
  return fs::path(std::u8string(utf8.begin(), utf8.end()));
}

std::string utf8Of(const fs::path& path) {
  const std::u8string text = path.generic_u8string();
  return std::string(text.begin(), text.end());
}

/// The work on all files of one command line; the worst of what happened is the exit status.
class GzipCommand {
 public:
  GzipCommand(const Context& context, const Options& options)
      : context_(context), options_(options), session_(context) {
    gzip().put_DeflateLevel(options.level);
    gzip().put_MaxDecompressedSize(options.maxSize);
  }

  int run() {
    if (options_.list)
      std::printf("         compressed        uncompressed  ratio uncompressed_name\n");
    for (const std::string& file : options_.files) {
      add(file);
      if (Progress::interrupted()) break;
    }
    return status_;
  }

 private:
  Zantrel::Gzip& gzip() { return session_.component(); }

  void warn(const std::string& reason) {
    if (!options_.quiet) session_.complain(reason);
    if (status_ == kDone) status_ = kWarned;
  }

  void failed() { status_ = kFailed; }

  void add(const std::string& file) {
    if (isStandardStream(file)) {
      if (options_.list || options_.test) return examine(file);
      return workOn(file, "-");
    }
    std::error_code error;
    const fs::path path = pathOf(file);
    if (fs::is_directory(path, error)) {
      if (!options_.recursive) return warn(file + " is a directory -- ignored");
      std::vector<std::string> inside;
      for (const auto& entry : fs::directory_iterator(path, error)) {
        inside.push_back(utf8Of(entry.path()));
      }
      for (const std::string& name : inside) add(name);
      return;
    }
    if (options_.list || options_.test) return examine(file);
    if (fs::is_symlink(path, error) && !options_.force && !options_.toStandardOutput) {
      return warn(file + " is a symbolic link -- ignored");
    }
    if (options_.toStandardOutput) return workOn(file, "-");
    const std::string target = targetOf(file);
    if (!target.empty()) workOnFile(file, target);
  }

  /// What a file is to become; empty, and said, when it is to be left alone.
  std::string targetOf(const std::string& file) {
    if (!options_.decompress) {
      if (!hasGzipSuffix(file, options_.suffix) || options_.force) return file + options_.suffix;
      warn(file + " already has the suffix of a compressed file -- unchanged");
      return {};
    }
    std::string target = withoutGzipSuffix(file, options_.suffix);
    if (target.empty()) {
      warn(file + ": unknown suffix -- ignored");
      return {};
    }
    if (!options_.name || !gzip().ExamineFile(file)) return target;
    const std::string stored = lastName(gzip().get_Filename());
    if (stored.empty()) return target;
    return utf8Of(pathOf(target).replace_filename(pathOf(stored)));
  }

  void workOnFile(const std::string& file, const std::string& target) {
    std::error_code error;
    if (!options_.force && fs::exists(fs::symlink_status(pathOf(target), error))) {
      return warn(target + " already exists -- not overwritten");
    }
    if (!work(file, target)) return failed();
    // As far as the system lets us: what was written is good in any case.
    const fs::path from = pathOf(file), to = pathOf(target);
    fs::permissions(to, fs::status(from, error).permissions(), error);
    if (!options_.decompress || !restoreStoredTime(to)) {
      const auto time = fs::last_write_time(from, error);
      if (!error) fs::last_write_time(to, time, error);
    }
    if (!options_.keep && !fs::remove(from, error)) {
      session_.complain(file + " cannot be removed");
      failed();
    }
  }

  /// With -N the time in the header counts; it was read when the name was.
  bool restoreStoredTime(const fs::path& path) {
    const Zantrel::DateTime local = gzip().get_LocalLastMod();
    if (!options_.name || local == Zantrel::DateTime{}) return false;
    std::tm fields{};
    fields.tm_year = local.Year - 1900;
    fields.tm_mon = local.Month - 1;
    fields.tm_mday = local.Day;
    fields.tm_hour = local.Hour;
    fields.tm_min = local.Minute;
    fields.tm_sec = local.Second;
    fields.tm_isdst = -1;
    const auto time = std::chrono::system_clock::from_time_t(std::mktime(&fields));
    std::error_code error;
    fs::last_write_time(path, fs::file_time_type::clock::from_sys(time), error);
    return !error;
  }

  void workOn(const std::string& in, const std::string& out) {
    if (!options_.decompress && !options_.force && outputIsTerminal()) {
      session_.complain("compressed data are not written to a terminal; -f forces it");
      return failed();
    }
    if (!work(in, out)) failed();
  }

  bool work(const std::string& in, const std::string& out) {
    const Progress progress(gzip(), context_);
    if (!options_.decompress) describe(in);
    return runPiped(
        session_, in, out,
        [&](const std::string& from, const std::string& to) {
          return session_.report(options_.decompress ? gzip().UncompressFile(from, to)
                                                     : gzip().CompressFile(from, to));
        },
        [&](Zantrel::ByteView from, Zantrel::Bytes& to) {
          return session_.report(options_.decompress ? gzip().UncompressMemory(from, to)
                                                     : gzip().CompressMemory(from, to));
        });
  }

  /// Name and time of the header, unless -n leaves them out or there are none.
  void describe(const std::string& in) {
    const bool tells = !options_.noName && !isStandardStream(in);
    gzip().put_Filename(tells ? lastName(in) : "");
    // A time before 1970 has no place in the header, which then tells of none.
    gzip().put_LocalLastMod(tells ? Zantrel::DateTime{} : Zantrel::DateTime{1960, 1, 1});
  }

  void examine(const std::string& file) {
    std::int64_t size = 0;
    gzip().OnProgressInfo = [&](Zantrel::ProgressInfoEventArgs& args) {
      if (args.Name == "uncompressedSize") size = std::stoll(args.Value);
    };
    std::int64_t compressedSize = -1;
    bool whole = false;
    const Progress progress(gzip(), context_);
    if (isStandardStream(file)) {
      Zantrel::Bytes in;
      whole = session_.read(file, in) && session_.report(gzip().ExamineMemory(in));
      compressedSize = static_cast<std::int64_t>(in.size());
    } else {
      whole = session_.report(gzip().ExamineFile(file));
      std::error_code error;
      const std::uintmax_t fileSize = fs::file_size(pathOf(file), error);
      if (!error) compressedSize = static_cast<std::int64_t>(fileSize);
    }
    gzip().OnProgressInfo = nullptr;
    if (!whole) return failed();
    if (options_.list) list(file, compressedSize, size);
  }

  void list(const std::string& file, std::int64_t compressedSize, std::int64_t size) {
    std::string name = options_.name ? lastName(gzip().get_Filename()) : std::string();
    if (name.empty()) name = withoutGzipSuffix(file, options_.suffix);
    if (name.empty()) name = isStandardStream(file) ? "stdout" : file;
    const double saved =
        size == 0 ? 0.0
                  : 100.0 * static_cast<double>(size - compressedSize) / static_cast<double>(size);
    std::printf("%19lld %19lld %5.1f%% %s\n", static_cast<long long>(compressedSize),
                static_cast<long long>(size), saved, name.c_str());
  }

  const Context& context_;
  const Options& options_;
  Session<Zantrel::Gzip> session_;
  int status_ = kDone;
};

void add(CLI::App& parent, Context& context, const char* name, const char* description,
         bool decompress) {
  auto options = std::make_shared<Options>();
  options->decompress = decompress;
  CLI::App* command = parent.add_subcommand(name, description);
  command->add_flag("-c,--stdout,--to-stdout", options->toStandardOutput,
                    "Write to standard output and keep the files");
  command->add_flag("-d,--decompress,--uncompress", options->decompress, "Expand");
  command->add_flag("-f,--force", options->force,
                    "Overwrite files, follow links, and write compressed data to a terminal");
  command->add_flag("-k,--keep", options->keep, "Keep the input files");
  command->add_flag("-l,--list", options->list, "List sizes, ratio and name");
  command->add_flag("-n,--no-name", options->noName, "Neither store nor restore name and time");
  command->add_flag("-N,--name", options->name, "Store or restore name and time");
  command->add_flag("-q,--quiet", options->quiet, "No warnings");
  command->add_flag("-r,--recursive", options->recursive, "Work on all files of a folder");
  command->add_option("-S,--suffix", options->suffix, "Suffix of compressed files; .gz by default");
  command->add_flag("-t,--test", options->test, "Read files through and check them");
  addMaxSize(*command, options->maxSize);
  for (int level = 0; level <= 9; ++level) {
    const std::string flag = "-" + std::to_string(level);
    const char* const words = level == 1 ? ",--fast" : level == 9 ? ",--best" : "";
    command
        ->add_flag_function(
            flag + words, [options, level](std::int64_t) { options->level = level; },
            level == 0   ? "Store only"
            : level == 1 ? "Fastest"
            : level == 9 ? "Smallest"
                         : "")
        ->group(level <= 1 || level == 9 ? "Options" : "");
  }
  command->add_option("file", options->files, "Files; - is standard input, as is none at all");
  command->callback([&context, options] {
    if (options->files.empty()) options->files = {"-"};
    if (options->noName) options->name = false;
    context.run = [&context, options] { return GzipCommand(context, *options).run(); };
  });
}

}  // namespace

void addGzip(CLI::App& parent, Context& context) {
  add(parent, context, "gzip", "Compress files with gzip", false);
}

void addGunzip(CLI::App& parent, Context& context) {
  add(parent, context, "gunzip", "Expand files compressed with gzip", true);
}

}  // namespace zantrel_cli
