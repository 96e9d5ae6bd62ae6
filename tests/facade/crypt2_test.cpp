// The public class: overloads, events and threads.

#include <zantrel/crypt2.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <thread>
#include <vector>

#include "support/test_data.h"

namespace Zantrel {
namespace {

using zantrel::test::TempFolder;

TEST(Crypt2Test, CipherModeIsSetByNumberOrByName) {
  Crypt2 crypt;
  crypt.put_CipherMode("cfb");
  EXPECT_EQ(crypt.get_CipherMode(), 2);
  crypt.put_CipherMode(0);
  EXPECT_EQ(crypt.get_CipherMode(), 0);
  crypt.put_CipherMode(u"ECB");
  EXPECT_EQ(crypt.get_CipherMode(), 1);
}

TEST(Crypt2Test, AHandlerAbortsTheHashingOfAFile) {
  const TempFolder folder;
  zantrel::test::writeFile(folder / "data", std::string(200000, 'x'));
  Crypt2 crypt;
  int calls = 0;
  crypt.OnPercentDone = [&calls](PercentDoneEventArgs& args) { args.Abort = ++calls == 2; };
  EXPECT_TRUE(crypt.HashFile(folder / "data").empty());
  EXPECT_FALSE(crypt.get_LastMethodSuccess());
  EXPECT_EQ(calls, 2);
  EXPECT_NE(crypt.get_LastErrorText().find("Hashing aborted by application"), std::string::npos);
  crypt.put_EnableEvents(false);
  EXPECT_EQ(crypt.HashFile(folder / "data").size(), 20U);
}

TEST(Crypt2Test, AHandlerMayUseTheObjectThatCallsIt) {
  const TempFolder folder;
  zantrel::test::writeFile(folder / "data", "abc");
  Crypt2 crypt;
  Bytes inner;
  crypt.OnPercentDone = [&](PercentDoneEventArgs&) { inner = crypt.CalcDigestMD5(bytesOf("abc")); };
  EXPECT_EQ(crypt.HashFile(folder / "data").size(), 20U);
  EXPECT_EQ(inner.size(), 16U);
}

// Each answer is one that a single thread could have got: calls run one after the other.
TEST(Crypt2Test, SeveralThreadsUseOneObject) {
  constexpr int kThreads = 4;
  constexpr int kRounds = 200;
  Crypt2 crypt;
  const ByteView data = bytesOf("abc");
  const std::vector<std::string> names = {"sha1", "md5", "sha256", "ripemd160"};
  std::vector<Bytes> digests, codes;
  crypt.SetHmacKeyBytes(data);
  for (const std::string& name : names) {
    crypt.put_HashAlgorithm(name);
    digests.push_back(crypt.HashBytes(data));
    codes.push_back(crypt.HmacBytes(data));
  }
  std::vector<int> strange(kThreads);
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t)
    threads.emplace_back([&, t] {
      for (int i = 0; i < kRounds; ++i) {
        crypt.put_HashAlgorithm(names[static_cast<std::size_t>(t)]);
        crypt.put_SecretKey(Bytes(static_cast<std::size_t>(i % 7), 'k'));
        const Bytes digest = crypt.HashBytes(data);
        const Bytes code = crypt.HmacBytes(data);
        crypt.HashBeginBytes(data);
        crypt.HashMoreString("more");
        crypt.HashFinal();
        const bool known =
            std::find(digests.begin(), digests.end(), digest) != digests.end() &&
            std::find(codes.begin(), codes.end(), code) != codes.end() &&
            std::find(names.begin(), names.end(), crypt.get_HashAlgorithm()) != names.end() &&
            crypt.get_SecretKey().size() < 7;
        if (!known || crypt.get_LastErrorText().empty()) ++strange[static_cast<std::size_t>(t)];
      }
    });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(strange, std::vector<int>(kThreads, 0));
}

}  // namespace
}  // namespace Zantrel
