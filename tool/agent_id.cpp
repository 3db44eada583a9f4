#include "tool/agent_id.h"

#include <cerrno>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <memory>
#include <unistd.h>
#include <vector>

#include "nelvo/core/exc/errno_exc.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/core/util/text.h"
#include "nelvo/fs/file_utils.h"
#include "nelvo/logging/progress_scope.h"
#include "tool/agent_log.h"
#include "tool/command_line.h"

namespace
{

const char kAgentFile[] = "/etc/nelvoagentid";
const char kSysfsSource[] = "/sys/class/dmi/id/product_uuid";
const char kDmidecodeSource[] = "dmidecode 2> /dev/null | grep -i uuid";

constexpr std::size_t kUuidSize = 36;
constexpr std::size_t kBannerSize = 74;

struct pipe_closer_t
{
    void operator()(FILE* pipe) const { ::pclose(pipe); }
};

// At the end of input the one-byte buffer still holds the last byte, and it is appended again. A last line
// without a line feed therefore ends with a doubled byte and fails the test of its length.
// Kept: DmidecodeSource.LastLineWithoutLineFeedDoublesItsLastByte
std::string ReadFirstLine(FILE* pipe)
{
    std::string line;
    char byte = 0;
    while (std::feof(pipe) == 0 && std::ferror(pipe) == 0)
    {
        [[maybe_unused]] const std::size_t count = std::fread(&byte, 1, 1, pipe);
        if (byte == '\r')
            continue;
        if (byte == '\n')
            break;
        line += byte;
    }
    return line;
}

bool HasUuidDashes(const std::string& text)
{
    return text[8] == '-' && text[13] == '-' && text[18] == '-' && text[23] == '-';
}

bool TakeFirmwareId(const Guid& id, Guid& out)
{
    if (id.IsNull())
        return false;
    out = SwapGuidByteOrder(id);
    return true;
}

// What becomes of the write is not examined: the run goes on as a success, and the next one finds no id.
// Kept: AgentFile.FailedWriteIsNotNoticed
void StoreAgentId(const Guid& id)
{
    // Opening empties the file, so all memory is taken before: a run short of it leaves what was there.
    const std::string text = id.ToString();
    char buffer[64];
    std::ofstream file;
    file.rdbuf()->pubsetbuf(buffer, sizeof(buffer));
    file.open(kAgentFile, std::ios::out | std::ios::trunc);
    if (file.fail())
        throw exc::runtime_exc_t("Failed to open file [%1].", kAgentFile);
    file << text;
}

Guid MakeAndStoreAgentId()
{
    agent_log.info("Generate new nelvo agent id");
    util::CreateParentFolders(kAgentFile);
    const Guid id = Guid::Generate();
    StoreAgentId(id);
    return id;
}

void PrintAgentId(const Guid& id)
{
    std::cout << id.ToString() << std::endl;
    if (!std::cout)
        throw exc::runtime_exc_t("Failed to write agent id to standard output.");
}

} // namespace

void RunAgentIdTool(int argc, const char* const argv[])
{
    if (::geteuid() != 0)
        throw exc::runtime_exc_t("Permission denied");
    InitToolCommandLine(argc, argv);
    agent_log.detail(std::string(kBannerSize, '/'));
    agent_log.detail("name: %1", argv[0]);

    Guid id;
    if (!FindExistingAgentId(id))
        id = MakeAndStoreAgentId();
    agent_log.info("Agent id: %1", id.ToString());
    PrintAgentId(id);
}

bool FindExistingAgentId(Guid& out)
{
    progress_scope_t scope(agent_log, "Looking for existed agentId");
    if (LookUuidInFile(kAgentFile, out))
    {
        scope.close_with("Existed agentId found in agent file");
        return true;
    }
    agent_log.info("Existed agentId was not found in agent file");

    if (GetDmidecodeAgentId(out))
    {
        scope.close_with("Existed agentId found by dmidecode");
        return true;
    }
    agent_log.info("Existed agentId was not found by dmidecode");

    if (GetSysfsAgentId(out))
    {
        scope.close_with("Existed agentId found in sysfs");
        return true;
    }
    agent_log.info("Existed agentId was not found in sysfs");

    scope.close_with("Existed agentId was not found");
    return false;
}

bool LookUuidInFile(const char* path, Guid& out)
try
{
    if (!util::ExistsByStat(path))
        return false;
    out = Guid::Parse(ReadFirstFileToken(path));
    return !out.IsNull();
}
catch (std::exception& e)
{
    // The blank at the end belongs to the text.
    // Kept: RunLog.FailedLookUpEndsItsMessageInABlank
    agent_log.error_exc(e, "Failed to look uuid in file: %1 ", path);
    return false;
}

std::string ReadFirstFileToken(const std::string& path)
{
    std::ifstream file(path);
    const int error = errno;
    if (file.fail())
        throw posix::errno_exc_t("Failed to open file [%1].", path, error);
    std::string token;
    file >> token;
    return token;
}

bool GetDmidecodeAgentId(Guid& out)
{
    // NOLINTNEXTLINE(cert-env33-c): the command is fixed, and finding dmidecode is up to root's own PATH
    std::unique_ptr<FILE, pipe_closer_t> pipe(::popen(kDmidecodeSource, "r"));
    if (!pipe)
        return false;
    const std::string value = ParseDmidecodeLine(ReadFirstLine(pipe.get()));
    pipe.reset();

    if (value.size() != kUuidSize)
    {
        agent_log.warning(
            "Failed to parse system UUID: Failed to execute 'dmidecode | grep -i uuid' command.");
        return false;
    }
    if (!HasUuidDashes(value))
    {
        agent_log.warning("Failed to parse system UUID: Incorrect format of UUID string.");
        return false;
    }
    return TakeFirmwareId(Guid::Parse(value), out);
}

bool GetSysfsAgentId(Guid& out)
{
    Guid id;
    return LookUuidInFile(kSysfsSource, id) && TakeFirmwareId(id, out);
}

std::string ParseDmidecodeLine(const std::string& line)
{
    std::vector<std::string> tokens;
    util::Split(line, ":", tokens);
    return tokens.size() == 2 ? util::Trim(tokens[1], " \r\n\t") : std::string();
}
