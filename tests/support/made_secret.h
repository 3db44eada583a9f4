#pragma once

// Secrets that are made at run time, and known by how each byte follows from the one before. So they can be
// looked for without a copy of them.

#include <cstddef>

// Bytes in a row that make a secret.
constexpr std::size_t kSecretRun = 6;

// Never the byte itself, and each of all 256 once before one comes again.
inline char NextOfSecret(char byte)
{
    return static_cast<char>(static_cast<unsigned char>(byte) * 37U + 101U);
}

inline void MakeSecret(char* secret, std::size_t size)
{
    for (std::size_t i = 0; i < size; ++i)
        secret[i] = i == 0 ? 's' : NextOfSecret(secret[i - 1]);
}

// How often a part of a secret stands there.
inline std::size_t CountSecrets(const char* begin, std::size_t size)
{
    std::size_t found = 0;
    std::size_t run = 1;
    for (std::size_t i = 1; i < size; ++i)
    {
        run = begin[i] == NextOfSecret(begin[i - 1]) ? run + 1 : 1;
        if (run == kSecretRun)
            ++found;
    }
    return found;
}
