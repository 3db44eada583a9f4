#pragma once

// The identity run: what is this machine's agent id?
//
// Three places are asked in a fixed order: the agent file /etc/nelvoagentid, the output of dmidecode, and
// the firmware's UUID in sysfs. The first id wins. If there is none, a new one is generated and stored in
// the agent file, which is the only case that writes it: an id from the firmware is not stored.
//
// Firmware writes an id in record byte order, so an id from dmidecode or sysfs has the bytes of its first
// three groups reversed before it is printed. The agent file's id is printed as it stands.
//
// Each step is logged in agent_log. All of this runs on one thread.

#include <string>

#include "nelvo/core/guid.h"

// The whole run: prints the id and a line feed on standard output. Nothing is printed if it throws:
// exc::runtime_exc_t "Permission denied" if the effective user id is not 0, before anything else is done;
// what InitToolCommandLine throws; posix::errno_exc_t if a folder above the agent file cannot be made;
// exc::runtime_exc_t "Failed to open file [/etc/nelvoagentid]." if a new id cannot be stored, and "Failed
// to write agent id to standard output."
void RunAgentIdTool(int argc, const char* const argv[]);

// Asks the three sources in turn. True if out holds an id.
bool FindExistingAgentId(Guid& out);

// The id in a file: its first token, parsed by Guid::Parse and assigned to out. False if the path does not
// exist, or if the token is missing, bad or all zero. Lets no std::exception out: a failure is logged, and is
// false too. The caller needs no memory for the path.
bool LookUuidInFile(const char* path, Guid& out);

// The first token of a file, delimited by white space; empty if it has none. Throws posix::errno_exc_t with
// "Failed to open file [<path>]." if the file cannot be opened.
std::string ReadFirstFileToken(const std::string& path);

// The id that dmidecode tells (SMBIOS system information), taken from the first line of its output that
// holds the word uuid. out changes on success only.
bool GetDmidecodeAgentId(Guid& out);

// The id in /sys/class/dmi/id/product_uuid. out changes on success only.
bool GetSysfsAgentId(Guid& out);

// The trimmed value of a line "<name>: <value>"; empty if the line does not split in two at its colons.
std::string ParseDmidecodeLine(const std::string& line);
