// What an application does first with the library. Each consumer project builds this one file.

#include <zantrel/zantrel.h>

#include <cstdio>
#include <string>

int main() {
  Zantrel::Charset charset;
  charset.put_FromCharset("windows-1251");
  charset.put_ToCharset("utf-8");
  Zantrel::Bytes out;
  const bool converted = charset.ConvertData(Zantrel::bytesOf("\xC4\xE0"), out);
  if (!converted || std::string(out.begin(), out.end()) != "\xD0\x94\xD0\xB0") {
    std::fputs(charset.get_LastErrorText().c_str(), stderr);
    return 1;
  }
  std::printf("Zantrel %s converts\n", charset.get_Version().c_str());
  return 0;
}
