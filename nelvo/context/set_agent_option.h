#pragma once

// Overrides one of the agent options (agent_options.h) by its name, and tells the default log so.
//
//   SetAgentOption(GetAgentOptions(), "NotificationTimeoutSec", "90");
//
//   Defined non-default option value : option 'NotificationTimeoutSec', value '90'.
//   Notification timeout, seconds: '90'.
//
// | Name                       | Value                        |
// |----------------------------|------------------------------|
// | DumpCorruptedTraffic       | flag; no line of its own     |
// | EnableTrafficControl       | flag; no line of its own     |
// | NetworkIdleTimeout         | hours                        |
// | RepoBusyTimeoutSec         | seconds                      |
// | CollectBackupStat          | flag                         |
// | StgOversizeGbLimit         | GiB; the line says the MiB   |
// | NotificationTimeoutSec     | seconds                      |
// | VddkVmSearchPatch          | flag                         |
// | VddkNonUniqueUuidPatch     | flag                         |
// | FsAwareItemToDeleteMinSize | bytes, in 64 bits            |
//
// A flag is read as util::ParseBool reads it, a number as util::ParseUnsignedLong does with base 10. All
// numbers but the last have 32 bits.

#include <string>

class CAgentOptions;

// The name may be in either case. An unknown one is a warning in the log and changes nothing. A value that
// begins with no number where one is wanted throws exc::runtime_exc_t, after the first line; the option stays
// as it was. Takes no lock: no other thread may use the record meanwhile.
//
// A number that has more than 32 bits, -1 among them, loses those above without a word.
// Kept: SetAgentOption.NumberLosesWhatIsAboveItsBits
//
// The limit in MiB has 32 bits too, so 4194304 GiB become 0 MiB.
// Kept: SetAgentOption.OversizeLimitLosesWhatIsAbove32Bits
void SetAgentOption(CAgentOptions& record, const std::string& name, const std::string& value);
