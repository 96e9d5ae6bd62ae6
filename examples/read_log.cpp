// Every component keeps a log of its last method. After a failure it tells what was tried, with
// which values, and why it did not work.

#include <zantrel/charset.h>

#include <cstdio>

int main() {
  Zantrel::Charset charset;
  charset.put_FromCharset("utf-8");
  charset.put_ToCharset("x-klingon");

  Zantrel::Bytes converted;
  if (!charset.ConvertData(Zantrel::bytesOf("Hello"), converted)) {
    std::puts("The conversion failed. Its log says:");
    std::fputs(charset.get_LastErrorText().c_str(), stdout);
  }
  return 0;
}
