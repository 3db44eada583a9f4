#include "nelvo/context/set_agent_option.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <string_view>
#include <variant>

#include <strings.h>

#include "nelvo/context/agent_options.h"
#include "nelvo/core/util/parse.h"
#include "nelvo/logging/channels.h"

using logging::channels::default_log;

namespace
{

using field_t =
    std::variant<bool CAgentOptions::*, std::uint32_t CAgentOptions::*, std::uint64_t CAgentOptions::*>;

struct option_t
{
    const char* name;
    field_t field;
    std::string_view line; // with the new value as %1; none if empty
    unsigned shift = 0;    // of a number, to the left
};

// Stores a value in the option's field and writes its line.
class setter_t
{
public:
    setter_t(CAgentOptions& record, const option_t& option, const std::string& value)
        : m_record(record), m_option(option), m_value(value)
    {
    }

    void operator()(bool CAgentOptions::*field) const
    {
        m_record.*field = util::ParseBool(m_value);
        Tell(m_record.*field ? "enabled" : "disabled");
    }

    template <class Number>
    void operator()(Number CAgentOptions::*field) const
    {
        m_record.*field = static_cast<Number>(util::ParseUnsignedLong(m_value) << m_option.shift);
        Tell(m_record.*field);
    }

private:
    template <class Value>
    void Tell(const Value& value) const
    {
        if (!m_option.line.empty())
            default_log.info(m_option.line, value);
    }

    CAgentOptions& m_record;
    const option_t& m_option;
    const std::string& m_value;
};

} // namespace

void SetAgentOption(CAgentOptions& record, const std::string& name, const std::string& value)
{
    using record_t = CAgentOptions;
    // The line of CollectBackupStat says enabled whatever the value is.
    // Kept: SetAgentOption.BackupStatisticsAreSaidToBeEnabledEvenIfNot
    static constexpr option_t kOptions[] = {
        {"DumpCorruptedTraffic", &record_t::m_dump_corrupted_traffic, ""},
        {"EnableTrafficControl", &record_t::m_enable_traffic_control, ""},
        {"NetworkIdleTimeout", &record_t::m_network_idle_timeout_hours,
         "Traffic control timeout, hours: '%1'."},
        {"RepoBusyTimeoutSec", &record_t::m_repo_busy_timeout_sec, "Repository busy timeout, seconds: '%1'."},
        {"CollectBackupStat", &record_t::m_collect_backup_stat,
         "Perflog: collecting backup statistics: enabled."},
        {"StgOversizeGbLimit", &record_t::m_stg_oversize_limit_mib, "Storage oversize limit: '%1' MiB.", 10},
        {"NotificationTimeoutSec", &record_t::m_notification_timeout_sec,
         "Notification timeout, seconds: '%1'."},
        {"VddkVmSearchPatch", &record_t::m_vddk_vm_search_patch, "VDDK VmSearch patch: %1"},
        {"VddkNonUniqueUuidPatch", &record_t::m_vddk_non_unique_uuid_patch, "VddkNonUniqueUuidPatch: %1"},
        {"FsAwareItemToDeleteMinSize", &record_t::m_fs_aware_item_to_delete_min_size,
         "FsAware file size limit: %1"},
    };

    // The line has a blank before its colon.
    // Kept: SetAgentOption.TellsOfNameAndValueAsGiven
    default_log.info("Defined non-default option value : option '%1', value '%2'.", name, value);
    const auto* const option =
        std::find_if(std::begin(kOptions), std::end(kOptions),
                     [&name](const option_t& known) { return ::strcasecmp(name.c_str(), known.name) == 0; });
    if (option == std::end(kOptions))
        default_log.warning("Unknown agent option: '%1'.", name);
    else
        std::visit(setter_t(record, *option, value), option->field);
}
