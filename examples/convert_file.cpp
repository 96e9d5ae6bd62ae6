// Converts a text file from one charset to another and shows how far it is:
//   convert_file letter.txt windows-1251 letter-utf8.txt utf-8

#include <zantrel/charset.h>

#include <cstdio>

int main(int argc, char** argv) {
  if (argc != 5) {
    std::fputs("usage: convert_file IN-FILE FROM-CHARSET OUT-FILE TO-CHARSET\n", stderr);
    return 2;
  }
  Zantrel::Charset charset;
  charset.put_FromCharset(argv[2]);
  charset.put_ToCharset(argv[4]);
  charset.OnPercentDone = [](Zantrel::PercentDoneEventArgs& args) {
    std::fprintf(stderr, "\r%u %%", args.PercentDone);  // args.Abort = true would stop it
  };
  if (!charset.ConvertFile(argv[1], argv[3])) {
    std::fputs(charset.get_LastErrorText().c_str(), stderr);
    return 1;
  }
  std::fputc('\n', stderr);
  return 0;
}
