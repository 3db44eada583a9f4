// Looks into the record: as its friend, this program has a SetAgentOption of its own.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "nelvo/context/agent_options.h"

namespace
{

std::vector<const void*> g_places;
std::vector<bool*> g_flags;
std::vector<std::uint32_t*> g_numbers;

void NoteOne(bool& field) { g_flags.push_back(&field); }
void NoteOne(std::uint32_t& field) { g_numbers.push_back(&field); }
template <class Field>
void NoteOne(Field&)
{
}

template <class... Fields>
void Note(Fields&... fields)
{
    g_places = {&fields...};
    g_flags.clear();
    g_numbers.clear();
    (NoteOne(fields), ...);
}

} // namespace

// Tells where the fields stand, in the order in which they should, and gives those another value that are
// read in another unit.
void SetAgentOption(CAgentOptions& record, const std::string&, const std::string& value)
{
    Note(record.m_text_01, record.m_dump_corrupted_traffic, record.m_enable_traffic_control,
         record.m_network_idle_timeout_hours, record.m_repo_busy_timeout_sec, record.m_collect_backup_stat,
         record.m_stg_oversize_limit_mib, record.m_notification_timeout_sec, record.m_vddk_vm_search_patch,
         record.m_vddk_non_unique_uuid_patch, record.m_fs_aware_item_to_delete_min_size, record.m_flag_02,
         record.m_flag_03, record.m_flag_04, record.m_flag_05, record.m_flag_06, record.m_flag_07,
         record.m_flag_08, record.m_flag_09, record.m_flag_10, record.m_flag_11, record.m_flag_12,
         record.m_flag_13, record.m_flag_14, record.m_u32_15, record.m_u32_16, record.m_flag_17,
         record.m_text_18, record.m_u32_19, record.m_max_read_length, record.m_u32_21, record.m_flag_22,
         record.m_u32_23, record.m_u32_24, record.m_u32_25, record.m_u32_26, record.m_u32_27,
         record.m_flag_28, record.m_flag_29, record.m_u32_30, record.m_u32_31, record.m_u32_32,
         record.m_u32_33, record.m_u32_34, record.m_u32_35, record.m_u32_36, record.m_u32_37, record.m_u32_38,
         record.m_u32_39, record.m_flag_40, record.m_flag_41, record.m_u32_42, record.m_u32_43,
         record.m_u32_44, record.m_u32_45, record.m_u32_46, record.m_flag_47, record.m_flag_48,
         record.m_flag_49, record.m_flag_50, record.m_u32_51, record.m_u32_52, record.m_flag_53,
         record.m_flag_54, record.m_u32_55, record.m_u32_56, record.m_flag_57, record.m_u32_58,
         record.m_u32_59, record.m_text_60, record.m_u32_61, record.m_u32_62, record.m_u32_63,
         record.m_u32_64, record.m_u32_65, record.m_u32_66, record.m_flag_67, record.m_flag_68,
         record.m_flag_69, record.m_flag_70, record.m_flag_71, record.m_u32_72, record.m_flag_73,
         record.m_flag_74, record.m_flag_75, record.m_u32_76, record.m_u32_77, record.m_u32_78,
         record.m_flag_79, record.m_u32_80, record.m_u32_81);
    record.m_repo_busy_timeout_sec = record.m_u32_32 = static_cast<std::uint32_t>(std::stoul(value));
}

TEST(AgentOptionsRecord, FieldsStandInTheirOrder)
{
    CAgentOptions record;
    SetAgentOption(record, "", "0");
    EXPECT_EQ(91u, g_places.size());
    EXPECT_TRUE(std::is_sorted(g_places.begin(), g_places.end()));
}

TEST(AgentOptionsRecord, MillisecondsHaveMoreThan32Bits)
{
    CAgentOptions record;
    SetAgentOption(record, "", "4294967295");
    EXPECT_EQ(4294967295000U, record.GetRepoBusyTimeoutMs());
    EXPECT_EQ(371085174288000000U, record.GetU32_32Ms());
}

// No flag is read in the place of another.
TEST(AgentOptionsRecord, EachFlagIsReadByItsOwnAccessor)
{
    using record_t = CAgentOptions;
    bool (record_t::*const accessors[])() const = {&record_t::GetDumpCorruptedTraffic,
                                                   &record_t::GetEnableTrafficControl,
                                                   &record_t::GetCollectBackupStat,
                                                   &record_t::GetVddkVmSearchPatch,
                                                   &record_t::GetVddkNonUniqueUuidPatch,
                                                   &record_t::GetFlag_02,
                                                   &record_t::GetFlag_03,
                                                   &record_t::GetFlag_04,
                                                   &record_t::GetFlag_05,
                                                   &record_t::GetFlag_06,
                                                   &record_t::GetFlag_07,
                                                   &record_t::GetFlag_08,
                                                   &record_t::GetFlag_09,
                                                   &record_t::GetFlag_10,
                                                   &record_t::GetFlag_11,
                                                   &record_t::GetFlag_12,
                                                   &record_t::GetFlag_13,
                                                   &record_t::GetFlag_14,
                                                   &record_t::GetFlag_17,
                                                   &record_t::GetFlag_22,
                                                   &record_t::GetFlag_28,
                                                   &record_t::GetFlag_29,
                                                   &record_t::GetFlag_40,
                                                   &record_t::GetFlag_41,
                                                   &record_t::GetFlag_47,
                                                   &record_t::GetFlag_48,
                                                   &record_t::GetFlag_49,
                                                   &record_t::GetFlag_50,
                                                   &record_t::GetFlag_53,
                                                   &record_t::GetFlag_54,
                                                   &record_t::GetFlag_57,
                                                   &record_t::GetFlag_67,
                                                   &record_t::GetFlag_68,
                                                   &record_t::GetFlag_69,
                                                   &record_t::GetFlag_70,
                                                   &record_t::GetFlag_71,
                                                   &record_t::GetFlag_73,
                                                   &record_t::GetFlag_74,
                                                   &record_t::GetFlag_75,
                                                   &record_t::GetFlag_79};
    record_t record;
    SetAgentOption(record, "", "0");
    ASSERT_EQ(std::size(accessors), g_flags.size());
    for (bool* const flag : g_flags)
        *flag = false;
    for (std::size_t i = 0; i != std::size(accessors); ++i)
    {
        *g_flags[i] = true;
        for (std::size_t j = 0; j != std::size(accessors); ++j)
            EXPECT_EQ(i == j, (record.*accessors[j])()) << i << ' ' << j;
        *g_flags[i] = false;
    }
}

TEST(AgentOptionsRecord, EachNumberIsReadByItsOwnAccessor)
{
    using record_t = CAgentOptions;
    const std::function<std::uint64_t(const record_t&)> accessors[] = {
        &record_t::GetNetworkIdleTimeoutHours,
        [](const record_t& read) { return read.GetRepoBusyTimeoutMs() / 1000; },
        &record_t::GetStgOversizeLimitMib,
        &record_t::GetNotificationTimeoutSec,
        &record_t::GetU32_15,
        &record_t::GetU32_16,
        &record_t::GetU32_19,
        &record_t::GetMaxReadLength,
        &record_t::GetU32_21,
        &record_t::GetU32_23,
        &record_t::GetU32_24,
        &record_t::GetU32_25,
        &record_t::GetU32_26,
        &record_t::GetU32_27,
        &record_t::GetU32_30,
        &record_t::GetU32_31,
        [](const record_t& read) { return read.GetU32_32Ms() / 86400000; },
        &record_t::GetU32_33,
        &record_t::GetU32_34,
        &record_t::GetU32_35,
        &record_t::GetU32_36,
        &record_t::GetU32_37,
        &record_t::GetU32_38,
        &record_t::GetU32_39,
        &record_t::GetU32_42,
        &record_t::GetU32_43,
        &record_t::GetU32_44,
        &record_t::GetU32_45,
        &record_t::GetU32_46,
        &record_t::GetU32_51,
        &record_t::GetU32_52,
        &record_t::GetU32_55,
        &record_t::GetU32_56,
        &record_t::GetU32_58,
        &record_t::GetU32_59,
        &record_t::GetU32_61,
        &record_t::GetU32_62,
        &record_t::GetU32_63,
        &record_t::GetU32_64,
        &record_t::GetU32_65,
        &record_t::GetU32_66,
        &record_t::GetU32_72,
        &record_t::GetU32_76,
        &record_t::GetU32_77,
        &record_t::GetU32_78,
        &record_t::GetU32_80,
        &record_t::GetU32_81};
    record_t record;
    SetAgentOption(record, "", "0");
    ASSERT_EQ(std::size(accessors), g_numbers.size());
    for (std::size_t i = 0; i != std::size(accessors); ++i)
        *g_numbers[i] = static_cast<std::uint32_t>(i) + 1;
    for (std::size_t i = 0; i != std::size(accessors); ++i)
        EXPECT_EQ(i + 1, accessors[i](record)) << i;
}
