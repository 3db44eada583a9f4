#include "nelvo/context/set_agent_option.h"

#include <string>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "nelvo/context/agent_options.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/logging/log.h"
#include "tests/support/lines_receiver.h"

namespace
{

class SetAgentOption : public ::testing::Test
{
protected:
    SetAgentOption() { logging::GetProcessLog()->set_receiver(m_receiver); }
    ~SetAgentOption() override { logging::GetProcessLog()->set_receiver({}); }

    // What is written meanwhile behind the first line, which must be as it always is.
    std::string LinesOf(const std::string& name, const std::string& value)
    {
        const std::size_t before = m_receiver->text().size();
        ::SetAgentOption(m_options, name, value);
        return WithoutFirstLine(m_receiver->text().substr(before), name, value);
    }

    // What is written and thrown.
    std::string FailureOf(const std::string& name, const std::string& value)
    {
        const std::size_t before = m_receiver->text().size();
        try
        {
            ::SetAgentOption(m_options, name, value);
        }
        catch (const exc::runtime_exc_t& e)
        {
            return WithoutFirstLine(m_receiver->text().substr(before), name, value) + e.GetPlainText();
        }
        return "no failure";
    }

    boost::shared_ptr<lines_receiver_t> m_receiver = boost::make_shared<lines_receiver_t>();
    CAgentOptions m_options;

private:
    static std::string WithoutFirstLine(const std::string& text, const std::string& name,
                                        const std::string& value)
    {
        const std::string first = " severity 2 indent 0: Defined non-default option value : option '" + name +
                                  "', value '" + value + "'.\n";
        EXPECT_EQ(first, text.substr(0, first.size()));
        return text.substr(first.size());
    }
};

} // namespace

TEST_F(SetAgentOption, TellsOfNameAndValueAsGiven)
{
    ::SetAgentOption(m_options, "dumpCORRUPTEDtraffic", " %2 ");
    EXPECT_EQ(" severity 2 indent 0: "
              "Defined non-default option value : option 'dumpCORRUPTEDtraffic', value ' %2 '.\n",
              m_receiver->text());
}

TEST_F(SetAgentOption, TrafficFlagsHaveNoLineOfTheirOwn)
{
    EXPECT_EQ("", LinesOf("DumpCorruptedTraffic", "true"));
    EXPECT_TRUE(m_options.GetDumpCorruptedTraffic());
    EXPECT_EQ("", LinesOf("EnableTrafficControl", "false"));
    EXPECT_FALSE(m_options.GetEnableTrafficControl());
}

TEST_F(SetAgentOption, NetworkIdleTimeoutIsInHours)
{
    EXPECT_EQ(" severity 2 indent 0: Traffic control timeout, hours: '48'.\n",
              LinesOf("NetworkIdleTimeout", "48"));
    EXPECT_EQ(48U, m_options.GetNetworkIdleTimeoutHours());
}

TEST_F(SetAgentOption, RepoBusyTimeoutIsInSecondsAndReadInMilliseconds)
{
    EXPECT_EQ(" severity 2 indent 0: Repository busy timeout, seconds: '7'.\n",
              LinesOf("RepoBusyTimeoutSec", "7"));
    EXPECT_EQ(7000U, m_options.GetRepoBusyTimeoutMs());
    EXPECT_EQ(" severity 2 indent 0: Repository busy timeout, seconds: '4294967295'.\n",
              LinesOf("RepoBusyTimeoutSec", "4294967295"));
    EXPECT_EQ(4294967295000U, m_options.GetRepoBusyTimeoutMs());
}

TEST_F(SetAgentOption, BackupStatisticsAreSaidToBeEnabledEvenIfNot)
{
    const std::string line = " severity 2 indent 0: Perflog: collecting backup statistics: enabled.\n";
    EXPECT_EQ(line, LinesOf("CollectBackupStat", "true"));
    EXPECT_TRUE(m_options.GetCollectBackupStat());
    EXPECT_EQ(line, LinesOf("CollectBackupStat", "false"));
    EXPECT_FALSE(m_options.GetCollectBackupStat());
}

TEST_F(SetAgentOption, OversizeLimitIsInGibAndKeptInMib)
{
    EXPECT_EQ(" severity 2 indent 0: Storage oversize limit: '2048' MiB.\n",
              LinesOf("StgOversizeGbLimit", "2"));
    EXPECT_EQ(2048U, m_options.GetStgOversizeLimitMib());
}

TEST_F(SetAgentOption, OversizeLimitLosesWhatIsAbove32Bits)
{
    EXPECT_EQ(" severity 2 indent 0: Storage oversize limit: '4294966272' MiB.\n",
              LinesOf("StgOversizeGbLimit", "4194303"));
    EXPECT_EQ(4294966272U, m_options.GetStgOversizeLimitMib());
    EXPECT_EQ(" severity 2 indent 0: Storage oversize limit: '0' MiB.\n",
              LinesOf("StgOversizeGbLimit", "4194304"));
    EXPECT_EQ(0U, m_options.GetStgOversizeLimitMib());
}

TEST_F(SetAgentOption, NotificationTimeoutIsInSeconds)
{
    EXPECT_EQ(" severity 2 indent 0: Notification timeout, seconds: '90'.\n",
              LinesOf("NotificationTimeoutSec", "90"));
    EXPECT_EQ(90U, m_options.GetNotificationTimeoutSec());
}

TEST_F(SetAgentOption, VmSearchPatchIsToldAsAWord)
{
    EXPECT_EQ(" severity 2 indent 0: VDDK VmSearch patch: disabled\n", LinesOf("VddkVmSearchPatch", "0"));
    EXPECT_FALSE(m_options.GetVddkVmSearchPatch());
    EXPECT_EQ(" severity 2 indent 0: VDDK VmSearch patch: enabled\n", LinesOf("VddkVmSearchPatch", "1"));
    EXPECT_TRUE(m_options.GetVddkVmSearchPatch());
}

TEST_F(SetAgentOption, NonUniqueUuidPatchIsToldAsAWord)
{
    EXPECT_EQ(" severity 2 indent 0: VddkNonUniqueUuidPatch: enabled\n",
              LinesOf("VddkNonUniqueUuidPatch", "TRUE"));
    EXPECT_TRUE(m_options.GetVddkNonUniqueUuidPatch());
    EXPECT_EQ(" severity 2 indent 0: VddkNonUniqueUuidPatch: disabled\n",
              LinesOf("VddkNonUniqueUuidPatch", "FALSE"));
    EXPECT_FALSE(m_options.GetVddkNonUniqueUuidPatch());
}

TEST_F(SetAgentOption, SmallestItemToDeleteHas64Bits)
{
    EXPECT_EQ(" severity 2 indent 0: FsAware file size limit: 18446744073709551615\n",
              LinesOf("FsAwareItemToDeleteMinSize", "18446744073709551615"));
    EXPECT_EQ(18446744073709551615U, m_options.GetFsAwareItemToDeleteMinSize());
}

TEST_F(SetAgentOption, NameMayBeInEitherCase)
{
    LinesOf("NETWORKidleTIMEOUT", "1");
    EXPECT_EQ(1U, m_options.GetNetworkIdleTimeoutHours());
}

TEST_F(SetAgentOption, UnknownNameIsAWarning)
{
    for (const std::string name :
         {"", "NetworkIdleTimeou", "NetworkIdleTimeoutS", " NetworkIdleTimeout", "%1"})
        EXPECT_EQ(" severity 3 indent 0: Unknown agent option: '" + name + "'.\n", LinesOf(name, "x"));
    EXPECT_EQ(24U, m_options.GetNetworkIdleTimeoutHours());
}

TEST_F(SetAgentOption, NumberThatIsNoneThrowsBehindTheFirstLineAndChangesNothing)
{
    for (const char* name : {"NetworkIdleTimeout", "RepoBusyTimeoutSec", "StgOversizeGbLimit",
                             "NotificationTimeoutSec", "FsAwareItemToDeleteMinSize"})
    {
        EXPECT_EQ("Cannot convert string value to unsigned integer. Given string: [soon].",
                  FailureOf(name, "soon"));
        EXPECT_EQ("Cannot convert string value to unsigned integer. Given string: [].", FailureOf(name, ""));
    }
    EXPECT_EQ(24U, m_options.GetNetworkIdleTimeoutHours());
    EXPECT_EQ(300000U, m_options.GetRepoBusyTimeoutMs());
    EXPECT_EQ(15728640U, m_options.GetStgOversizeLimitMib());
    EXPECT_EQ(60U, m_options.GetNotificationTimeoutSec());
    EXPECT_EQ(0U, m_options.GetFsAwareItemToDeleteMinSize());
}

TEST_F(SetAgentOption, NumberIsReadInBaseTenUpToWhatIsNone)
{
    EXPECT_EQ(" severity 2 indent 0: Notification timeout, seconds: '12'.\n",
              LinesOf("NotificationTimeoutSec", " +12abc"));
    EXPECT_EQ(12U, m_options.GetNotificationTimeoutSec());
    LinesOf("NotificationTimeoutSec", "0x10");
    EXPECT_EQ(0U, m_options.GetNotificationTimeoutSec());
    LinesOf("NotificationTimeoutSec", "010");
    EXPECT_EQ(10U, m_options.GetNotificationTimeoutSec());
}

TEST_F(SetAgentOption, NumberLosesWhatIsAboveItsBits)
{
    EXPECT_EQ(" severity 2 indent 0: Notification timeout, seconds: '4294967295'.\n",
              LinesOf("NotificationTimeoutSec", "-1"));
    EXPECT_EQ(4294967295U, m_options.GetNotificationTimeoutSec());
    EXPECT_EQ(" severity 2 indent 0: Notification timeout, seconds: '5'.\n",
              LinesOf("NotificationTimeoutSec", "4294967301"));
    EXPECT_EQ(5U, m_options.GetNotificationTimeoutSec());
}

TEST_F(SetAgentOption, FlagIsTrueForAWordThatIsNotKnown)
{
    LinesOf("VddkVmSearchPatch", "false");
    EXPECT_EQ(" severity 2 indent 0: VDDK VmSearch patch: enabled\n", LinesOf("VddkVmSearchPatch", "no"));
    EXPECT_TRUE(m_options.GetVddkVmSearchPatch());
}

TEST_F(SetAgentOption, ChangesTheRecordThatEverybodyReads)
{
    ::SetAgentOption(GetAgentOptions(), "NotificationTimeoutSec", "61");
    EXPECT_EQ(61U, GetAgentOptions().GetNotificationTimeoutSec());
    EXPECT_EQ(60U, m_options.GetNotificationTimeoutSec());
    ::SetAgentOption(GetAgentOptions(), "NotificationTimeoutSec", "60");
}
