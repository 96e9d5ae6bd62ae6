#pragma once
// Stands here until its last user in this folder includes the header itself.
#include "core/byte_order.h"  // IWYU pragma: export
