#pragma once
// AES as the functions AES_ENCRYPT() and AES_DECRYPT() of MySQL servers compute it in their default
// mode aes-128-ecb: the password's bytes are folded into 16 by exclusive-or, and the text is padded
// by one to 16 bytes that count themselves, an empty text too. ECB shows which blocks of a text are
// alike: for exchange with such servers only.

#include "core/bytes.h"

namespace zantrel {

class DataBuffer;
class LogBase;

/// Appends the result; false, the reason being logged, when there is no memory for it.
bool mysqlAesEncrypt(ByteSpan text, ByteSpan password, DataBuffer& out, LogBase& log);
/// The reverse. Fails, unlike the ciphers, where the server answers NULL: when the data is not a
/// whole number of blocks or the padding is not what encryption writes. `out` is then as it was.
bool mysqlAesDecrypt(ByteSpan data, ByteSpan password, DataBuffer& out, LogBase& log);

}  // namespace zantrel
