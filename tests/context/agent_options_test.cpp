#include "nelvo/context/agent_options.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

namespace
{

// Values of one type, which the comparison of two rows therefore compares too.
template <class Value, class... Values>
std::vector<Value> Row(Value first, Values... others)
{
    static_assert((std::is_same_v<Value, Values> && ...));
    return {first, others...};
}

class AgentOptions : public ::testing::Test
{
protected:
    const CAgentOptions m_options{};
};

} // namespace

static_assert(!std::is_polymorphic_v<CAgentOptions>);

TEST_F(AgentOptions, FlagsWithANameHaveTheirDefaults)
{
    EXPECT_EQ(Row(false), Row(m_options.GetDumpCorruptedTraffic()));
    EXPECT_EQ(Row(true), Row(m_options.GetEnableTrafficControl()));
    EXPECT_EQ(Row(false), Row(m_options.GetCollectBackupStat()));
    EXPECT_EQ(Row(true), Row(m_options.GetVddkVmSearchPatch()));
    EXPECT_EQ(Row(false), Row(m_options.GetVddkNonUniqueUuidPatch()));
}

TEST_F(AgentOptions, NumbersWithANameHaveTheirDefaults)
{
    EXPECT_EQ(Row(24U), Row(m_options.GetNetworkIdleTimeoutHours()));
    EXPECT_EQ(Row(15728640U), Row(m_options.GetStgOversizeLimitMib()));
    EXPECT_EQ(Row(60U), Row(m_options.GetNotificationTimeoutSec()));
    EXPECT_EQ(Row(std::uint64_t{0}), Row(m_options.GetFsAwareItemToDeleteMinSize()));
}

TEST_F(AgentOptions, SecondsAndDaysAreReadInMilliseconds)
{
    EXPECT_EQ(Row(std::uint64_t{300000}), Row(m_options.GetRepoBusyTimeoutMs()));
    EXPECT_EQ(Row(std::uint64_t{1209600000}), Row(m_options.GetU32_32Ms()));
}

TEST_F(AgentOptions, GreatestLengthToReadHasItsDefault)
{
    EXPECT_EQ(Row(524288000U), Row(m_options.GetMaxReadLength()));
}

TEST_F(AgentOptions, TextsHaveTheirDefaults)
{
    EXPECT_EQ(Row(std::wstring(L"SOFTWARE\\Nelvo\\Nelvo Suite")), Row(m_options.GetText_01()));
    EXPECT_EQ(Row(std::string("Normal")), Row(m_options.GetText_18()));
    EXPECT_EQ(Row(std::string()), Row(m_options.GetText_60()));
}

TEST_F(AgentOptions, FlagsWithoutANameHaveTheirDefaults)
{
    EXPECT_EQ(std::vector<bool>(13, false),
              Row(m_options.GetFlag_02(), m_options.GetFlag_03(), m_options.GetFlag_04(),
                  m_options.GetFlag_05(), m_options.GetFlag_06(), m_options.GetFlag_07(),
                  m_options.GetFlag_08(), m_options.GetFlag_09(), m_options.GetFlag_10(),
                  m_options.GetFlag_11(), m_options.GetFlag_12(), m_options.GetFlag_13(),
                  m_options.GetFlag_14()));
    EXPECT_EQ(Row(false), Row(m_options.GetFlag_17()));
    EXPECT_EQ(Row(false), Row(m_options.GetFlag_22()));
    EXPECT_EQ(Row(false, false), Row(m_options.GetFlag_28(), m_options.GetFlag_29()));
    EXPECT_EQ(Row(true, false), Row(m_options.GetFlag_40(), m_options.GetFlag_41()));
    EXPECT_EQ(Row(true, false, false, false), Row(m_options.GetFlag_47(), m_options.GetFlag_48(),
                                                  m_options.GetFlag_49(), m_options.GetFlag_50()));
    EXPECT_EQ(Row(false, false), Row(m_options.GetFlag_53(), m_options.GetFlag_54()));
    EXPECT_EQ(Row(false), Row(m_options.GetFlag_57()));
    EXPECT_EQ(Row(false, false, false, false, false),
              Row(m_options.GetFlag_67(), m_options.GetFlag_68(), m_options.GetFlag_69(),
                  m_options.GetFlag_70(), m_options.GetFlag_71()));
    EXPECT_EQ(Row(true, false, false),
              Row(m_options.GetFlag_73(), m_options.GetFlag_74(), m_options.GetFlag_75()));
    EXPECT_EQ(Row(false), Row(m_options.GetFlag_79()));
}

TEST_F(AgentOptions, NumbersWithoutANameHaveTheirDefaults)
{
    EXPECT_EQ(Row(20971520U, 1000U), Row(m_options.GetU32_15(), m_options.GetU32_16()));
    EXPECT_EQ(Row(0U), Row(m_options.GetU32_19()));
    EXPECT_EQ(Row(524288000U), Row(m_options.GetU32_21()));
    EXPECT_EQ(Row(4194304U, 100U, 300000U, 10U, 10000U),
              Row(m_options.GetU32_23(), m_options.GetU32_24(), m_options.GetU32_25(), m_options.GetU32_26(),
                  m_options.GetU32_27()));
    EXPECT_EQ(Row(512U, 30000U), Row(m_options.GetU32_30(), m_options.GetU32_31()));
    EXPECT_EQ(Row(1800U, 8U, 0U, 2U, 16777216U, 5120U, 2048U),
              Row(m_options.GetU32_33(), m_options.GetU32_34(), m_options.GetU32_35(), m_options.GetU32_36(),
                  m_options.GetU32_37(), m_options.GetU32_38(), m_options.GetU32_39()));
    EXPECT_EQ(Row(65536U, 2097152U, 1048576U, 3U, 134217728U),
              Row(m_options.GetU32_42(), m_options.GetU32_43(), m_options.GetU32_44(), m_options.GetU32_45(),
                  m_options.GetU32_46()));
    EXPECT_EQ(Row(5U, 100U), Row(m_options.GetU32_51(), m_options.GetU32_52()));
    EXPECT_EQ(Row(0U, 1800U), Row(m_options.GetU32_55(), m_options.GetU32_56()));
    EXPECT_EQ(Row(480U, 1814400U), Row(m_options.GetU32_58(), m_options.GetU32_59()));
    EXPECT_EQ(Row(1U, 600000U, 0U, 0U), Row(m_options.GetU32_61(), m_options.GetU32_62(),
                                            m_options.GetU32_63(), m_options.GetU32_64()));
    EXPECT_EQ(Row(1800000U, 128U), Row(m_options.GetU32_65(), m_options.GetU32_66()));
    EXPECT_EQ(Row(40U), Row(m_options.GetU32_72()));
    EXPECT_EQ(Row(0U, 0U, 0U), Row(m_options.GetU32_76(), m_options.GetU32_77(), m_options.GetU32_78()));
    EXPECT_EQ(Row(7200000U, 3600000U), Row(m_options.GetU32_80(), m_options.GetU32_81()));
}

TEST_F(AgentOptions, EveryThreadGetsTheOneRecord)
{
    std::vector<const CAgentOptions*> records(4);
    std::vector<std::thread> threads(records.size());
    for (std::size_t i = 0; i != threads.size(); ++i)
        threads[i] = std::thread([&record = records[i]] { record = &GetAgentOptions(); });
    for (auto& thread : threads)
        thread.join();

    EXPECT_EQ(std::vector<const CAgentOptions*>(4, &GetAgentOptions()), records);
    EXPECT_EQ(524288000U, GetAgentOptions().GetMaxReadLength());
}
