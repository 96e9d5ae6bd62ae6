#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "crypt2/crypt_fixture.h"
#include "frame/progress_event.h"

namespace zantrel::test {
namespace {

constexpr std::size_t kChunk = 800000;

std::string pattern(std::size_t size) {
  std::string text(size, '\0');
  std::uint32_t state = 5;
  for (char& c : text) c = static_cast<char>((state = state * 1664525 + 1013904223) >> 24);
  return text;
}

/// A component and a folder with the files "in" and "out", which holds "old".
struct FileCrypt : Crypt {
  explicit FileCrypt(std::string_view algorithm = "aes") {
    component.put_CryptAlgorithm(XString(algorithm));
    component.put_SecretKey(bytes("0123456789abcdef"));
    component.put_IV(bytes("0123456789abcdef"));
    writeFile(folder / "out", "old");
  }
  bool run(bool encrypt, const std::string& from, const std::string& to,
           ProgressEvent* progress = nullptr) {
    const XString in(folder / from), out(folder / to);
    return encrypt ? component.ZT_EncryptFile(in, out, progress)
                   : component.ZT_DecryptFile(in, out, progress);
  }
  std::string content(const std::string& name) { return readFile(folder / name); }
  /// Nothing but the old output, and no half-written file beside it.
  void expectUntouched(std::ptrdiff_t files) {
    EXPECT_EQ(content("out"), "old");
    const std::filesystem::directory_iterator begin(folder.path()), end;
    EXPECT_EQ(std::distance(begin, end), files) << "files are left behind";
  }

  TempFolder folder;
};

TEST(CryptFileTest, AFileGivesWhatItsBytesGiveAtEverySizeAroundTheChunk) {
  const std::string text = pattern(2 * kChunk + 17);
  for (const std::size_t size : {std::size_t{0}, std::size_t{1}, std::size_t{16}, kChunk - 17,
                                 kChunk - 16, kChunk - 1, kChunk, kChunk + 1, kChunk + 15,
                                 kChunk + 16, 2 * kChunk - 1, 2 * kChunk, 2 * kChunk + 17}) {
    for (const int padding : {0, 3}) {
      SCOPED_TRACE(std::to_string(size) + " " + std::to_string(padding));
      FileCrypt crypt;
      crypt->settings().paddingScheme = padding;
      crypt->settings().firstChunk = false;  // counts for data only
      writeFile(crypt.folder / "in", text.substr(0, size));
      ASSERT_TRUE(crypt.run(true, "in", "out")) << crypt.log();
      ASSERT_TRUE(crypt.run(false, "out", "back")) << crypt.log();
      crypt->settings().firstChunk = true;
      const std::string encrypted = crypt.content("out");
      EXPECT_TRUE(crypt.bytesOf(true, &ClsCrypt::EncryptX, bytes(text.substr(0, size))) ==
                  encrypted);
      EXPECT_TRUE(crypt.bytesOf(true, &ClsCrypt::DecryptX, bytes(encrypted)) ==
                  crypt.content("back"));
      EXPECT_TRUE(crypt.content("back").substr(0, size) == text.substr(0, size));
    }
  }
}

TEST(CryptFileTest, EveryAlgorithmGoesThroughFilesAndBack) {
  const std::string text = pattern(kChunk + 1003);
  for (const char* const name :
       {"twofish", "blowfish", "3des", "rc2", "rc4", "none", "pbes1", "pbes2"}) {
    SCOPED_TRACE(name);
    FileCrypt crypt(name);
    crypt->settings().pbesAlgorithm.setFromUtf8("rc2");
    writeFile(crypt.folder / "in", text);
    ASSERT_TRUE(crypt.run(true, "in", "out")) << crypt.log();
    EXPECT_TRUE(crypt.bytesOf(true, &ClsCrypt::EncryptX, bytes(text)) == crypt.content("out"));
    ASSERT_TRUE(crypt.run(false, "out", "out")) << crypt.log();
    EXPECT_TRUE(crypt.content("out") == text) << "a file may be its own output";
  }
}

TEST(CryptFileTest, NamesItsFilesInTheLog) {
  FileCrypt crypt;
  writeFile(crypt.folder / "in", "text");
  ASSERT_TRUE(crypt.run(true, "in", "out"));
  crypt.expectLogged({"inputFile: " + (crypt.folder / "in"),
                      "outputFile: " + (crypt.folder / "out"), "algorithm: aes"});
  EXPECT_EQ(crypt.property(&ClsCrypt::get_LastAlgorithm), "rijndael");
}

TEST(CryptFileTest, FailuresLeaveTheOldOutput) {
  const std::string ragged = pattern(kChunk + 5);
  {
    FileCrypt crypt;
    EXPECT_FALSE(crypt.run(true, "missing", "out"));
    crypt.expectLogged({"Failed to open file."});
    crypt.expectUntouched(1);
    EXPECT_FALSE(crypt.run(true, ".", "out")) << "a folder";
    crypt.expectUntouched(1);
    EXPECT_FALSE(crypt.run(true, "out", "missing/out"));
    crypt.expectUntouched(1);
  }
  {
    FileCrypt crypt;
    writeFile(crypt.folder / "in", ragged);
    EXPECT_FALSE(crypt.run(false, "in", "out"));
    crypt.expectLogged(
        {"The encrypted data is not a whole number of blocks.", "Failed to decrypt data"});
    crypt.expectUntouched(2);
    crypt->settings().paddingScheme = 9;
    EXPECT_FALSE(crypt.run(true, "in", "out"));
    crypt.expectLogged({"Failed to encrypt data"});
    crypt.expectUntouched(2);
    crypt->put_SecretKey(DataBuffer());
    EXPECT_FALSE(crypt.run(true, "in", "out"));
    crypt.expectLogged({"No secret key has been set."});
    crypt.expectUntouched(2);
  }
  FileCrypt pki("pki");
  writeFile(pki.folder / "in", ragged);
  EXPECT_FALSE(pki.run(true, "in", "out"));
  pki.expectLogged({"No encryption certificates were specified."});
  pki.expectUntouched(2);
}

TEST(CryptFileTest, AFileThatOpensButCannotBeReadIsAFailure) {
  constexpr char kUnreadable[] = "/proc/self/mem";  // its first page is no memory
  if (!std::filesystem::exists(kUnreadable)) GTEST_SKIP() << "the system has no such file";
  FileCrypt crypt;
  EXPECT_FALSE(crypt->ZT_EncryptFile(XString(kUnreadable), XString(crypt.folder / "out"), nullptr));
  crypt.expectLogged({"Failed to read file.", "Failed to read next chunk from input file"});
  crypt.expectUntouched(1);
}

TEST(CryptFileTest, AFullDiskIsAFailure) {
  if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "the system has no full device";
  FileCrypt crypt;
  for (const std::size_t size : {std::size_t{1}, 3 * kChunk}) {
    writeFile(crypt.folder / "in", pattern(size));
    EXPECT_FALSE(
        crypt->ZT_EncryptFile(XString(crypt.folder / "in"), XString("/dev/full"), nullptr));
    crypt.expectLogged({"Failed to write file."});
  }
}

struct StopAfter final : ProgressEvent {
  explicit StopAfter(int callbacks) : left(callbacks) {}
  void PercentDone(std::uint32_t, bool& abort) override { abort = left-- == 0; }
  int left;
};

TEST(CryptFileTest, AnAbortAtAnyChunkLeavesTheOldOutput) {
  for (const bool encrypt : {true, false}) {
    FileCrypt crypt;
    writeFile(crypt.folder / "in", pattern(4 * kChunk + 16));
    for (int callback = 0; callback < 5; ++callback) {
      StopAfter stop(callback);
      EXPECT_FALSE(crypt.run(encrypt, "in", "out", &stop)) << callback;
      EXPECT_EQ(stop.left, -1) << "nothing runs on after the abort";
      crypt.expectLogged({"Aborted by the application."});
      crypt.expectUntouched(2);
    }
    StopAfter never(5);
    EXPECT_TRUE(crypt.run(encrypt, "in", "out", &never));
    EXPECT_EQ(never.left, 0) << "one report for each chunk";
  }
}

}  // namespace
}  // namespace zantrel::test
