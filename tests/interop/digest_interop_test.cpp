// Digests and HMAC against the openssl and python3 programs, over sizes around the blocks. MD2,
// HAVAL and the long forms of RIPEMD have no counterpart there; tests/data/crypto has their values.

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "crypto/digest_names.h"
#include "crypto/hmac.h"
#include "support/test_data.h"

namespace zantrel::test {
namespace {

std::string randomBytes(std::size_t size) {
  std::mt19937 random(static_cast<unsigned>(size) + 5);
  std::string bytes(size, '\0');
  for (char& c : bytes) c = static_cast<char>(random());
  return bytes;
}

TEST(DigestInteropTest, OpensslGivesTheSameDigestsOfFiles) {
  if (!haveProgram("openssl")) GTEST_SKIP() << "openssl is not installed";
  const TempFolder folder;
  int compared = 0;
  for (const std::size_t size : {0U, 64U, 119U, 20001U, 1000000U}) {
    const std::string bytes = randomBytes(size);
    writeFile(folder / "data", bytes);
    for (const std::string name :
         {"md4", "md5", "sha1", "sha256", "sha384", "sha512", "ripemd160"}) {
      std::vector<std::string> command = {"openssl", "dgst", "-" + name, "-binary"};
      if (name == "md4") command.insert(command.end(), {"-provider", "legacy"});
      command.push_back(folder / "data");
      const auto theirs = runProgram(command);
      if (!theirs) continue;  // a build without the legacy algorithms
      EXPECT_EQ(hex(digestOf(name, bytes)), hex(*theirs)) << name << " of " << size;
      ++compared;
    }
  }
  EXPECT_GE(compared, 25);
}

TEST(DigestInteropTest, PythonGivesTheSameHmacs) {
  if (!haveProgram("python3")) GTEST_SKIP() << "python3 is not installed";
  std::string questions, answers;
  for (const std::string name : {"md5", "sha1", "sha256", "sha512"}) {
    for (const std::size_t keySize : {0U, 1U, 64U, 65U, 128U, 200U}) {
      const std::string key = randomBytes(keySize);
      const std::string data = randomBytes(3 * keySize + 7);
      questions.append(name).append(",").append(hex(key)).append(",").append(hex(data)).append(
          "\n");
      DataBuffer out;
      Hmac::hmac(data.data(), data.size(), key.data(), key.size(), Hash::hashIdFromName(name), out);
      answers.append(hex(out.text())).append("\n");
    }
  }
  const std::string program =
      "import sys,hmac\n"
      "for line in sys.stdin:\n"
      "  name,key,data=line.strip().split(',')\n"
      "  print(hmac.new(bytes.fromhex(key),bytes.fromhex(data),name).hexdigest())\n";
  EXPECT_EQ(answers, runProgram({"python3", "-c", program}, questions));
}

}  // namespace
}  // namespace zantrel::test
