// Text encodings beside OpenSSL, GMime and GLib, in memory, into reused buffers. Speeds count the
// binary side: the input of an encoder, the output of a decoder.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#if defined(__linux__)
#include <malloc.h>
#endif
#ifdef HAVE_OPENSSL
#include <openssl/crypto.h>
#include <openssl/evp.h>
#endif
#ifdef HAVE_GMIME
#include <gmime/gmime.h>
#endif
#ifdef HAVE_GLIB
#include <glib.h>
#endif

#include "core/data_buffer.h"
#include "core/encode/base32.h"
#include "core/encode/base64.h"
#include "core/encode/hex.h"
#include "core/encode/html_entities.h"
#include "core/encode/quoted_printable.h"
#include "core/encode/url_encode.h"
#include "core/encode/uu.h"
#include "core/string_buffer.h"
#include "platform/cpu_features.h"

namespace {

using namespace zantrel;

struct Material {
  std::string plain;    ///< the binary side
  std::string encoded;  ///< by our own encoder, which the tests prove right
  std::vector<std::uint8_t> out;

  ByteSpan bytes() const { return asBytes(plain); }
  std::uint8_t* room() { return out.data(); }
  char* text() { return reinterpret_cast<char*>(out.data()); }
  const std::uint8_t* encodedBytes() const {
    return reinterpret_cast<const std::uint8_t*>(encoded.data());
  }
};

using MakeText = std::string (*)(std::size_t size);
using Run = std::function<void(Material&)>;

std::string randomBytes(std::size_t size) {
  std::mt19937 random(1);
  std::string bytes(size, '\0');
  for (char& c : bytes) c = static_cast<char>(random());
  return bytes;
}

// Sentences repeated in random order, with CRLF after about every eighth.
std::string prose(std::size_t size, const std::vector<std::string_view>& sentences) {
  std::mt19937 random(2);
  std::string text;
  while (text.size() < size) {
    text += sentences[random() % sentences.size()];
    if (random() % 8 == 0) text += "\r\n";
  }
  text.resize(size);
  return text;
}

std::string westernText(std::size_t size) {
  return prose(size,
               {"It is a truth that every letter must be carried. ", "Where did they go, and why? ",
                "Le d\xC3\xA9jeuner est servi \xC3\xA0 midi; 1 + 1 = 2. ", "Yes. ",
                "From there on, the road was open and nobody said a word about it. "});
}

std::string cyrillicText(std::size_t size) {
  return prose(size, {"\xD0\x9F\xD0\xB8\xD1\x81\xD1\x8C\xD0\xBC\xD0\xBE ",
                      "\xD0\xB4\xD0\xBE\xD1\x88\xD0\xBB\xD0\xBE. ",
                      "\xD0\xA1\xD0\xB5\xD0\xB3\xD0\xBE\xD0\xB4\xD0\xBD\xD1\x8F, "});
}

struct Size {
  const char* name;
  std::size_t bytes;
};
constexpr Size kSizes[] = {{"1K", 1 << 10}, {"64K", 1 << 16}, {"16M", 1 << 24}};

enum class Path { Best, Avx2, Portable };

struct Implementation {
  const char* name;
  Run run;
  Path path = Path::Best;
};

CpuFeatures featuresOf(Path path) {
  const CpuFeatures all = detectCpuFeatures();
  CpuFeatures features;
  if (path == Path::Best) return all;
  if (path == Path::Avx2) features.ssse3 = all.ssse3, features.avx2 = all.avx2;
  return features;
}

void add(const std::string& operation, MakeText makePlain,
         const std::function<std::string(const std::string&)>& encode,
         const std::vector<Implementation>& implementations) {
  for (const Size& size : kSizes) {
    for (const Implementation& implementation : implementations) {
      benchmark::RegisterBenchmark(
          (operation + "/" + size.name + "/" + implementation.name).c_str(),
          [=](benchmark::State& state) {
            Material material;
            material.plain = makePlain(size.bytes);
            material.encoded = encode(material.plain);
            material.out.assign(size.bytes * 4 + 4096, 0);
            const ScopedCpuFeatures scope(featuresOf(implementation.path));
            for (auto _ : state) {
              implementation.run(material);
              benchmark::ClobberMemory();
            }
            state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                                    static_cast<std::int64_t>(size.bytes));
          });
    }
  }
}

// Ours on each path, then the peers.
std::vector<Implementation> withPaths(const Run& ours, std::vector<Implementation> peers) {
  std::vector<Implementation> all = {{"zantrel", ours},
                                     {"zantrel_avx2", ours, Path::Avx2},
                                     {"zantrel_portable", ours, Path::Portable}};
  all.insert(all.end(), peers.begin(), peers.end());
  return all;
}

std::string base64Of(const std::string& in) {
  std::string out(base64EncodedSize(in.size()), '\0');
  base64Encode(asBytes(in), out.data());
  return out;
}

std::string base64LinesOf(const std::string& in) {
  std::string out(base64LinesSize(in.size(), 76), '\0');
  base64EncodeLines(asBytes(in), 76, out.data());
  return out;
}

std::string hexOf(const std::string& in) {
  std::string out(in.size() * 2, '\0');
  hexEncode(asBytes(in), out.data());
  return out;
}

std::string quotedPrintableOf(const std::string& in) {
  std::string out(quotedPrintableMaxSize(asBytes(in), 72), '\0');
  out.resize(quotedPrintableEncode(asBytes(in), 72, out.data()));
  return out;
}

std::string urlOf(const std::string& in) {
  std::string out(UrlEncode::encodedSize(asBytes(in)) + UrlEncode::kSlack, '\0');
  out.resize(UrlEncode::encode(asBytes(in), out.data()));
  return out;
}

std::string uuOf(const std::string& in) {
  StringBuffer out;
  Uu::encode(asBytes(in), "644", "file.dat", out);
  return std::string(out.view());
}

[[maybe_unused]] int length(const std::string& text) {
  return static_cast<int>(text.size());
}

void addBase64() {
  std::vector<Implementation> encoders, decoders, lineEncoders, lineDecoders;
#ifdef HAVE_OPENSSL
  encoders.push_back({"openssl", [](Material& m) {
                        EVP_EncodeBlock(m.room(), m.bytes().data(), length(m.plain));
                      }});
  decoders.push_back({"openssl", [](Material& m) {
                        EVP_DecodeBlock(m.room(), m.encodedBytes(), length(m.encoded));
                      }});
  lineDecoders.push_back({"openssl", [](Material& m) {
                            EVP_ENCODE_CTX* const context = EVP_ENCODE_CTX_new();
                            int written = 0;
                            EVP_DecodeInit(context);
                            EVP_DecodeUpdate(context, m.room(), &written, m.encodedBytes(),
                                             length(m.encoded));
                            EVP_ENCODE_CTX_free(context);
                          }});
  lineEncoders.push_back({"openssl", [](Material& m) {
                            EVP_ENCODE_CTX* const context = EVP_ENCODE_CTX_new();
                            int written = 0;
                            EVP_EncodeInit(context);
                            EVP_EncodeUpdate(context, m.room(), &written, m.bytes().data(),
                                             length(m.plain));
                            EVP_EncodeFinal(context, m.room() + written, &written);
                            EVP_ENCODE_CTX_free(context);
                          }});
#endif
#ifdef HAVE_GMIME
  lineEncoders.push_back({"gmime", [](Material& m) {
                            int state = 0;
                            guint32 save = 0;
                            g_mime_encoding_base64_encode_close(m.bytes().data(), m.plain.size(),
                                                                m.room(), &state, &save);
                          }});
  lineDecoders.push_back({"gmime", [](Material& m) {
                            int state = 0;
                            guint32 save = 0;
                            g_mime_encoding_base64_decode_step(m.encodedBytes(), m.encoded.size(),
                                                               m.room(), &state, &save);
                          }});
#endif
#ifdef HAVE_GLIB
  encoders.push_back({"glib", [](Material& m) {
                        gint state = 0, save = 0;
                        const gsize written = g_base64_encode_step(m.bytes().data(), m.plain.size(),
                                                                   FALSE, m.text(), &state, &save);
                        g_base64_encode_close(FALSE, m.text() + written, &state, &save);
                      }});
  decoders.push_back({"glib", [](Material& m) {
                        gint state = 0;
                        guint save = 0;
                        g_base64_decode_step(m.encoded.data(), m.encoded.size(), m.room(), &state,
                                             &save);
                      }});
#endif
  add("base64_encode", randomBytes, base64Of,
      withPaths([](Material& m) { base64Encode(m.bytes(), m.text()); }, encoders));
  add("base64_decode", randomBytes, base64Of,
      withPaths([](Material& m) { base64Decode(m.encoded, m.room()); }, decoders));
  add("base64_lines_encode", randomBytes, base64LinesOf,
      withPaths([](Material& m) { base64EncodeLines(m.bytes(), 76, m.text()); }, lineEncoders));
  add("base64_lines_decode", randomBytes, base64LinesOf,
      withPaths([](Material& m) { base64Decode(m.encoded, m.room()); }, lineDecoders));
}

void addHex() {
  std::vector<Implementation> encoders, decoders;
#ifdef HAVE_OPENSSL
  encoders.push_back({"openssl", [](Material& m) {
                        std::size_t written = 0;
                        OPENSSL_buf2hexstr_ex(m.text(), m.out.size(), &written, m.bytes().data(),
                                              m.plain.size(), '\0');
                      }});
  decoders.push_back({"openssl", [](Material& m) {
                        std::size_t written = 0;
                        OPENSSL_hexstr2buf_ex(m.room(), m.out.size(), &written, m.encoded.c_str(),
                                              '\0');
                      }});
#endif
  add("hex_encode", randomBytes, hexOf,
      withPaths([](Material& m) { hexEncode(m.bytes(), m.text()); }, encoders));
  add("hex_decode", randomBytes, hexOf,
      withPaths([](Material& m) { hexDecode(m.encoded, m.room()); }, decoders));
}

void addQuotedPrintable() {
  std::vector<Implementation> encoders, decoders;
#ifdef HAVE_GMIME
  encoders.push_back({"gmime", [](Material& m) {
                        int state = -1;
                        guint32 save = 0;
                        g_mime_encoding_quoted_encode_close(m.bytes().data(), m.plain.size(),
                                                            m.room(), &state, &save);
                      }});
  decoders.push_back({"gmime", [](Material& m) {
                        int state = 0;
                        guint32 save = 0;
                        g_mime_encoding_quoted_decode_step(m.encodedBytes(), m.encoded.size(),
                                                           m.room(), &state, &save);
                      }});
#endif
  const auto encode = [](Material& m) { quotedPrintableEncode(m.bytes(), 72, m.text()); };
  const auto decode = [](Material& m) { quotedPrintableDecode(m.encoded, m.room()); };
  add("qp_encode/western", westernText, quotedPrintableOf, withPaths(encode, encoders));
  add("qp_decode/western", westernText, quotedPrintableOf, withPaths(decode, decoders));
  add("qp_encode/cyrillic", cyrillicText, quotedPrintableOf, withPaths(encode, encoders));
  add("qp_decode/cyrillic", cyrillicText, quotedPrintableOf, withPaths(decode, decoders));
}

void addUrl() {
  std::vector<Implementation> encoders, decoders;
#ifdef HAVE_GLIB
  encoders.push_back(
      {"glib", [](Material& m) { g_free(g_uri_escape_string(m.plain.c_str(), nullptr, FALSE)); }});
  decoders.push_back(
      {"glib", [](Material& m) { g_free(g_uri_unescape_string(m.encoded.c_str(), nullptr)); }});
#endif
  const auto encode = [](Material& m) { UrlEncode::encode(m.bytes(), m.text()); };
  const auto decode = [](Material& m) { UrlEncode::decode(m.encoded, m.room()); };
  add("url_encode/western", westernText, urlOf, withPaths(encode, encoders));
  add("url_decode/western", westernText, urlOf, withPaths(decode, decoders));
  add(
      "url_encode/binary",
      [](std::size_t size) {
        std::string bytes = randomBytes(size);
        for (char& c : bytes)
          c = static_cast<char>(c | 1);  // no zero byte: the peer takes C strings
        return bytes;
      },
      urlOf, withPaths(encode, encoders));
}

void addUu() {
  std::vector<Implementation> encoders, decoders;
#ifdef HAVE_GMIME
  encoders.push_back({"gmime", [](Material& m) {
                        int state = 0;
                        guint32 save = 0;
                        unsigned char line[66];
                        g_mime_encoding_uuencode_close(m.bytes().data(), m.plain.size(), m.room(),
                                                       line, &state, &save);
                      }});
  decoders.push_back({"gmime", [](Material& m) {
                        int state = GMIME_UUDECODE_STATE_BEGIN;
                        guint32 save = 0;
                        const std::size_t header = m.encoded.find('\n') + 1;
                        g_mime_encoding_uudecode_step(m.encodedBytes() + header,
                                                      m.encoded.size() - header, m.room(), &state,
                                                      &save);
                      }});
#endif
  // Both into a buffer whose storage is kept from one run to the next.
  const auto text = std::make_shared<StringBuffer>();
  const auto bytes = std::make_shared<DataBuffer>();
  add("uu_encode", randomBytes, uuOf,
      withPaths(
          [text](Material& m) {
            text->clear();
            Uu::encode(m.bytes(), "644", "file.dat", *text);
          },
          encoders));
  add("uu_decode", randomBytes, uuOf,
      withPaths(
          [bytes](Material& m) {
            StringBuffer mode, name;
            bytes->clear();
            Uu::decode(m.encoded, *bytes, mode, name);
          },
          decoders));
}

void addEntities() {
  const auto text = std::make_shared<StringBuffer>();
  add("entity_decode", westernText,
      [](const std::string& in) {
        StringBuffer out;
        entityEncodeHex(in, out);
        return std::string(out.view());
      },
      {{"zantrel", [text](Material& m) {
          text->clear();
          htmlEntityDecode(m.encoded, *text);
        }}});
}

[[maybe_unused]] const bool kRegistered = [] {
#if defined(__linux__) && defined(M_MMAP_THRESHOLD)
  mallopt(M_MMAP_THRESHOLD,
          1 << 30);  // keep memory between calls, or the kernel is what we measure
  mallopt(M_TRIM_THRESHOLD, 2000000000);
#endif
  addBase64();
  addHex();
  addQuotedPrintable();
  addUrl();
  addUu();
  addEntities();
  return true;
}();

}  // namespace
