#include "crypto/hash.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "crypto/digest_names.h"
#include "crypto/hmac.h"
#include "support/cpu_paths.h"
#include "support/test_data.h"

namespace zantrel::test {
namespace {

std::string hashed(int id, std::string_view bytes) {
  DataBuffer out;
  out.append(std::string_view("old"));
  Hash::doHash(bytes.data(), bytes.size(), id, out);
  return std::string(out.text());
}

std::string hmac(int id, std::string_view key, std::string_view data) {
  DataBuffer out;
  Hmac::hmac(data.data(), data.size(), key.data(), key.size(), id, out);
  return std::string(out.text());
}

// RFC 2104, over any digest and with pads of any size.
std::string plainHmac(int id, std::string key, std::string_view data, std::size_t padBytes) {
  key.resize(padBytes, '\0');
  std::string inner = key, outer = key;
  for (char& c : inner) c = static_cast<char>(c ^ 0x36);
  for (char& c : outer) c = static_cast<char>(c ^ 0x5C);
  return hashed(id, outer + hashed(id, inner + std::string(data)));
}

TEST(HashTest, KnowsSixAlgorithms) {
  const std::vector<std::pair<int, std::string>> known = {
      {1, "sha1"}, {4, "md2"}, {5, "md5"}, {7, "sha256"}, {2, "sha384"}, {3, "sha512"}};
  for (const auto& [id, name] : known) {
    EXPECT_EQ(hashed(id, "abc"), digestOf(name, "abc"));
    EXPECT_EQ(Hash::hashLen(id), digestOf(name, "").size());
  }
}

TEST(HashTest, AnyOtherNumberMeansSha1ButHasALengthOf16) {
  for (const int id : {6, 8, 9, 10, 11, 12, 0, -1, 13}) {
    EXPECT_EQ(hashed(id, "abc"), digestOf("sha1", "abc")) << id;
    EXPECT_EQ(Hash::hashLen(id), 16U) << id;
  }
}

TEST(HashTest, MayHashItsOwnOutput) {
  DataBuffer buffer;
  buffer.append(std::string_view("abc"));
  Hash::doHash(buffer.getData2(), buffer.getSize(), kHashSha256, buffer);
  EXPECT_EQ(std::string(buffer.text()), digestOf("sha256", "abc"));
}

TEST(HashTest, FindsTheNumberOfAName) {
  const std::vector<std::pair<std::string, int>> names = {
      {"SHA-256", 7},    {"sha256Digest", 7}, {"Sha 256", 7},     {"id-sha384", 2},
      {"sha512", 3},     {"MD5", 5},          {"md\t2", 4},       {"SHA-1", 1},
      {"", 1},           {"whirlpool", 1},    {"sha1 or md5", 1}, {"md4", 1},
      {"shadigest1", 1}, {"ripemd160", 1}};
  for (const auto& [name, id] : names) EXPECT_EQ(Hash::hashIdFromName(name), id) << name;
}

TEST(HashTest, NamesAndObjectIdentifiers) {
  const auto oid = [](int id) {
    ExtIntArray arcs;
    arcs.append(99);
    std::string text;
    if (!Hash::digestOid(id, arcs)) return std::string(arcs.getSize() == 0 ? "none" : "left over");
    for (const std::int32_t arc : arcs.items())
      text.append(text.empty() ? "" : ".").append(std::to_string(arc));
    return text;
  };
  struct Row {
    int id;
    const char* name;
    const char* oid;
  };
  for (const Row& row :
       {Row{1, "SHA-1", "1.3.14.3.2.26"}, Row{4, "MD2", "1.2.840.113549.2.2"},
        Row{5, "MD5", "1.2.840.113549.2.5"}, Row{7, "SHA-256", "2.16.840.1.101.3.4.2.1"},
        Row{2, "SHA-384", "2.16.840.1.101.3.4.2.2"}, Row{3, "SHA-512", "2.16.840.1.101.3.4.2.3"},
        Row{6, "Unknown", "none"}, Row{8, "Unknown", "none"}, Row{10, "Unknown", "none"}}) {
    StringBuffer name;
    Hash::hashNameFromId(row.id, name);
    EXPECT_EQ(name.view(), row.name);
    EXPECT_EQ(oid(row.id), row.oid);
  }
}

TEST(HashTest, FamiliesOfContexts) {
  EXPECT_EQ(DigestContext::familyOf(kHashSha256), DigestContext::familyOf(kHashSha512));
  EXPECT_EQ(DigestContext::familyOf(99), DigestContext::familyOf(kHashSha1));
  EXPECT_NE(DigestContext::familyOf(kHashRipemd128), DigestContext::familyOf(kHashRipemd160));
}

TEST(HmacTest, PublishedValuesOnEachCpuPath) {
  const auto rows = readTable(ZANTREL_TEST_DATA "/crypto/hmac.tsv");
  ASSERT_GT(rows.size(), 30U);
  onEachCpuPath([&] {
    for (const auto& row : rows) {
      if (row[0] == "sha384") continue;  // see the next test
      EXPECT_EQ(hex(hmac(Hash::hashIdFromName(row[0]), unhex(row[1]), unhex(row[2]))), row[3]);
    }
  });
}

TEST(HmacTest, Sha384HasPadsOf64BytesAndDiffersFromRfc4231) {
  int differing = 0;
  for (const auto& row : readTable(ZANTREL_TEST_DATA "/crypto/hmac.tsv")) {
    if (row[0] != "sha384") continue;
    std::string key = unhex(row[1]);
    const std::string code = hmac(kHashSha384, key, unhex(row[2]));
    EXPECT_NE(hex(code), row[3]);
    if (key.size() > 64) key = hashed(kHashSha384, key);
    EXPECT_EQ(code, plainHmac(kHashSha384, key, unhex(row[2]), 64));
    ++differing;
  }
  EXPECT_GE(differing, 6);
}

TEST(HmacTest, AKeyLongerThanThePadIsHashedFirst) {
  const std::string key(65, 'k');
  EXPECT_EQ(hmac(kHashSha1, key, "data"), hmac(kHashSha1, hashed(kHashSha1, key), "data"));
  EXPECT_EQ(hmac(kHashSha512, key, "data"), plainHmac(kHashSha512, key, "data", 128));
  EXPECT_EQ(hmac(kHashSha1, std::string(64, 'k'), "data"),
            plainHmac(kHashSha1, std::string(64, 'k'), "data", 64));
}

TEST(HmacTest, NumbersThatTheDispatcherDoesNotKnowMeanSha1) {
  for (const int id : {6, 8, 9, 10, 11, 12, 0}) {
    EXPECT_EQ(hmac(id, "key", "data"), hmac(kHashSha1, "key", "data")) << id;
    // Of a long key's digest only the sixteen bytes of hashLen are taken.
    const std::string key(70, 'k');
    EXPECT_EQ(hmac(id, key, "data"), hmac(kHashSha1, hashed(kHashSha1, key).substr(0, 16), "data"));
  }
}

TEST(HmacTest, AKeptKeyServesManyMessages) {
  for (const int id : {1, 2, 3, 4, 5, 7}) {
    const HmacKey key(asBytes("secret"), id);
    const HmacKey copy = key;
    for (const std::size_t size : {0U, 1U, 63U, 64U, 65U, 127U, 128U, 1000U}) {
      const std::string data(size, 'd');
      std::uint8_t code[kMaxDigestBytes];
      for (const HmacKey* each : {&key, &copy}) {
        each->mac(asBytes(data), code);
        EXPECT_EQ(std::string(asText({code, each->macBytes()})), hmac(id, "secret", data));
      }
    }
  }
}

}  // namespace
}  // namespace zantrel::test
