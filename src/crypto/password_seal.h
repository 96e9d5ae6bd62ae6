#pragma once
// Bytes encrypted with a password, so that a wrong password and any change are noticed.
//
// PBKDF2 (RFC 8018) with HMAC-SHA-512 and 200000 iterations makes two keys of password and salt:
// one for AES-256 in CBC with counted padding, one for HMAC-SHA-256 over all that stands before the
// code. The result is a byte 1, the salt of 16 bytes, the IV of 16, the encrypted bytes (none for
// none) and the code of 32. Salt and IV are fresh random bytes each time. Making the keys takes
// about a tenth of a second, deliberately: so does each guess of somebody who tries passwords.

#include <cstddef>

#include "core/bytes.h"

namespace zantrel {

class DataBuffer;
class LogBase;

/// Appends the bytes in their sealed form. False, the reason being logged, for an empty password.
bool sealWithPassword(ByteSpan in, ByteSpan password, DataBuffer& out, LogBase& log);

/// Appends what was sealed. False, with nothing appended and the reason logged, for another
/// password and for bytes that are not exactly what sealWithPassword() made.
bool openWithPassword(ByteSpan in, ByteSpan password, DataBuffer& out, LogBase& log);

}  // namespace zantrel
