#include "nelvo/fs/free_space.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <limits>
#include <sys/stat.h>
#include <unistd.h>

#include <boost/filesystem/operations.hpp>
#include <gtest/gtest.h>

#include "nelvo/core/exc/errno_exc.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "tests/fs/child.h"
#include "tests/support/private_disk.h"
#include "tests/support/temp_folder.h"
#include "tests/support/thrown.h"

namespace
{

// The volume of a path; "-" if there is none.
std::string Volume(const std::string& path)
{
    std::string volume = "untouched";
    if (util::IsVmfsPath(path, volume))
        return volume;
    EXPECT_EQ("untouched", volume);
    return "-";
}

} // namespace

TEST(IsVmfsPath, VolumeEndsBeforeTheNextSeparator)
{
    EXPECT_EQ("/vmfs/volumes/ds1", Volume("/vmfs/volumes/ds1/x/y"));
    EXPECT_EQ("/vmfs/volumes/ds1", Volume("/vmfs/volumes/ds1\\x/y"));
    EXPECT_EQ("/vmfs/volumes/ds 1", Volume("/vmfs/volumes/ds 1/"));
}

TEST(IsVmfsPath, VolumeIsTheWholePathWithoutAFurtherSeparator)
{
    EXPECT_EQ("/vmfs/volumes/ds1", Volume("/vmfs/volumes/ds1"));
    EXPECT_EQ("/vmfs/volumes/", Volume("/vmfs/volumes/"));
}

TEST(IsVmfsPath, CaseDoesNotMatterAndStays) { EXPECT_EQ("/VMFS/Volumes/ds1", Volume("/VMFS/Volumes/ds1/x")); }

TEST(IsVmfsPath, EmptyVolumeNameEndsAtTheSecondSeparator)
{
    EXPECT_EQ("/vmfs/volumes/", Volume("/vmfs/volumes//x"));
}

TEST(IsVmfsPath, OtherPathsAreNone)
{
    for (const char* path : {"", "/", "/vmfs/volumes", "/vmfs/volume/x/y/z", "x/vmfs/volumes/ds1",
                             "\\vmfs\\volumes\\ds1", "/vmfs//volumes/ds1"})
        EXPECT_EQ("-", Volume(path)) << path;
}

TEST(CheckFreeSpace, EnoughIsNoFailure)
{
    const temp_folder_t folder;
    InChild(
        [&]
        {
            const private_disk_t disk(folder.path(), 1048576);
            util::CheckFreeSpace(folder.path(), 0);
            util::CheckFreeSpace(folder.path(), 1048576);
        });
}

TEST(CheckFreeSpace, TooLittleIsToldWithGroupedNumbers)
{
    const temp_folder_t folder;
    InChild(
        [&]
        {
            const private_disk_t disk(folder.path(), 1048576);
            EXPECT_EQ("Insufficient disk space. Folder: [" + folder.path() +
                          "]. Requested space: [1,048,577]. Available free space: [1,048,576].",
                      Thrown<exc::runtime_exc_t>([&] { util::CheckFreeSpace(folder.path(), 1048577); }));
        });
}

TEST(CheckFreeSpace, LargestRequestIsTold)
{
    const temp_folder_t folder;
    InChild(
        [&]
        {
            const private_disk_t disk(folder.path(), 4096);
            EXPECT_EQ(
                "Insufficient disk space. Folder: [" + folder.path() +
                    "]. Requested space: [18,446,744,073,709,551,615]. Available free space: [4,096].",
                Thrown<exc::runtime_exc_t>(
                    [&] { util::CheckFreeSpace(folder.path(), std::numeric_limits<std::uint64_t>::max()); }));
        });
}

TEST(CheckFreeSpace, MissingPathIsToldByBoostWithoutContext)
{
    const temp_folder_t folder;
    const std::string path = folder / "none";
    EXPECT_EQ("boost::filesystem::space: No such file or directory: \"" + path + "\"",
              Thrown<boost::filesystem::filesystem_error>([&] { util::CheckFreeSpace(path, 1); }));
    EXPECT_EQ("boost::filesystem::space: No such file or directory: \"" + path + "\"",
              Thrown<boost::filesystem::filesystem_error>([&] { util::GetFreeSpace(path); }));
}

TEST(CheckFreeSpace, AnyNameStandsInItsFailureByteByByte)
{
    const temp_folder_t folder;
    for (const std::string& name : {std::string("%1 %2\n\xff"), std::string(255, 'x')})
    {
        const std::string path = folder / name;
        EXPECT_THROW(util::CheckFreeSpace(path, 1), boost::filesystem::filesystem_error);
        ASSERT_EQ(0, ::mkdir(path.c_str(), 0700));
        InChild(
            [&]
            {
                const private_disk_t disk(path, 4096);
                util::CheckFreeSpace(path, 4096);
                EXPECT_EQ(4096u, util::GetFreeSpace(path));
                EXPECT_EQ("Insufficient disk space. Folder: [" + path +
                              "]. Requested space: [4,097]. Available free space: [4,096].",
                          Thrown<exc::runtime_exc_t>([&] { util::CheckFreeSpace(path, 4097); }));
            });
    }
}

TEST(CheckFreeSpace, EmptyPathIsToldByBoost)
{
    EXPECT_EQ("boost::filesystem::space: No such file or directory",
              Thrown<boost::filesystem::filesystem_error>([] { util::CheckFreeSpace("", 0); }));
    EXPECT_EQ("boost::filesystem::space: No such file or directory",
              Thrown<boost::filesystem::filesystem_error>([] { util::GetFreeSpace(""); }));
}

TEST(GetFreeSpace, CountsBytes)
{
    const temp_folder_t folder;
    InChild(
        [&]
        {
            const private_disk_t disk(folder.path(), 1048576);
            EXPECT_EQ(1048576u, util::GetFreeSpace(folder.path()));
            WriteFile(folder / "a", "x");
            EXPECT_EQ(1044480u, util::GetFreeSpace(folder / "a"));
        });
}

namespace
{

// A host whose vmkfstools answers as told, and the streams that the script inherits.
class VmfsFreeSpace : public testing::Test
{
protected:
    static constexpr char kLabel[] = "VMFS-5.54 file system spanning 1 partitions.\n"
                                     "File system label (if any): datastore1\n"
                                     "Mode: public\n";
    static constexpr char kCapacity[] = "Capacity 1048576000 (1000 file blocks * 1048576), 4096 (0 blocks) "
                                        "avail, max supported file size 69201586814976\n";

    // Runs the body where vmkfstools exists and prints the text.
    void WithTool(const std::string& text, const std::function<void()>& body)
    {
        WriteFile(m_folder / "answer", text);
        WithHost(
            [&]
            {
                WriteFile("/usr/sbin/vmkfstools", "#!/bin/sh\nprintf '%s|' \"$@\" >'" +
                                                      (m_folder / "arguments") + "'\ncat '" +
                                                      (m_folder / "answer") + "'\n");
                std::filesystem::permissions("/usr/sbin/vmkfstools", std::filesystem::perms::all);
                body();
            });
    }

    // Runs the body where there is no vmkfstools.
    void WithHost(const std::function<void()>& body)
    {
        InChild(
            [&]
            {
                const private_disk_t tools("/usr/sbin", 1048576);
                Redirect(STDOUT_FILENO, m_folder / "output");
                Redirect(STDERR_FILENO, m_folder / "errors");
                body();
            });
    }

    // Makes a shell script the perl of this process.
    void ReplacePerl(const std::string& script)
    {
        WriteFile(m_folder / "perl", "#!/bin/sh\n" + script);
        std::filesystem::permissions(m_folder / "perl", std::filesystem::perms::all);
        ASSERT_EQ(0, ::setenv("PATH", (m_folder.path() + ":/usr/bin:/bin").c_str(), 1));
    }

    std::string Output() const { return ReadFile(m_folder / "output"); }
    std::string Errors() const { return ReadFile(m_folder / "errors"); }
    std::string Arguments() const { return ReadFile(m_folder / "arguments"); }

    temp_folder_t m_folder;
};

} // namespace

TEST_F(VmfsFreeSpace, EnoughIsSaidOnStandardOutput)
{
    WithTool(std::string(kLabel) + kCapacity,
             [] { EXPECT_TRUE(util::CheckVmfsFreeSpace("/vmfs/volumes/ds1", 4096)); });
    EXPECT_EQ("available space:4096 bytes on /vmfs/volumes/datastore1\n", Output());
    EXPECT_EQ("", Errors());
    EXPECT_EQ("-P|/vmfs/volumes/ds1|", Arguments());
}

TEST_F(VmfsFreeSpace, TooLittleIsSaidOnStandardError)
{
    WithTool(std::string(kLabel) + kCapacity,
             [] { EXPECT_FALSE(util::CheckVmfsFreeSpace("/vmfs/volumes/ds1", 4097)); });
    EXPECT_EQ("", Output());
    EXPECT_EQ(
        "Insufficient disk space on /vmfs/volumes/datastore1. Only 4096 bytes available. at -e line 1.\n",
        Errors());
}

TEST_F(VmfsFreeSpace, VolumeWithBlanksIsOneArgumentOfTheTool)
{
    WithTool(std::string(kLabel) + kCapacity,
             [] { EXPECT_TRUE(util::CheckVmfsFreeSpace("/vmfs/volumes/my ds  1", 0)); });
    EXPECT_EQ("-P|/vmfs/volumes/my ds  1|", Arguments());
}

TEST_F(VmfsFreeSpace, LargestRequestIsTooMuch)
{
    WithTool(std::string(kLabel) + kCapacity,
             [] {
                 EXPECT_FALSE(util::CheckVmfsFreeSpace("/vmfs/volumes/ds1",
                                                       std::numeric_limits<std::uint64_t>::max()));
             });
}

TEST_F(VmfsFreeSpace, MissingToolIsNotEnough)
{
    WithHost([] { EXPECT_FALSE(util::CheckVmfsFreeSpace("/vmfs/volumes/ds1", 0)); });
    EXPECT_EQ("/usr/sbin/vmkfstools doesn't exists\n", Errors());
}

TEST_F(VmfsFreeSpace, AnswerWithoutALabelIsNotEnough)
{
    WithTool(kCapacity, [] { EXPECT_FALSE(util::CheckVmfsFreeSpace("/vmfs/volumes/ds1", 0)); });
    EXPECT_EQ("vmkfstools command doesn't return necessary fields at -e line 1.\n", Errors());
}

TEST_F(VmfsFreeSpace, AnswerWithoutACapacityIsNotEnough)
{
    WithTool(kLabel, [] { EXPECT_FALSE(util::CheckVmfsFreeSpace("/vmfs/volumes/ds1", 0)); });
    EXPECT_EQ("vmkfstools command doesn't return necessary fields at -e line 1.\n", Errors());
}

TEST_F(VmfsFreeSpace, CheckOfAPathAsksForItsVolume)
{
    WithTool(
        std::string(kLabel) + kCapacity,
        []
        {
            util::CheckFreeSpace("/VMFS/volumes/ds1/backup/a", 4096);
            EXPECT_EQ(
                "Insufficient disk space. VMFS volume [/VMFS/volumes/ds1]. Requested space: [1,048,576].",
                Thrown<exc::runtime_exc_t>([]
                                           { util::CheckFreeSpace("/VMFS/volumes/ds1/backup/a", 1048576); }));
        });
    EXPECT_EQ("-P|/VMFS/volumes/ds1|", Arguments());
}

TEST_F(VmfsFreeSpace, OddVolumeStandsInTheFailureByteByByte)
{
    WithHost(
        []
        {
            EXPECT_EQ(
                "Insufficient disk space. VMFS volume [/vmfs/volumes/%1 %2\n\xff]. Requested space: [7].",
                Thrown<exc::runtime_exc_t>([] { util::CheckFreeSpace("/vmfs/volumes/%1 %2\n\xff/x", 7); }));
        });
}

TEST_F(VmfsFreeSpace, CheckTakesAMissingToolForTooLittle)
{
    WithHost(
        []
        {
            EXPECT_EQ("Insufficient disk space. VMFS volume [/vmfs/volumes/ds1]. Requested space: [0].",
                      Thrown<exc::runtime_exc_t>([] { util::CheckFreeSpace("/vmfs/volumes/ds1", 0); }));
        });
}

TEST_F(VmfsFreeSpace, PerlGetsTheScriptTheVolumeAndTheNumber)
{
    InChild(
        [&]
        {
            ReplacePerl("printf '%s|' $# \"$1\" \"$3\" \"$4\" >'" + (m_folder / "arguments") +
                        "'\nprintf %s \"$2\" >'" + (m_folder / "script") + "'\n");
            EXPECT_TRUE(
                util::CheckVmfsFreeSpace("/vmfs/volumes/ds 1", std::numeric_limits<std::uint64_t>::max()));
        });
    EXPECT_EQ("4|-e|/vmfs/volumes/ds 1|18446744073709551615|", Arguments());
    const std::string script = ReadFile(m_folder / "script");
    EXPECT_EQ(948u, script.size());
    // clang-format off
    EXPECT_EQ(R"perl(my $space=&_getVmfsDevice($ARGV[0]);if($space->{available}<$ARGV[1]){die "Insufficient disk space on $space->{mount_point}. Only $space->{available} bytes available.";}else{print "available space:$space->{available} bytes on $space->{mount_point}\n";exit 0;}sub _getVmfsDevice($){my $path=shift;my $device={};my $fstools='/usr/sbin/vmkfstools';if(!( -x $fstools)){die "$fstools doesn't exists\n";}my $fs_info=`$fstools -P \"$path\"`;foreach (split('\n', $fs_info)){if(/^File system label \(if any\):\s*(\S.*)\s*$/){$device->{mount_point}="/vmfs/volumes/$1";}if (/Capacity ([0-9]*) .*, ([0-9]*) .*avail/){$device->{mount_device}=$path;$device->{size}=$1;$device->{available}=$2;$device->{used}=$device->{size}-$device->{available};$device->{used_percents}=int($device->{used}*100/$device->{size});}}if(defined($device->{mount_point})&&defined($device->{mount_device})){return $device;}else{die "vmkfstools command doesn't return necessary fields";}})perl", script);
    // clang-format on
}

// cat begins what it says about a file with the name that it was called by.
TEST_F(VmfsFreeSpace, PerlIsCalledByItsBareName)
{
    std::filesystem::create_symlink("/bin/cat", m_folder / "perl");
    InChild(
        [&]
        {
            Redirect(STDOUT_FILENO, m_folder / "output");
            Redirect(STDERR_FILENO, m_folder / "errors");
            ASSERT_EQ(0, ::setenv("PATH", m_folder.path().c_str(), 1));
            EXPECT_FALSE(util::CheckVmfsFreeSpace("/vmfs/volumes/none", 1));
        });
    EXPECT_NE(std::string::npos, Errors().find("\nperl: /vmfs/volumes/none: No such file or directory\n"));
}

TEST_F(VmfsFreeSpace, ExitStatusOfTheScriptIsTheAnswer)
{
    InChild(
        [&]
        {
            ReplacePerl("exit 0");
            EXPECT_TRUE(util::CheckVmfsFreeSpace("/vmfs/volumes/ds1", 1));
            ReplacePerl("exit 1");
            EXPECT_FALSE(util::CheckVmfsFreeSpace("/vmfs/volumes/ds1", 1));
            ReplacePerl("exit 255");
            EXPECT_FALSE(util::CheckVmfsFreeSpace("/vmfs/volumes/ds1", 1));
        });
}

TEST_F(VmfsFreeSpace, KilledScriptIsAFailure)
{
    InChild(
        [&]
        {
            ReplacePerl("kill -KILL $$");
            EXPECT_EQ("Child was terminated by signal.\n"
                      "Failed to retrieve the amount of free space available of the VMFS volume. Volume: "
                      "[/vmfs/volumes/ds1].",
                      Thrown<exc::runtime_exc_t>([] { util::CheckVmfsFreeSpace("/vmfs/volumes/ds1", 1); }));
        });
}

TEST_F(VmfsFreeSpace, ChildThatNobodyMayWaitForIsAFailure)
{
    InChild(
        [&]
        {
            ReplacePerl("exit 0");
            std::signal(SIGCHLD, SIG_IGN);
            EXPECT_EQ("No child processes\n"
                      "waitpid() function call has failed.\n"
                      "Failed to retrieve the amount of free space available of the VMFS volume. Volume: "
                      "[/vmfs/volumes/ds1].",
                      Thrown<posix::errno_exc_t>([] { util::CheckVmfsFreeSpace("/vmfs/volumes/ds1", 1); }));
        });
}

TEST_F(VmfsFreeSpace, MissingPerlIsNotEnough)
{
    InChild(
        [&]
        {
            Redirect(STDERR_FILENO, m_folder / "errors");
            ::setenv("PATH", (m_folder / "none").c_str(), 1);
            EXPECT_FALSE(util::CheckVmfsFreeSpace("/vmfs/volumes/ds1", 1));
        });
    EXPECT_EQ("No such file or directory\nexeclp() function call has failed.\n", Errors());
}

TEST_F(VmfsFreeSpace, ChildWithoutPerlNeitherUnwindsNorRunsExitHandlers)
{
    InChild(
        [&]
        {
            Redirect(STDERR_FILENO, m_folder / "errors");
            ::setenv("PATH", (m_folder / "none").c_str(), 1);
            std::atexit([] { std::fputs("exit handler\n", stderr); });
            std::ofstream output(m_folder / "output");
            output << "written once";
            util::CheckVmfsFreeSpace("/vmfs/volumes/ds1", 1);
        });
    EXPECT_EQ("written once", Output());
    EXPECT_EQ("No such file or directory\nexeclp() function call has failed.\n", Errors());
}
