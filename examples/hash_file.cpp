// Shows the SHA-256 digests of files, in hexadecimal digits:
//   hash_file letter.txt image.iso

#include <zantrel/crypt2.h>

#include <cstdio>

int main(int argc, char** argv) {
  Zantrel::Crypt2 crypt;
  crypt.put_HashAlgorithm("sha256");
  crypt.put_EncodingMode("hex");
  for (int i = 1; i < argc; ++i) {
    std::string digest;
    if (!crypt.HashFileENC(argv[i], digest)) {
      std::fputs(crypt.get_LastErrorText().c_str(), stderr);
      return 1;
    }
    std::printf("%s  %s\n", digest.c_str(), argv[i]);
  }
  return 0;
}
