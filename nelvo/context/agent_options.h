#pragma once

// The tuning values of the library: one record a process, with compiled-in defaults. Ten of its values have a
// name, by which SetAgentOption (set_agent_option.h) overrides them; nothing else ever changes. Everybody
// reads.
//
//   GetAgentOptions().GetMaxReadLength()    524288000
//
// A value with a name is read by that name; a unit in it is the unit of what is returned. A value without one
// goes by its type and its place among those without: GetU32_15 reads the 15th, an unsigned number of 32
// bits.

#include <cstdint>
#include <string>

class CAgentOptions // NOLINT(clang-analyzer-optin.performance.Padding): the order is the record's own
{
public:
    // With a name, by which SetAgentOption overrides it.
    bool GetDumpCorruptedTraffic() const { return m_dump_corrupted_traffic; }
    bool GetEnableTrafficControl() const { return m_enable_traffic_control; }
    std::uint32_t GetNetworkIdleTimeoutHours() const { return m_network_idle_timeout_hours; }
    std::uint64_t GetRepoBusyTimeoutMs() const { return std::uint64_t{m_repo_busy_timeout_sec} * 1000; }
    bool GetCollectBackupStat() const { return m_collect_backup_stat; }
    std::uint32_t GetStgOversizeLimitMib() const { return m_stg_oversize_limit_mib; }
    std::uint32_t GetNotificationTimeoutSec() const { return m_notification_timeout_sec; }
    bool GetVddkVmSearchPatch() const { return m_vddk_vm_search_patch; }
    bool GetVddkNonUniqueUuidPatch() const { return m_vddk_non_unique_uuid_patch; }
    std::uint64_t GetFsAwareItemToDeleteMinSize() const { return m_fs_aware_item_to_delete_min_size; }

    // Without a name.
    const std::wstring& GetText_01() const { return m_text_01; }
    bool GetFlag_02() const { return m_flag_02; }
    bool GetFlag_03() const { return m_flag_03; }
    bool GetFlag_04() const { return m_flag_04; }
    bool GetFlag_05() const { return m_flag_05; }
    bool GetFlag_06() const { return m_flag_06; }
    bool GetFlag_07() const { return m_flag_07; }
    bool GetFlag_08() const { return m_flag_08; }
    bool GetFlag_09() const { return m_flag_09; }
    bool GetFlag_10() const { return m_flag_10; }
    bool GetFlag_11() const { return m_flag_11; }
    bool GetFlag_12() const { return m_flag_12; }
    bool GetFlag_13() const { return m_flag_13; }
    bool GetFlag_14() const { return m_flag_14; }
    std::uint32_t GetU32_15() const { return m_u32_15; }
    std::uint32_t GetU32_16() const { return m_u32_16; }
    bool GetFlag_17() const { return m_flag_17; }
    const std::string& GetText_18() const { return m_text_18; }
    std::uint32_t GetU32_19() const { return m_u32_19; }

    // The greatest length of a text or blob, in bytes, that a CBufReader accepts.
    std::uint32_t GetMaxReadLength() const { return m_max_read_length; }

    // Without a name.
    std::uint32_t GetU32_21() const { return m_u32_21; }
    bool GetFlag_22() const { return m_flag_22; }
    std::uint32_t GetU32_23() const { return m_u32_23; }
    std::uint32_t GetU32_24() const { return m_u32_24; }
    std::uint32_t GetU32_25() const { return m_u32_25; }
    std::uint32_t GetU32_26() const { return m_u32_26; }
    std::uint32_t GetU32_27() const { return m_u32_27; }
    bool GetFlag_28() const { return m_flag_28; }
    bool GetFlag_29() const { return m_flag_29; }
    std::uint32_t GetU32_30() const { return m_u32_30; }
    std::uint32_t GetU32_31() const { return m_u32_31; }

    // Kept in days.
    std::uint64_t GetU32_32Ms() const { return std::uint64_t{m_u32_32} * 86400000; }

    // Without a name.
    std::uint32_t GetU32_33() const { return m_u32_33; }
    std::uint32_t GetU32_34() const { return m_u32_34; }
    std::uint32_t GetU32_35() const { return m_u32_35; }
    std::uint32_t GetU32_36() const { return m_u32_36; }
    std::uint32_t GetU32_37() const { return m_u32_37; }
    std::uint32_t GetU32_38() const { return m_u32_38; }
    std::uint32_t GetU32_39() const { return m_u32_39; }
    bool GetFlag_40() const { return m_flag_40; }
    bool GetFlag_41() const { return m_flag_41; }
    std::uint32_t GetU32_42() const { return m_u32_42; }
    std::uint32_t GetU32_43() const { return m_u32_43; }
    std::uint32_t GetU32_44() const { return m_u32_44; }
    std::uint32_t GetU32_45() const { return m_u32_45; }
    std::uint32_t GetU32_46() const { return m_u32_46; }
    bool GetFlag_47() const { return m_flag_47; }
    bool GetFlag_48() const { return m_flag_48; }
    bool GetFlag_49() const { return m_flag_49; }
    bool GetFlag_50() const { return m_flag_50; }
    std::uint32_t GetU32_51() const { return m_u32_51; }
    std::uint32_t GetU32_52() const { return m_u32_52; }
    bool GetFlag_53() const { return m_flag_53; }
    bool GetFlag_54() const { return m_flag_54; }
    std::uint32_t GetU32_55() const { return m_u32_55; }
    std::uint32_t GetU32_56() const { return m_u32_56; }
    bool GetFlag_57() const { return m_flag_57; }
    std::uint32_t GetU32_58() const { return m_u32_58; }
    std::uint32_t GetU32_59() const { return m_u32_59; }
    const std::string& GetText_60() const { return m_text_60; }
    std::uint32_t GetU32_61() const { return m_u32_61; }
    std::uint32_t GetU32_62() const { return m_u32_62; }
    std::uint32_t GetU32_63() const { return m_u32_63; }
    std::uint32_t GetU32_64() const { return m_u32_64; }
    std::uint32_t GetU32_65() const { return m_u32_65; }
    std::uint32_t GetU32_66() const { return m_u32_66; }
    bool GetFlag_67() const { return m_flag_67; }
    bool GetFlag_68() const { return m_flag_68; }
    bool GetFlag_69() const { return m_flag_69; }
    bool GetFlag_70() const { return m_flag_70; }
    bool GetFlag_71() const { return m_flag_71; }
    std::uint32_t GetU32_72() const { return m_u32_72; }
    bool GetFlag_73() const { return m_flag_73; }
    bool GetFlag_74() const { return m_flag_74; }
    bool GetFlag_75() const { return m_flag_75; }
    std::uint32_t GetU32_76() const { return m_u32_76; }
    std::uint32_t GetU32_77() const { return m_u32_77; }
    std::uint32_t GetU32_78() const { return m_u32_78; }
    bool GetFlag_79() const { return m_flag_79; }
    std::uint32_t GetU32_80() const { return m_u32_80; }
    std::uint32_t GetU32_81() const { return m_u32_81; }

private:
    friend void SetAgentOption(CAgentOptions& record, const std::string& name, const std::string& value);

    std::wstring m_text_01 = L"SOFTWARE\\Nelvo\\Nelvo Suite";
    bool m_dump_corrupted_traffic = false;
    bool m_enable_traffic_control = true;
    std::uint32_t m_network_idle_timeout_hours = 24;
    std::uint32_t m_repo_busy_timeout_sec = 300;
    bool m_collect_backup_stat = false;
    std::uint32_t m_stg_oversize_limit_mib = 15728640;
    std::uint32_t m_notification_timeout_sec = 60;
    bool m_vddk_vm_search_patch = true;
    bool m_vddk_non_unique_uuid_patch = false;
    std::uint64_t m_fs_aware_item_to_delete_min_size = 0;
    bool m_flag_02 = false;
    bool m_flag_03 = false;
    bool m_flag_04 = false;
    bool m_flag_05 = false;
    bool m_flag_06 = false;
    bool m_flag_07 = false;
    bool m_flag_08 = false;
    bool m_flag_09 = false;
    bool m_flag_10 = false;
    bool m_flag_11 = false;
    bool m_flag_12 = false;
    bool m_flag_13 = false;
    bool m_flag_14 = false;
    std::uint32_t m_u32_15 = 20971520;
    std::uint32_t m_u32_16 = 1000;
    bool m_flag_17 = false;
    std::string m_text_18 = "Normal";
    std::uint32_t m_u32_19 = 0;
    std::uint32_t m_max_read_length = 524288000;
    std::uint32_t m_u32_21 = 524288000;
    bool m_flag_22 = false;
    std::uint32_t m_u32_23 = 4194304;
    std::uint32_t m_u32_24 = 100;
    std::uint32_t m_u32_25 = 300000;
    std::uint32_t m_u32_26 = 10;
    std::uint32_t m_u32_27 = 10000;
    bool m_flag_28 = false;
    bool m_flag_29 = false;
    std::uint32_t m_u32_30 = 512;
    std::uint32_t m_u32_31 = 30000;
    std::uint32_t m_u32_32 = 14;
    std::uint32_t m_u32_33 = 1800;
    std::uint32_t m_u32_34 = 8;
    std::uint32_t m_u32_35 = 0;
    std::uint32_t m_u32_36 = 2;
    std::uint32_t m_u32_37 = 16777216;
    std::uint32_t m_u32_38 = 5120;
    std::uint32_t m_u32_39 = 2048;
    bool m_flag_40 = true;
    bool m_flag_41 = false;
    std::uint32_t m_u32_42 = 65536;
    std::uint32_t m_u32_43 = 2097152;
    std::uint32_t m_u32_44 = 1048576;
    std::uint32_t m_u32_45 = 3;
    std::uint32_t m_u32_46 = 134217728;
    bool m_flag_47 = true;
    bool m_flag_48 = false;
    bool m_flag_49 = false;
    bool m_flag_50 = false;
    std::uint32_t m_u32_51 = 5;
    std::uint32_t m_u32_52 = 100;
    bool m_flag_53 = false;
    bool m_flag_54 = false;
    std::uint32_t m_u32_55 = 0;
    std::uint32_t m_u32_56 = 1800;
    bool m_flag_57 = false;
    std::uint32_t m_u32_58 = 480;
    std::uint32_t m_u32_59 = 1814400;
    std::string m_text_60;
    std::uint32_t m_u32_61 = 1;
    std::uint32_t m_u32_62 = 600000;
    std::uint32_t m_u32_63 = 0;
    std::uint32_t m_u32_64 = 0;
    std::uint32_t m_u32_65 = 1800000;
    std::uint32_t m_u32_66 = 128;
    bool m_flag_67 = false;
    bool m_flag_68 = false;
    bool m_flag_69 = false;
    bool m_flag_70 = false;
    bool m_flag_71 = false;
    std::uint32_t m_u32_72 = 40;
    bool m_flag_73 = true;
    bool m_flag_74 = false;
    bool m_flag_75 = false;
    std::uint32_t m_u32_76 = 0;
    std::uint32_t m_u32_77 = 0;
    std::uint32_t m_u32_78 = 0;
    bool m_flag_79 = false;
    std::uint32_t m_u32_80 = 7200000;
    std::uint32_t m_u32_81 = 3600000;
};

// The record of this process. Built by the first call, from whatever thread, and destroyed at exit.
CAgentOptions& GetAgentOptions();
