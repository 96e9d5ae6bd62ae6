#pragma once
// The key material that old data made of a pass phrase: MD5 of its bytes, followed by MD5 of their
// base64 text without line breaks. One fast digest without a salt stops nobody who guesses: keys
// for new data come from PBKDF2 (pbkdf.h).

#include "core/bytes.h"
#include "crypto/cipher_key.h"

namespace zantrel {

using PassPhraseKey = SecretBytes<32>;

/// False only when there is no memory for the base64 text.
bool passPhraseKey(ByteSpan passPhrase, PassPhraseKey& key);

}  // namespace zantrel
