#include "tests/run/machine.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <stdexcept>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace fs = std::filesystem;

namespace
{

const char kTool[] = "/tool/nelvoagentid";
const char kAskSource[] = "/tool/ask_source";
const char kRecordedRun[] = "/tool/recorded_run";
const char kShortOfMemory[] = "/tool/short_of_memory";
const char kShell[] = "/usr/bin/sh";
const char kWorkFolder[] = "/work";
#ifdef NELVO_COUNTS
const char kCounts[] = "/counts"; // where the tool counts what it executes
#endif
const char kSearchPath[] = "/fake:/tool:/usr/bin:/bin";

// Where the tool that is tested stands on the real machine: the caller may name another.
const char* BuiltTool()
{
    const char* const named = std::getenv("NELVO_TOOL");
    return named != nullptr ? named : NELVO_TOOL;
}

// The search path first. How a sanitizer reports is the caller's choice, on the private machine too.
std::vector<std::string> Environment()
{
    std::vector<std::string> environment = {std::string("PATH=") + kSearchPath};
    for (const char* const name : {"ASAN_OPTIONS", "LSAN_OPTIONS", "TSAN_OPTIONS", "UBSAN_OPTIONS"})
    {
        if (const char* const value = std::getenv(name))
            environment.push_back(std::string(name) + "=" + value);
    }
    return environment;
}

} // namespace

machine_t::machine_t() : m_name(kTool)
{
    m_process.root = m_root.path();
    m_process.folder = kWorkFolder;
    m_process.environment = Environment();
    for (const char* const folder : {"/etc", "/sys", "/tmp", "/run", "/fake", kWorkFolder})
        Folder(folder);
    SetMode("/", 0755);
    SetMode("/tmp", 01777);
    ShareSystem();
}

void machine_t::AgentFile(const std::string& text) { File("/etc/nelvoagentid", text); }

void machine_t::Sysfs(const std::string& text) { File("/sys/class/dmi/id/product_uuid", text); }

void machine_t::DmidecodePrints(const std::string& bytes)
{
    File("/fake/dmidecode.out", bytes);
    Dmidecode("cat /fake/dmidecode.out");
}

void machine_t::Dmidecode(const std::string& script) { Script("dmidecode", script); }

void machine_t::Grep(const std::string& script) { Script("grep", script); }

void machine_t::GrepPrints(const std::string& bytes)
{
    File("/fake/grep.out", bytes);
    Grep("cat > /dev/null; cat /fake/grep.out");
}

void machine_t::Firmware(const smbios_table_t& table)
{
    File("/sys/firmware/dmi/tables/smbios_entry_point", table.EntryPoint());
    File("/sys/firmware/dmi/tables/DMI", table.Structures());
    Link("/fake/dmidecode", "/usr/sbin/dmidecode");
}

void machine_t::File(const std::string& path, const std::string& text)
{
    Folder(fs::path(path).parent_path());
    WriteFile(FilePlace(path), text);
}

void machine_t::HugeFile(const std::string& path, const std::string& head, off_t size)
{
    File(path, head);
    EXPECT_EQ(0, ::truncate(FilePlace(path).c_str(), size)) << path;
}

void machine_t::Folder(const std::string& path)
{
    std::error_code ignored;
    fs::create_directories(FilePlace(path), ignored);
    EXPECT_TRUE(fs::is_directory(FilePlace(path))) << path;
}

void machine_t::Link(const std::string& path, const std::string& target)
{
    EXPECT_EQ(0, ::symlink(target.c_str(), Place(path).c_str())) << path;
}

void machine_t::Socket(const std::string& path)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    Place(path).copy(address.sun_path, sizeof(address.sun_path) - 1);
    const int listener = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    EXPECT_EQ(0, ::bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof(address))) << path;
    ::close(listener);
}

void machine_t::Remove(const std::string& path) { EXPECT_NE(0u, fs::remove_all(Place(path))) << path; }

void machine_t::SetMode(const std::string& path, mode_t mode)
{
    EXPECT_EQ(0, ::chmod(FilePlace(path).c_str(), mode)) << path;
}

void machine_t::ReadOnlyFolder(const std::string& path)
{
    m_process.mounts.push_back({mount_t::kind_t::kReadOnlyBind, Place(path), Place(path)});
}

void machine_t::FullDisk(const std::string& path)
{
    m_process.mounts.push_back({mount_t::kind_t::kFullTmpfs, "", Place(path)});
}

void machine_t::NoShell() { Remove("/bin"); }

void machine_t::SetSearchPath(const std::string& path) { m_process.environment.front() = "PATH=" + path; }

run_t machine_t::Run(const std::vector<std::string>& options) { return StartRun(kTool, options); }

run_t machine_t::Shell(const std::string& script) { return Start(kShell, {"sh", "-c", script}); }

run_t machine_t::RunRecorded(const std::vector<std::string>& options)
{
    return StartRun(kRecordedRun, options);
}

run_t machine_t::Ask(const std::string& source) { return Start(kAskSource, {kAskSource, source}); }

run_t machine_t::RunShortOfMemory() { return Start(kShortOfMemory, {m_name}); }

bool machine_t::Exists(const std::string& path) const
{
    struct stat info = {};
    return ::lstat(Place(path).c_str(), &info) == 0;
}

std::string machine_t::Read(const std::string& path) const { return ReadFile(FilePlace(path)); }

mode_t machine_t::Mode(const std::string& path) const
{
    struct stat info = {};
    EXPECT_EQ(0, ::stat(FilePlace(path).c_str(), &info)) << path;
    return info.st_mode & 07777;
}

std::string machine_t::State(const std::string& path) const
{
    const std::string place = Place(path);
    struct stat info = {};
    if (::lstat(place.c_str(), &info) != 0)
        return std::strerror(errno);
    std::string state = std::to_string(info.st_mode) + " since " + std::to_string(info.st_mtim.tv_sec) + "." +
                        std::to_string(info.st_mtim.tv_nsec) + ": ";
    if (S_ISLNK(info.st_mode))
        state += fs::read_symlink(place).string();
    else if (S_ISREG(info.st_mode) && ::access(place.c_str(), R_OK) == 0)
        state += ReadFile(place);
    return state;
}

std::vector<std::string> machine_t::NewPaths() const
{
    const std::vector<std::string> paths = Paths();
    std::vector<std::string> added;
    std::set_difference(paths.begin(), paths.end(), m_old_paths.begin(), m_old_paths.end(),
                        std::back_inserter(added));
    return added;
}

std::string machine_t::Place(const std::string& path) const
{
    const fs::path below = fs::path(path).relative_path();
    fs::path place = m_root.path();
    for (const fs::path& name : below)
    {
        if (fs::is_symlink(place))
            throw std::logic_error(place.string() + " is a link, which leads to the real machine");
        place /= name;
    }
    return place;
}

std::string machine_t::FilePlace(const std::string& path) const
{
    return fs::path(Place(path + "/.")).parent_path();
}

void machine_t::Bind(mount_t::kind_t kind, const std::string& path)
{
    Folder(path);
    m_process.mounts.push_back({kind, path, Place(path)});
}

void machine_t::BindFile(const std::string& source, const std::string& path)
{
    File(path, "");
    m_process.mounts.push_back({mount_t::kind_t::kBind, source, Place(path)});
}

// The folders of programs and libraries are links into /usr on most systems. Of the devices only the
// harmless ones stand here: above all not /dev/mem, where dmidecode looks for the real firmware.
void machine_t::ShareSystem()
{
    Bind(mount_t::kind_t::kReadOnlyBind, "/usr");
    for (const char* const folder : {"/bin", "/lib", "/lib64"})
    {
        if (fs::is_symlink(folder))
            Link(folder, fs::read_symlink(folder));
        else if (fs::is_directory(folder))
            Bind(mount_t::kind_t::kReadOnlyBind, folder);
    }
    Bind(mount_t::kind_t::kBind, "/proc");
    for (const char* const device : {"/dev/null", "/dev/zero", "/dev/full", "/dev/urandom"})
        BindFile(device, device);
    BindFile(BuiltTool(), kTool);
    BindFile(ASK_SOURCE, kAskSource);
    BindFile(RECORDED_RUN, kRecordedRun);
    BindFile(SHORT_OF_MEMORY, kShortOfMemory);
#ifdef NELVO_COUNTS
    Folder(kCounts);
    m_process.mounts.push_back({mount_t::kind_t::kBind, NELVO_COUNTS, Place(kCounts)});
    m_process.environment.push_back(std::string("LLVM_PROFILE_FILE=") + kCounts + "/%m%c.profraw");
#endif
}

void machine_t::Script(const std::string& name, const std::string& script)
{
    File("/fake/" + name, "#!/bin/sh\n" + script + "\n");
    SetMode("/fake/" + name, 0755);
}

std::vector<std::string> machine_t::Paths() const
{
    const auto options = fs::directory_options::skip_permission_denied;
    std::vector<std::string> paths;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(m_root.path(), options))
        paths.push_back(entry.path().string().substr(m_root.path().size()));
    std::sort(paths.begin(), paths.end());
    return paths;
}

run_t machine_t::StartRun(const std::string& program, const std::vector<std::string>& options)
{
    std::vector<std::string> arguments = {m_name};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return Start(program, arguments);
}

run_t machine_t::Start(const std::string& program, const std::vector<std::string>& arguments)
{
    if (m_old_paths.empty())
        m_old_paths = Paths();
    m_process.program = program;
    m_process.arguments = arguments;
    return RunPrivately(m_process);
}

testing::Matcher<const run_t&> Ends(const testing::Matcher<std::string>& out,
                                    const testing::Matcher<std::string>& err, int status)
{
    return testing::AllOf(testing::Field("out", &run_t::out, out), testing::Field("err", &run_t::err, err),
                          testing::Field("status", &run_t::status, status));
}

testing::Matcher<const run_t&> Prints(const testing::Matcher<std::string>& out) { return Ends(out, "", 0); }

testing::Matcher<const run_t&> FailsWith(const testing::Matcher<std::string>& err)
{
    return Ends("", err, 1);
}

testing::Matcher<std::string> IsNewId()
{
    return testing::MatchesRegex(
        "\\{[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}\\}\n");
}
