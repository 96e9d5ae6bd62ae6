#include "crypto/pass_phrase_key.h"

#include "core/data_buffer.h"
#include "core/encode/base64.h"
#include "crypto/md5.h"

namespace zantrel {

bool passPhraseKey(ByteSpan passPhrase, PassPhraseKey& key) {
  DataBuffer text;
  const std::size_t size = base64EncodedSize(passPhrase.size());
  std::uint8_t* const room = text.prepare(size);
  if (room == nullptr) return false;
  text.commit(base64Encode(passPhrase, reinterpret_cast<char*>(room)));
  BlockHash<Md5State>::digest(passPhrase, key.bytes.data());
  BlockHash<Md5State>::digest(text.bytes(), key.bytes.data() + 16);
  key.size = key.bytes.size();
  text.secureClear();
  return true;
}

}  // namespace zantrel
