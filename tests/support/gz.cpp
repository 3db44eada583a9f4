#include "tests/support/gz.h"

#include <array>
#include <cstdio>
#include <random>

#include <gtest/gtest.h>

std::string Unpack(const std::string& path)
{
    FILE* const pipe = ::popen(("gzip -dc < '" + path + "'").c_str(), "r");
    if (pipe == nullptr)
    {
        ADD_FAILURE() << "no gzip";
        return {};
    }
    std::string text;
    std::array<char, 65536> piece{};
    for (std::size_t count = 0; (count = std::fread(piece.data(), 1, piece.size(), pipe)) != 0;)
        text.append(piece.data(), count);
    EXPECT_EQ(0, ::pclose(pipe)) << path;
    return text;
}

std::string Noise(std::size_t size, unsigned seed)
{
    std::minstd_rand generator(seed);
    std::string bytes(size, '\0');
    for (char& byte : bytes)
        byte = static_cast<char>(generator() >> 8);
    return bytes;
}
