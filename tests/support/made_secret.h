#pragma once

// Secrets that are known by how each byte follows from the one before. So they can be looked for without a
// copy of them.

#include <array>
#include <cstddef>
#include <string_view>

// Bytes in a row that make a secret.
constexpr std::size_t kSecretRun = 6;

// Never the byte itself, and each of all 256 once before one comes again.
constexpr char NextOfSecret(char byte)
{
    return static_cast<char>(static_cast<unsigned char>(byte) * 37U + 101U);
}

constexpr void MakeSecret(char* secret, std::size_t size, char first = 's')
{
    for (std::size_t i = 0; i < size; ++i)
        secret[i] = i == 0 ? first : NextOfSecret(secret[i - 1]);
}

template <char First, std::size_t Size>
constexpr std::array<char, Size> MadeSecret()
{
    std::array<char, Size> secret = {};
    MakeSecret(secret.data(), Size, First);
    return secret;
}

template <char First, std::size_t Size>
constexpr std::array<char, Size> kSecretBytes = MadeSecret<First, Size>();

// A secret that is made when the test is compiled, and never stands on the heap unless it is copied there.
template <char First, std::size_t Size = 16>
constexpr std::string_view kSecret = {kSecretBytes<First, Size>.data(), Size};

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
