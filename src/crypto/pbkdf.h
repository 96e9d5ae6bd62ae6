#pragma once
// Keys from passwords: PBKDF1 and PBKDF2 (RFC 8018, sections 5.1 and 5.2).
//
// A hash is named by its number; one that Hash::doHash does not compute means SHA-1, as for HMAC.
// The HMAC of PBKDF2 is the standard's for SHA-384 too: a derived key is of use only if others
// derive the same.

#include <cstdint>
#include <span>

#include "core/bytes.h"

namespace zantrel {

class LogBase;

/// Fills `key`, which may be at most as long as the digest. False, the reason being logged, for a
/// longer one and for fewer than one iteration.
bool pbkdf1(int hashId, ByteSpan password, ByteSpan salt, int iterations,
            std::span<std::uint8_t> key, LogBase& log);

/// Fills `key`, of any length. False, the reason being logged, for fewer than one iteration.
bool pbkdf2(int hashId, ByteSpan password, ByteSpan salt, int iterations,
            std::span<std::uint8_t> key, LogBase& log);

}  // namespace zantrel
