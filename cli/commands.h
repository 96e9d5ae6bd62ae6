#pragma once
// The sub-commands. Each registers its options and, when it was chosen, leaves its exit status.

#include <functional>
#include <string>

namespace CLI {
class App;
}

namespace zantrel_cli {

/// Exit statuses.
inline constexpr int kDone = 0;
inline constexpr int kFailed = 1;
inline constexpr int kUsage = 2;

/// What all sub-commands share.
struct Context {
  bool log = false;          ///< show the activity log of successes too
  bool verbose = false;      ///< with additional detail
  bool noProgress = false;   ///< no progress bar, whatever the terminal
  std::function<int()> run;  ///< set by the sub-command that was chosen
};

void addCharsetConvert(CLI::App& parent, Context& context);
void addCharsetVerify(CLI::App& parent, Context& context);
void addCharsetList(CLI::App& parent, Context& context);
void addCharsetHtml(CLI::App& parent, Context& context);
void addEncode(CLI::App& parent, Context& context);
void addDecode(CLI::App& parent, Context& context);
void addHash(CLI::App& parent, Context& context);
void addHmac(CLI::App& parent, Context& context);
void addEncrypt(CLI::App& parent, Context& context);
void addDecrypt(CLI::App& parent, Context& context);
void addRandom(CLI::App& parent, Context& context);
void addDeriveKey(CLI::App& parent, Context& context);
void addGzip(CLI::App& parent, Context& context);
void addGunzip(CLI::App& parent, Context& context);
void addCompress(CLI::App& parent, Context& context);
void addDecompress(CLI::App& parent, Context& context);
void addUntargz(CLI::App& parent, Context& context);
void addCompletion(CLI::App& app, Context& context);

}  // namespace zantrel_cli
