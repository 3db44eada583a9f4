// Looks into the record: as its friend, this program has a SetAgentOption of its own.

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "nelvo/context/agent_options.h"

namespace
{

std::vector<const void*> g_places;

} // namespace

// Tells where the fields stand, in the order in which they should, and gives those another value that are
// read in another unit.
void SetAgentOption(CAgentOptions& record, const std::string&, const std::string& value)
{
    g_places = {&record.m_text_01,
                &record.m_dump_corrupted_traffic,
                &record.m_enable_traffic_control,
                &record.m_network_idle_timeout_hours,
                &record.m_repo_busy_timeout_sec,
                &record.m_collect_backup_stat,
                &record.m_stg_oversize_limit_mib,
                &record.m_notification_timeout_sec,
                &record.m_vddk_vm_search_patch,
                &record.m_vddk_non_unique_uuid_patch,
                &record.m_fs_aware_item_to_delete_min_size,
                &record.m_flag_02,
                &record.m_flag_03,
                &record.m_flag_04,
                &record.m_flag_05,
                &record.m_flag_06,
                &record.m_flag_07,
                &record.m_flag_08,
                &record.m_flag_09,
                &record.m_flag_10,
                &record.m_flag_11,
                &record.m_flag_12,
                &record.m_flag_13,
                &record.m_flag_14,
                &record.m_u32_15,
                &record.m_u32_16,
                &record.m_flag_17,
                &record.m_text_18,
                &record.m_u32_19,
                &record.m_max_read_length,
                &record.m_u32_21,
                &record.m_flag_22,
                &record.m_u32_23,
                &record.m_u32_24,
                &record.m_u32_25,
                &record.m_u32_26,
                &record.m_u32_27,
                &record.m_flag_28,
                &record.m_flag_29,
                &record.m_u32_30,
                &record.m_u32_31,
                &record.m_u32_32,
                &record.m_u32_33,
                &record.m_u32_34,
                &record.m_u32_35,
                &record.m_u32_36,
                &record.m_u32_37,
                &record.m_u32_38,
                &record.m_u32_39,
                &record.m_flag_40,
                &record.m_flag_41,
                &record.m_u32_42,
                &record.m_u32_43,
                &record.m_u32_44,
                &record.m_u32_45,
                &record.m_u32_46,
                &record.m_flag_47,
                &record.m_flag_48,
                &record.m_flag_49,
                &record.m_flag_50,
                &record.m_u32_51,
                &record.m_u32_52,
                &record.m_flag_53,
                &record.m_flag_54,
                &record.m_u32_55,
                &record.m_u32_56,
                &record.m_flag_57,
                &record.m_u32_58,
                &record.m_u32_59,
                &record.m_text_60,
                &record.m_u32_61,
                &record.m_u32_62,
                &record.m_u32_63,
                &record.m_u32_64,
                &record.m_u32_65,
                &record.m_u32_66,
                &record.m_flag_67,
                &record.m_flag_68,
                &record.m_flag_69,
                &record.m_flag_70,
                &record.m_flag_71,
                &record.m_u32_72,
                &record.m_flag_73,
                &record.m_flag_74,
                &record.m_flag_75,
                &record.m_u32_76,
                &record.m_u32_77,
                &record.m_u32_78,
                &record.m_flag_79,
                &record.m_u32_80,
                &record.m_u32_81};
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
