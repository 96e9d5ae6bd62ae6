#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "core/ext_int_array.h"
#include "core/hash_map.h"
#include "core/sip_hash.h"
#include "core/string_pair.h"

namespace zantrel {
namespace {

TEST(HashMapTest, KeepsTheLastValueOfEveryName) {
  HashMap map;
  for (int round = 0; round < 2; ++round) {
    for (int i = 0; i < 1000; ++i) map.putString(std::to_string(i), std::to_string(i * round));
  }
  EXPECT_EQ(map.getSize(), 1000U);
  EXPECT_EQ(map.getString("999")->view(), "999");
  EXPECT_EQ(map.getString("1000"), nullptr);
  map.put("pair", std::make_unique<StringPair>("n", "v"));
  EXPECT_EQ(map.getString("pair"), nullptr);
  EXPECT_EQ(static_cast<StringPair*>(map.get("pair"))->value().view(), "v");
  EXPECT_NE(map.remove("pair"), nullptr);
  EXPECT_EQ(map.remove("pair"), nullptr);
  map.put("0", nullptr);
  EXPECT_FALSE(map.contains("0"));
  std::size_t seen = 0;
  map.forEach([&seen](std::string_view name, const ZantrelObject&) { seen += name.size() > 0; });
  EXPECT_EQ(seen, 999U);
}

// Key 00..0f and inputs 00, 00 01, ... of the reference vectors in the SipHash paper's appendix A
// and its reference implementation's published table (first, eighth, ninth and sixteenth row).
TEST(SipHashTest, AgreesWithThePublishedVectors) {
  const SipKey key{0x0706050403020100U, 0x0F0E0D0C0B0A0908U};
  const std::pair<std::size_t, std::uint64_t> vectors[] = {
      {0, 0x726FDB47DD0E0E31U},
      {7, 0xAB0200F58B01D137U},
      {8, 0x93F5F5799A932462U},
      {15, 0xA129CA6149BE45E5U},
  };
  std::uint8_t input[16];
  for (std::uint8_t i = 0; i < 16; ++i) input[i] = i;
  for (const auto& [size, hash] : vectors) EXPECT_EQ(sipHash(key, {input, size}), hash) << size;
}

TEST(ExtIntArrayTest, AnswersOutOfRangeWithoutHarm) {
  ExtIntArray list;
  for (const int value : {5, 3, 9}) list.append(value);
  EXPECT_EQ(list.elementAt(-1), 0);
  EXPECT_EQ(list.elementAt(3), 0);
  EXPECT_FALSE(list.removeAt(3));
  EXPECT_FALSE(list.setAt(-1, 0));
  EXPECT_TRUE(list.setAt(0, 4));
  EXPECT_TRUE(list.removeAt(1));
  list.append(1);
  list.sort();
  EXPECT_EQ(std::vector<std::int32_t>(list.items().begin(), list.items().end()),
            (std::vector<std::int32_t>{1, 4, 9}));
  EXPECT_EQ(list.find(9), 2);
  EXPECT_EQ(list.find(7), -1);
}

}  // namespace
}  // namespace zantrel
