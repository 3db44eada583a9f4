#include "nelvo/io/fixed_cache.h"

#include <string>

#include <gtest/gtest.h>

#include "tests/io/used_block.h"

namespace
{

class FixedCache : public ::testing::Test
{
protected:
    // Appends a text and returns what is left of it.
    std::string Append(const std::string& text)
    {
        const char* data = text.data();
        std::uint64_t count = text.size();
        m_cache.Append(data, count);
        EXPECT_EQ(text.data() + text.size(), data + count);
        return std::string(data, count);
    }

    std::string Content() const { return std::string(m_cache.GetData(), m_cache.GetUsed()); }

    fixed_cache_t m_cache{4};
};

} // namespace

TEST_F(FixedCache, HoldsThreePointersAndACount) { EXPECT_EQ(4 * sizeof(void*), sizeof(fixed_cache_t)); }

TEST_F(FixedCache, BeginsEmptyAndFilledWithZeros)
{
    EXPECT_TRUE(m_cache.IsEmpty());
    EXPECT_FALSE(m_cache.IsFull());
    EXPECT_EQ(4u, m_cache.GetSize());
    EXPECT_EQ(0u, m_cache.GetUsed());
    EXPECT_EQ(std::string(4, '\0'), std::string(m_cache.GetData(), 4));
}

TEST_F(FixedCache, MemoryThatWasUsedBeforeIsZeroToo)
{
    LeaveUsedBlock(64);
    const fixed_cache_t cache(64);
    EXPECT_EQ(std::string(64, '\0'), std::string(cache.GetData(), 64));
}

TEST_F(FixedCache, AppendsWhatFitsAndMovesTheCallerOn)
{
    EXPECT_EQ("", Append("abc"));
    EXPECT_EQ("abc", Content());
    EXPECT_FALSE(m_cache.IsEmpty());
    EXPECT_FALSE(m_cache.IsFull());

    EXPECT_EQ("ef", Append("def"));
    EXPECT_EQ("abcd", Content());
    EXPECT_TRUE(m_cache.IsFull());
}

TEST_F(FixedCache, FullTakesNothing)
{
    Append("abcd");
    EXPECT_EQ("ef", Append("ef"));
    EXPECT_EQ("abcd", Content());
}

TEST_F(FixedCache, AppendOfNothingChangesNothing)
{
    const char* data = nullptr;
    std::uint64_t count = 0;
    m_cache.Append(data, count);
    EXPECT_TRUE(m_cache.IsEmpty());
    EXPECT_EQ(nullptr, data);
}

TEST_F(FixedCache, ResetMakesItEmptyAndUsable)
{
    Append("abcd");
    m_cache.Reset();
    EXPECT_TRUE(m_cache.IsEmpty());
    EXPECT_EQ(0u, m_cache.GetUsed());
    EXPECT_EQ("abcd", std::string(m_cache.GetData(), 4));
    EXPECT_EQ("", Append("xy"));
    EXPECT_EQ("xy", Content());
}

TEST_F(FixedCache, WouldOverflowTellsWhatFits)
{
    Append("a");
    EXPECT_FALSE(m_cache.WouldOverflow(0));
    EXPECT_FALSE(m_cache.WouldOverflow(3));
    EXPECT_TRUE(m_cache.WouldOverflow(4));
    EXPECT_TRUE(m_cache.WouldOverflow(UINT64_MAX));
}

TEST_F(FixedCache, OfSizeZeroIsEmptyAndFullAndHasNoData)
{
    m_cache = fixed_cache_t(0);
    EXPECT_TRUE(m_cache.IsEmpty());
    EXPECT_TRUE(m_cache.IsFull());
    EXPECT_EQ(nullptr, m_cache.GetData());
    EXPECT_EQ("a", Append("a"));
    EXPECT_FALSE(m_cache.WouldOverflow(0));
    EXPECT_TRUE(m_cache.WouldOverflow(1));
}
