// Compresses a file with gzip and expands it again, no further than a limit:
//   gzip_file letter.txt letter.txt.gz letter-again.txt

#include <zantrel/gzip.h>

#include <cstdio>

int main(int argc, char** argv) {
  if (argc != 4) {
    std::fputs("usage: gzip_file FILE GZIP-FILE EXPANDED-FILE\n", stderr);
    return 2;
  }
  Zantrel::Gzip gzip;
  gzip.put_Filename(argv[1]);
  gzip.put_DeflateLevel(9);
  gzip.put_MaxDecompressedSize(100'000'000);  // a small file can hold an enormous one
  if (!gzip.CompressFile(argv[1], argv[2]) || !gzip.UncompressFile(argv[2], argv[3])) {
    std::fputs(gzip.get_LastErrorText().c_str(), stderr);
    return 1;
  }
  return 0;
}
