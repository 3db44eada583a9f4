#pragma once

// A private machine for the tool: its root is a folder of the test's own, with an /etc, /sys, /tmp and PATH
// that hold only what the test puts there, beside the real /usr (read-only) and /proc. No firmware can be
// read, and no dmidecode is found, unless the test provides one. The machine's files stay between runs and
// can be looked at; paths are given as the tool sees them.
//
//   machine_t machine;
//   machine.AgentFile("{...}");
//   EXPECT_THAT(machine.Run({"--log", "/tmp/x.log"}), Prints("{...}\n"));
//
// The tool starts in the empty folder /work, as root, with the umask 022.

#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "tests/run/private_process.h"
#include "tests/run/smbios_table.h"
#include "tests/support/temp_folder.h"

class machine_t
{
public:
    using stream_t = private_process_t::stream_t;

    static constexpr uid_t kNobody = 65534;

    machine_t();

    // The three sources.
    void AgentFile(const std::string& text);
    void Sysfs(const std::string& text);
    void DmidecodePrints(const std::string& bytes); // every byte as it is; what grep lets through counts

    // A shell script in the place of dmidecode, and of grep.
    void Dmidecode(const std::string& script);
    void Grep(const std::string& script);
    void GrepPrints(const std::string& bytes);

    // The real dmidecode, reading this table.
    void Firmware(const smbios_table_t& table);

    // Anything else that stands on the machine. File creates the folders above its path.
    void File(const std::string& path, const std::string& text);
    void HugeFile(const std::string& path, const std::string& head, off_t size); // zero bytes after the head
    void Folder(const std::string& path);
    void Link(const std::string& path, const std::string& target);
    void Socket(const std::string& path);
    void Remove(const std::string& path);
    void SetMode(const std::string& path, mode_t mode);
    void ReadOnlyFolder(const std::string& path);
    void FullDisk(const std::string& path); // a folder whose disk has no block left; each run has a new one
    void NoShell();

    // How the tool is started from now on.
    void StartAs(const std::string& name) { m_name = name; } // argv[0]
    void StartAsNobody() { m_process.user = kNobody; }
    void StartWithRealUser(uid_t user) { m_process.real_user = user; } // beside the effective one
    void ObeyFileModes() { m_process.obeys_file_modes = true; }        // root, as containers have it
    void SetSearchPath(const std::string& path);
    void SetUmask(mode_t umask) { m_process.umask = umask; }
    void StandardInput(stream_t stream) { m_process.streams[0] = stream; }
    void StandardOutput(stream_t stream) { m_process.streams[1] = stream; }
    void StandardError(stream_t stream) { m_process.streams[2] = stream; }

    run_t Run(const std::vector<std::string>& options = {});

    // A shell script on this machine, with the tool in the PATH as nelvoagentid.
    run_t Shell(const std::string& script);

    // A run that tells the severity of each line of its log and the type of its failure: see
    // recorded_run.cpp.
    run_t RunRecorded(const std::vector<std::string>& options = {"--log", ""});

    // Asks one source, "dmidecode" or "sysfs", with the id {99999999-9999-9999-9999-999999999999} in the
    // place of its answer. Prints "found " or "not found ", and the id that then stands there.
    run_t Ask(const std::string& source);

    // Runs that run out of memory, each at another allocation: see short_of_memory.cpp. Prints what has been
    // found in the place of the agent file.
    run_t RunShortOfMemory();

    // What stands on the machine now.
    bool Exists(const std::string& path) const; // a link counts as it is
    std::string Read(const std::string& path) const;
    mode_t Mode(const std::string& path) const;

    // All there is to tell of a path: kind, mode, time of the last change and bytes, or why there is nothing.
    // For a comparison of before and after.
    std::string State(const std::string& path) const;

    // What the runs have added to the machine, sorted.
    std::vector<std::string> NewPaths() const;

private:
    // Where a path of this machine stands on the real one, where its links would lead astray: a link among
    // its folders is a std::logic_error; in FilePlace, the last name may be no link either.
    std::string Place(const std::string& path) const;
    std::string FilePlace(const std::string& path) const;

    void Bind(mount_t::kind_t kind, const std::string& path);
    void BindFile(const std::string& source, const std::string& path);
    void ShareSystem();
    void Script(const std::string& name, const std::string& script);
    std::vector<std::string> Paths() const;
    run_t StartRun(const std::string& program, const std::vector<std::string>& options);
    run_t Start(const std::string& program, const std::vector<std::string>& arguments);

    temp_folder_t m_root;
    private_process_t m_process;
    std::string m_name;
    std::vector<std::string> m_old_paths;
};

// A run is matched by all that its caller gets to see: standard output, error output and status.
testing::Matcher<const run_t&> Ends(const testing::Matcher<std::string>& out,
                                    const testing::Matcher<std::string>& err, int status);

// Status 0 and no error.
testing::Matcher<const run_t&> Prints(const testing::Matcher<std::string>& out);

// Status 1 and no output.
testing::Matcher<const run_t&> FailsWith(const testing::Matcher<std::string>& err);

// Matches the line of an id that the tool made itself: braced, lower case, version 4.
testing::Matcher<std::string> IsNewId();
