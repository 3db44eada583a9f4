#include "nelvo/crypto/secure_array.h"

#include <cstring>
#include <string>
#include <type_traits>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "tests/support/freed_memory.h"

TEST(SecureKeyBytes, StandInTheArrayThatWipes)
{
    EXPECT_TRUE((std::is_same_v<cnt::array_t<char, crypto::sec_allocator_t<char>>, crypto::secure_array_t>));
}

TEST(SecureKeyBytes, AreZeroWhenTheLastShareGoes)
{
    auto first = boost::make_shared<crypto::secure_array_t>(6);
    crypto::secure_array_ptr_t last = first;
    std::memcpy(last->data(), "secret", 6);
    first.reset();
    EXPECT_EQ("secret", std::string(last->data(), 6));
    WatchFree(last->data(), 6);
    last.reset();
    EXPECT_EQ(std::string(6, '\0'), FreedBytes());
}
