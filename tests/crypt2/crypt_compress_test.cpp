#include <gtest/gtest.h>

#include <string>

#include "crypt2/crypt_fixture.h"

namespace zantrel::test {
namespace {

constexpr const char* kAlgorithms[] = {"deflate", "bz2", "lzw", "ppmd", "none"};

struct Compression : Crypt {
  explicit Compression(std::string_view algorithm = "deflate") {
    component.put_CompressionAlgorithm(XString(algorithm));
    component.put_SecretKey(bytes("0123456789abcdef"));
    component.put_IV(bytes("0123456789abcdef"));
    component.put_EncodingMode(XString("hex"));
  }
};

TEST(CryptCompressTest, NamesMeanWhatTheyMeanToTheComponentCompression) {
  Compression crypt;
  for (const auto& [name, stored] : {std::pair{"Deflate ", "deflate"},
                                     {"BZip2", "bz2"},
                                     {"zlib", "ppmd"},
                                     {"LZW", "lzw"},
                                     {"none", "none"}}) {
    crypt->put_CompressionAlgorithm(XString(name));
    EXPECT_EQ(crypt.property(&ClsCrypt::get_CompressionAlgorithm), stored);
  }
}

TEST(CryptCompressTest, EveryFormAndFormatGoesThereAndBack) {
  std::string text;
  for (int i = 0; i < 500; ++i) text += "Gr\u00fc\u00dfe " + std::to_string(i * i);
  for (const char* const name : kAlgorithms) {
    SCOPED_TRACE(name);
    Compression crypt(name);
    const std::string packed = crypt.bytesOf(true, &ClsCrypt::CompressBytesX, bytes(text));
    crypt.expectLogged({"compressionAlgorithm: " + std::string(name)});
    EXPECT_EQ(packed.size() < text.size() / 2, name != std::string("none"));
    EXPECT_EQ(crypt.bytesOf(true, &ClsCrypt::CompressStringX, XString(text)), packed);
    const std::string encoded = crypt.textOf(true, &ClsCrypt::CompressStringENCX, XString(text));
    EXPECT_EQ(unhex(encoded), packed);
    EXPECT_EQ(crypt.textOf(true, &ClsCrypt::CompressBytesENCX, bytes(text)), encoded);
    EXPECT_EQ(crypt.bytesOf(true, &ClsCrypt::InflateBytesX, bytes(packed)), text);
    EXPECT_EQ(crypt.bytesOf(true, &ClsCrypt::InflateBytesENCX, XString(encoded)), text);
    EXPECT_EQ(crypt.textOf(true, &ClsCrypt::InflateStringX, bytes(packed)), text);
    EXPECT_EQ(crypt.textOf(true, &ClsCrypt::InflateStringENCX, XString(encoded)), text);

    const std::string sealed = crypt.bytesOf(true, &ClsCrypt::ZipAndEncryptX, bytes(text));
    EXPECT_EQ(crypt.bytesOf(true, &ClsCrypt::EncryptX, bytes(packed)), sealed);
    EXPECT_EQ(crypt.bytesOf(true, &ClsCrypt::ZipAndEncryptStrX, XString(text)), sealed);
    EXPECT_EQ(crypt.bytesOf(true, &ClsCrypt::DecryptAndUnzipX, bytes(sealed)), text);
    EXPECT_EQ(crypt.textOf(true, &ClsCrypt::DecryptAndUnzipStrX, bytes(sealed)), text);
  }
}

TEST(CryptCompressTest, ZipAndEncryptIsWholeWhateverTheChunkSettings) {
  Compression crypt, whole;
  crypt->settings().firstChunk = false;
  const std::string sealed = crypt.bytesOf(true, &ClsCrypt::ZipAndEncryptX, bytes("text"));
  EXPECT_EQ(whole.bytesOf(true, &ClsCrypt::ZipAndEncryptX, bytes("text")), sealed);
  EXPECT_EQ(crypt.bytesOf(true, &ClsCrypt::DecryptAndUnzipX, bytes(sealed)), "text");
}

TEST(CryptCompressTest, DamagedAndTruncatedDataGiveNothing) {
  const std::string text(100000, 'x');
  for (const char* const name : {"deflate", "bz2"}) {
    Compression crypt(name);
    const std::string packed = crypt.bytesOf(true, &ClsCrypt::CompressBytesX, bytes(text));
    for (std::size_t size = 1; size < packed.size(); size += 1 + size / 8)
      EXPECT_EQ(crypt.bytesOf(false, &ClsCrypt::InflateBytesX, bytes(packed.substr(0, size))), "");
    EXPECT_EQ(crypt.bytesOf(false, &ClsCrypt::DecryptAndUnzipX, bytes("no whole block")), "");
    crypt.expectLogged({"Failed to decrypt data"});
  }
}

TEST(CryptCompressTest, ExpansionStopsAtTheLargestSizeAllowed) {
  for (const char* const name : {"deflate", "bz2", "lzw", "ppmd"}) {
    Compression crypt(name);
    const std::string packed =
        crypt.bytesOf(true, &ClsCrypt::CompressBytesX, bytes(std::string(1 << 20, 'x')));
    crypt->settings().maxDecompressedSize = 1 << 20;
    EXPECT_EQ(crypt.bytesOf(true, &ClsCrypt::InflateBytesX, bytes(packed)).size(), 1u << 20);
    EXPECT_TRUE(crypt->put_MaxDecompressedSize((1 << 20) - 1));
    EXPECT_FALSE(crypt->put_MaxDecompressedSize(-1));
    EXPECT_EQ(crypt.bytesOf(false, &ClsCrypt::InflateBytesX, bytes(packed)), "");
    crypt.expectLogged({"The decompressed data are larger than the limit that was set."});
  }
}

}  // namespace
}  // namespace zantrel::test
