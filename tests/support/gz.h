#pragma once

// Archives as the system's gzip sees them.

#include <string>

// The text in an archive; fails the test if gzip finds fault with it.
std::string Unpack(const std::string& path);

// Bytes that cannot be packed, the same for the same seed.
std::string Noise(std::size_t size, unsigned seed = 1);
