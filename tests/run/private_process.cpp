#include "tests/run/private_process.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <grp.h>
#include <linux/capability.h>
#include <linux/close_range.h>
#include <ostream>
#include <sched.h>
#include <stdexcept>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/private_mounts.h"

// The child makes the namespace, the mounts and the new root, and becomes the program. Until then it calls
// nothing but the system: the parent may have threads (a sanitizer's), whose locks nobody holds here. What
// stops it is told through a pipe that closes when the program starts.

namespace
{

using stream_t = private_process_t::stream_t;

class descriptor_t
{
public:
    explicit descriptor_t(int descriptor = -1) : m_descriptor(descriptor) {}
    ~descriptor_t() { Close(); }
    descriptor_t(const descriptor_t&) = delete;
    descriptor_t& operator=(const descriptor_t&) = delete;

    int Get() const { return m_descriptor; }

    void Reset(int descriptor)
    {
        Close();
        m_descriptor = descriptor;
    }

private:
    void Close() const
    {
        if (m_descriptor != -1)
            ::close(m_descriptor);
    }

    int m_descriptor;
};

std::runtime_error SystemFailure(const std::string& what)
{
    return std::runtime_error(what + ": " + std::strerror(errno));
}

// An end for standard output or error that the test can read afterwards; a file in memory never blocks.
int OpenStream(stream_t stream, bool is_input)
{
    std::array<int, 2> ends = {-1, -1};
    switch (stream)
    {
    case stream_t::kKept:
        return is_input ? ::open("/dev/null", O_RDONLY | O_CLOEXEC) : ::memfd_create("stream", MFD_CLOEXEC);
    case stream_t::kFull: return ::open("/dev/full", O_WRONLY | O_CLOEXEC);
    case stream_t::kBrokenPipe:
        if (::pipe2(ends.data(), O_CLOEXEC) == 0)
            ::close(ends[0]);
        return ends[1];
    case stream_t::kClosed: break;
    }
    return -1;
}

std::string ReadStream(int descriptor)
{
    std::string text;
    std::array<char, 65536> piece{};
    off_t offset = 0;
    for (ssize_t count = 0; (count = ::pread(descriptor, piece.data(), piece.size(), offset)) > 0;)
    {
        text.append(piece.data(), static_cast<std::size_t>(count));
        offset += count;
    }
    return text;
}

std::vector<char*> Pointers(const std::vector<std::string>& texts)
{
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (const std::string& text : texts)
        pointers.push_back(const_cast<char*>(text.c_str()));
    pointers.push_back(nullptr);
    return pointers;
}

std::string IdMap(unsigned inside, unsigned outside)
{
    return std::to_string(inside) + " " + std::to_string(outside) + " 1";
}

class child_t
{
public:
    explicit child_t(const private_process_t& process)
        : m_process(process),
          m_arguments(Pointers(process.arguments)),
          m_environment(Pointers(process.environment)),
          m_user_map(IdMap(process.user, ::geteuid())),
          m_group_map(IdMap(process.user, ::getegid()))
    {
        std::array<int, 2> ends = {-1, -1};
        if (::pipe2(ends.data(), O_CLOEXEC) != 0)
            throw SystemFailure("pipe");
        m_failure_in.Reset(ends[0]);
        m_failure_out.Reset(ends[1]);
        for (int i = 0; i < 3; ++i)
            m_streams[i].Reset(OpenStream(process.streams[i], i == STDIN_FILENO));
    }

    run_t Run()
    {
        const pid_t child = ::_Fork();
        if (child == -1)
            throw SystemFailure("fork");
        if (child == 0)
            BecomeProgram();
        m_failure_out.Reset(-1);
        const std::string failure = ReadFailure();
        run_t run;
        run.status = Wait(child);
        if (!failure.empty())
            throw std::runtime_error("No private machine: " + failure);
        run.out = ReadStream(m_streams[STDOUT_FILENO].Get());
        run.err = ReadStream(m_streams[STDERR_FILENO].Get());
        return run;
    }

private:
    [[noreturn]] void BecomeProgram() const
    {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        const bool own_users = MakeNamespace();
        MakeMounts();
        Check(::chroot(m_process.root.c_str()) == 0, "chroot ", m_process.root.c_str());
        Check(::chdir(m_process.folder.c_str()) == 0, "chdir ", m_process.folder.c_str());
        if (m_process.obeys_file_modes)
            DropFileCapabilities();
        if (!own_users)
            ChangeUser();
        else
            Check(RealUser() == m_process.user, "a real user id beside the effective one, which takes root");
        ::umask(m_process.umask);
        ::signal(SIGPIPE, SIG_DFL);
        PlaceStreams();
        ::execve(m_process.program.c_str(), m_arguments.data(), m_environment.data());
        Fail("execve ", m_process.program.c_str());
    }

    // True if the user ids of the namespace are its own.
    bool MakeNamespace() const
    {
        bool own_users = false;
        if (::unshare(CLONE_NEWNS) != 0)
        {
            Check(::unshare(CLONE_NEWNS | CLONE_NEWUSER) == 0,
                  "unshare, which takes root or user namespaces that all users may make");
            WriteText("/proc/self/setgroups", "deny");
            WriteText("/proc/self/uid_map", m_user_map);
            WriteText("/proc/self/gid_map", m_group_map);
            own_users = true;
        }
        if (const char* const failure = FailureToMakeMountsPrivate())
            Fail(failure);
        return own_users;
    }

    void MakeMounts() const
    {
        for (const mount_t& mount : m_process.mounts)
        {
            const char* const target = mount.target.c_str();
            if (mount.kind == mount_t::kind_t::kFullTmpfs)
                MountFullDisk(target);
            else
                Check(::mount(mount.source.c_str(), target, nullptr, MS_BIND | MS_REC, nullptr) == 0,
                      "mount ", target);
            if (mount.kind == mount_t::kind_t::kReadOnlyBind)
                MakeReadOnly(target);
        }
    }

    void MountFullDisk(const char* target) const
    {
        Check(::mount("tmpfs", target, "tmpfs", 0, "size=16k,mode=755") == 0, "mount ", target);
        Check(::chdir(target) == 0, "chdir ", target);
        const int filler = ::open("filler", O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
        Check(filler != -1, "open filler");
        const std::array<char, 4096> block{};
        while (::write(filler, block.data(), block.size()) > 0)
        {
        }
        Check(errno == ENOSPC, "fill a disk");
        ::close(filler);
    }

    void MakeReadOnly(const char* target) const
    {
        mount_attr attributes = {};
        attributes.attr_set = MOUNT_ATTR_RDONLY;
        Check(::mount_setattr(AT_FDCWD, target, AT_RECURSIVE, &attributes, sizeof(attributes)) == 0,
              "mount_setattr ", target);
    }

    void DropFileCapabilities() const
    {
        Check(::prctl(PR_CAPBSET_DROP, CAP_DAC_OVERRIDE) == 0, "prctl");
        Check(::prctl(PR_CAPBSET_DROP, CAP_DAC_READ_SEARCH) == 0, "prctl");
    }

    uid_t RealUser() const { return m_process.real_user.value_or(m_process.user); }

    void ChangeUser() const
    {
        const uid_t id = m_process.user;
        const uid_t real_id = RealUser();
        if (id == 0 && real_id == 0)
            return;
        Check(::setgroups(0, nullptr) == 0, "setgroups");
        Check(::setresgid(real_id, id, id) == 0, "setresgid");
        Check(::setresuid(real_id, id, id) == 0, "setresuid");
    }

    void PlaceStreams() const
    {
        for (int i = 0; i < 3; ++i)
        {
            if (m_streams[i].Get() == -1)
                ::close(i);
            else
                Check(::dup2(m_streams[i].Get(), i) == i, "dup2");
        }
        Check(::close_range(STDERR_FILENO + 1, ~0U, CLOSE_RANGE_CLOEXEC) == 0, "close_range");
    }

    void WriteText(const char* path, const std::string& text) const
    {
        const int file = ::open(path, O_WRONLY | O_CLOEXEC);
        Check(file != -1 && ::write(file, text.data(), text.size()) != -1, "write ", path);
        ::close(file);
    }

    void Check(bool good, const char* step, const char* path = "") const
    {
        if (!good)
            Fail(step, path);
    }

    [[noreturn]] void Fail(const char* step, const char* path = "") const
    {
        const char* const reason = ::strerrordesc_np(errno);
        Tell(step);
        Tell(path);
        Tell(": ");
        Tell(reason != nullptr ? reason : "unknown failure");
        ::_exit(127);
    }

    void Tell(const char* text) const
    {
        [[maybe_unused]] const ssize_t count = ::write(m_failure_out.Get(), text, std::strlen(text));
    }

    // Lasts until the program has started or the child has given up.
    std::string ReadFailure() const
    {
        std::string text;
        std::array<char, 256> piece{};
        for (ssize_t count = 0; (count = ::read(m_failure_in.Get(), piece.data(), piece.size())) > 0;)
            text.append(piece.data(), static_cast<std::size_t>(count));
        return text;
    }

    static int Wait(pid_t child)
    {
        int status = 0;
        if (::waitpid(child, &status, 0) != child)
            throw SystemFailure("waitpid");
        return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
    }

    const private_process_t& m_process;
    std::vector<char*> m_arguments;
    std::vector<char*> m_environment;
    std::string m_user_map;
    std::string m_group_map;
    descriptor_t m_failure_in;
    descriptor_t m_failure_out;
    descriptor_t m_streams[3];
};

} // namespace

void PrintTo(const run_t& run, std::ostream* out)
{
    *out << "status " << run.status << ", output\n" << run.out << "and error output\n" << run.err;
}

run_t RunPrivately(const private_process_t& process) { return child_t(process).Run(); }
