#include "nelvo/crypto/secure_array.h"

#include <string>
#include <string_view>
#include <type_traits>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "tests/support/freed_memory.h"
#include "tests/support/made_secret.h"

TEST(SecureKeyBytes, StandInTheArrayThatWipes)
{
    EXPECT_TRUE((std::is_same_v<cnt::array_t<char, crypto::sec_allocator_t<char>>, crypto::secure_array_t>));
}

TEST(SecureKeyBytes, AreZeroWhenTheLastShareGoes)
{
    auto first = boost::make_shared<crypto::secure_array_t>(6);
    crypto::secure_array_ptr_t last = first;
    MakeSecret(last->data(), 6);
    first.reset();
    EXPECT_EQ("\x73\x04\xf9\x62\x8f\x10", std::string_view(last->data(), 6));
    WatchFree(last->data(), 6);
    last.reset();
    EXPECT_EQ(std::string(6, '\0'), FreedBytes());
}
