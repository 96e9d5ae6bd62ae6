#include <zantrel/zantrel.h>

#include <iostream>

int main() {
  Zantrel::Charset charset;
  charset.put_FromCharset("shift_jis");
  std::string text;
  if (charset.ConvertToUnicode(Zantrel::bytesOf("\x93\xFA\x96\x7B"), text)) std::cout << text << "\n";

  // A failure is a return value; the log tells the story.
  charset.put_ToCharset("klingon");
  Zantrel::Bytes out;
  if (!charset.ConvertData(Zantrel::bytesOf("\x93\xFA\x96\x7B"), out))
    std::cout << charset.get_LastErrorText();
}
