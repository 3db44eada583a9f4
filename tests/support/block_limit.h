#pragma once

// Memory of which no large piece is there. A program that uses this is linked with -Wl,--wrap=calloc, by
// which byte arrays are allocated.

#include <cstddef>

// From now on calloc has no block of more bytes.
void LimitBlocks(std::size_t most);
