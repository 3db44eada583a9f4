#include "tests/run/private_process.h"

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/syscall.h>

#include <gtest/gtest.h>

#include "tests/support/temp_folder.h"

namespace
{

private_process_t Process(const temp_folder_t& root)
{
    private_process_t process;
    process.root = root.path();
    process.folder = "/";
    process.program = "/program";
    process.arguments = {"program"};
    return process;
}

std::string Failure(const private_process_t& process)
{
    try
    {
        RunPrivately(process);
    }
    catch (const std::runtime_error& e)
    {
        return e.what();
    }
    return "none";
}

// From now on this process and its children get the error instead of the system call.
void Forbid(long system_call, int error)
{
    sock_filter steps[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<std::uint32_t>(system_call), 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | static_cast<std::uint32_t>(error)),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    const sock_fprog filter = {4, steps};
    if (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 ||
        ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) != 0)
        std::perror("prctl");
}

// In a process of its own, which ends with the failure as its error output.
[[noreturn]] void FailWithout(long system_call, int error, const private_process_t& process)
{
    Forbid(system_call, error);
    std::fputs(Failure(process).c_str(), stderr);
    std::exit(0);
}

} // namespace

TEST(PrivateProcess, NamesTheProgramThatDoesNotStart)
{
    const temp_folder_t root;
    EXPECT_EQ("No private machine: execve /program: No such file or directory", Failure(Process(root)));
}

TEST(PrivateProcess, NamesTheFolderThatIsNotMounted)
{
    const temp_folder_t root;
    private_process_t process = Process(root);
    process.mounts.push_back({mount_t::kind_t::kBind, "/", root / "absent"});

    EXPECT_EQ("No private machine: mount " + root.path() + "/absent: No such file or directory",
              Failure(process));
}

TEST(PrivateProcess, NamesTheRootThatIsNotThere)
{
    const temp_folder_t root;
    private_process_t process = Process(root);
    process.root += "/absent";

    EXPECT_EQ("No private machine: chroot " + root.path() + "/absent: No such file or directory",
              Failure(process));
}

TEST(PrivateProcess, AsksForRightsOnlyWhereTheyAreMissing)
{
    const temp_folder_t root;
    EXPECT_EXIT(FailWithout(SYS_unshare, EPERM, Process(root)), testing::ExitedWithCode(0),
                "^No private machine: unshare, which takes root or user namespaces that all users may make: "
                "Operation not permitted$");
}

TEST(PrivateProcess, TellsHowToEnterARootThatIsNoMountPoint)
{
    const temp_folder_t root;
    EXPECT_EXIT(
        FailWithout(SYS_mount, EINVAL, Process(root)), testing::ExitedWithCode(0),
        "^No private machine: mount /, which is no mount point: enter its folder by pivot_root, or bind it "
        "onto itself before chroot: Invalid argument$");
}

TEST(PrivateProcess, NamesTheCallThatAnOldKernelLacks)
{
    const temp_folder_t root;
    private_process_t process = Process(root);
    process.mounts.push_back({mount_t::kind_t::kReadOnlyBind, root.path(), root.path()});

    EXPECT_EXIT(FailWithout(SYS_mount_setattr, ENOSYS, process), testing::ExitedWithCode(0),
                "^No private machine: mount_setattr .*: Function not implemented$");
}
