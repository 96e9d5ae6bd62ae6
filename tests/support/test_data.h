#pragma once
// Readers of the data files under tests/data and of an outside corpus.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zantrel::test {

/// A file under tests/data, whole. The test fails (std::runtime_error) when it is missing.
std::string readTestData(const std::string& relativePath);
std::string readFile(const std::string& path);
void writeFile(const std::string& path, std::string_view content);

/// Rows of a tab-separated file: '#' lines and blank lines left out, the fields not unescaped.
std::vector<std::vector<std::string>> readTable(const std::string& path);

std::string unhex(std::string_view hex);
std::string hex(std::string_view bytes);
/// Resolves \r \n \t \0 \\ \xNN \uNNNN \UNNNNNNNN (the last two as UTF-8).
std::string unescape(std::string_view text);

/// Folder of the outside corpus (environment variable ZANTREL_CORPUS), if there is one.
std::optional<std::string> corpusFolder();

/// A new empty folder that goes with everything in it when this object does.
class TempFolder {
 public:
  TempFolder();
  ~TempFolder();
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;
  const std::string& path() const { return path_; }
  std::string operator/(std::string_view name) const { return path_ + "/" + std::string(name); }

 private:
  std::string path_;
};

/// Runs a program found on PATH with an argument list; its standard output, or nothing if it
/// failed.
std::optional<std::string> runProgram(const std::vector<std::string>& command,
                                      const std::string& standardInput = {});
bool haveProgram(const std::string& name);

}  // namespace zantrel::test
