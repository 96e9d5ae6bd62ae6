#pragma once

#include <cstdint>

namespace zantrel {

/// Why a stream was refused; the numbers are what logs show.
enum class InflateError : std::int32_t {
  none = 0,
  blockType = 1,        ///< the reserved block type 3
  storedLength = 2,     ///< a stored block's length and its complement do not match
  tooManyCodes = 3,     ///< more than 286 literal and length or 30 distance codes are announced
  codeLengthCode = 4,   ///< the code of the code lengths is over-subscribed or incomplete
  codeLengths = 5,      ///< a repeated code length has nothing before it or goes past the last code
  noEndOfBlock = 6,     ///< a block has no code for its own end
  literalCode = 7,      ///< the literal and length code is over-subscribed or incomplete
  distanceCode = 8,     ///< the distance code is over-subscribed or incomplete
  literalSymbol = 9,    ///< bits that are no literal or length
  distanceSymbol = 10,  ///< bits that are no distance
  distanceTooFar = 11,  ///< a match begins before the start of the output
  outputLimit = 12,     ///< more output than the limit given allows
  outOfMemory = 13,     ///< no room for the output
};

}  // namespace zantrel
