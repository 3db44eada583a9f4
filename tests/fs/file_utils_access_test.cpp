#include <cstdlib>
#include <string>
#include <unistd.h>
#include <vector>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "nelvo/context/path_access.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/core/util/str.h"
#include "nelvo/fs/file_aging.h"
#include "nelvo/fs/file_flags.h"
#include "nelvo/fs/file_info.h"
#include "nelvo/fs/file_security.h"
#include "nelvo/fs/file_utils.h"
#include "nelvo/fs/free_space.h"
#include "nelvo/fs/path_utils.h"
#include "nelvo/fs/posix_file_security.h"
#include "nelvo/logging/log.h"
#include "tests/fs/child.h"
#include "tests/support/lines_receiver.h"
#include "tests/support/temp_folder.h"
#include "tests/support/thrown.h"

namespace
{

std::vector<std::string> g_asked;
std::string g_refused;

} // namespace

namespace security
{

void CheckPathAccess(const util::str_t& path)
{
    g_asked.push_back(path.narrow());
    if (path.narrow() == g_refused)
        throw exc::runtime_exc_t("refused");
}

} // namespace security

namespace
{

class AccessOrder : public testing::Test
{
protected:
    // The paths below the folder that the call asks about, in order, each followed by a blank. Whether the
    // call fails is no matter.
    template <class Call>
    std::string Asked(Call call)
    {
        g_asked.clear();
        try
        {
            call();
        }
        catch (const std::exception&)
        {
        }
        std::string text;
        for (const std::string& path : g_asked)
        {
            if (path.rfind(m_folder / "", 0) == 0)
                text += path.substr(m_folder.path().size() + 1) + " ";
        }
        return text;
    }

    // The text with which the call fails if the path is refused.
    template <class Call>
    static std::string Refused(const std::string& path, Call call)
    {
        g_refused = path;
        std::string text = Thrown<exc::runtime_exc_t>(call);
        g_refused.clear();
        return text;
    }

    using asked_t = std::vector<std::string>;

    temp_folder_t m_folder;
    const std::string m_a = m_folder / "a";
    const std::string m_b = m_folder / "b";
    const std::wstring m_wide_a{m_a.begin(), m_a.end()};
    const std::wstring m_wide_b{m_b.begin(), m_b.end()};
    std::string m_volume;
};

} // namespace

TEST_F(AccessOrder, OnePathIsAskedAboutOnce)
{
    EXPECT_EQ("a ", Asked([&] { util::ExistsByStat(m_a); }));
    EXPECT_EQ("a ", Asked([&] { util::ExistsByStat(m_wide_a); }));
    EXPECT_EQ("a ", Asked([&] { util::ExistsByLstat(m_a); }));
    EXPECT_EQ("a ", Asked([&] { util::FileExists(m_a); }));
    EXPECT_EQ("a ", Asked([&] { util::FileExists(m_wide_a); }));
    EXPECT_EQ("a ", Asked([&] { util::fs_short_stat(m_a); }));
    EXPECT_EQ("a ", Asked([&] { util::GetDeviceId(m_a); }));
    EXPECT_EQ("a ", Asked([&] { util::RemoveFile(m_a); }));
    EXPECT_EQ("a ", Asked([&] { util::CheckFreeSpace(m_a, 0); }));
    EXPECT_EQ("a ", Asked([&] { util::GetFreeSpace(m_a); }));
    EXPECT_EQ("a ", Asked([&] { util::SetImmutable(m_a, false); }));
    EXPECT_EQ("a ", Asked([&] { util::SetNoCow(m_a, false); }));
    EXPECT_EQ("a ", Asked([&] { util::CreateEmptyFile(m_a); }));
    EXPECT_EQ("a ", Asked([&] { util::CreateEmptyFile(m_wide_a); }));
    EXPECT_EQ("a ", Asked([&] { util::OpenForAppendOrCreate(m_wide_a); }));
    EXPECT_EQ("b ", Asked([&] { util::CreateDirectory(m_b); }));
}

TEST_F(AccessOrder, TwoPathsAreAskedAboutInTheirOrder)
{
    EXPECT_EQ("a b ", Asked([&] { util::CreateSymlink(m_a, m_b); }));
    EXPECT_EQ("b a ", Asked([&] { util::RenameFile(m_a, m_b); }));
    EXPECT_EQ("a b ", Asked([&] { util::CopyFile(m_a, m_b, true); }));
    EXPECT_EQ("a b ", Asked([&] { util::CopyFile(m_wide_a, m_wide_b, true); }));
    WriteFile(m_a, "");
    EXPECT_EQ("a b ", Asked([&] { util::IsSameDevice(m_a, m_b); }));
}

TEST_F(AccessOrder, StepsOfAnOperationAskAgain)
{
    EXPECT_EQ("c/d/e c c c/d c/d ", Asked([&] { util::CreateParentFolders(m_folder / "c/d/e"); }));
    EXPECT_EQ("a a ", Asked([&] { util::RemoveSymlink(m_a); }));
    WriteFile(m_a, "");
    EXPECT_EQ("a.1 a a.1 a ", Asked([&] { util::AgeFile(1, m_a, ".log"); }));
    InChild(
        [&]
        {
            ::setenv("HOME", m_folder.path().c_str(), 1);
            EXPECT_EQ("tmp/ tmp/ ", Asked([&] { util::GetHomeTempDir(); }));
        });
}

TEST_F(AccessOrder, TextAloneIsNotAskedAbout)
{
    EXPECT_EQ("", Asked([&] { util::IsVmfsPath(m_a, m_volume); }));
    EXPECT_EQ("", Asked([&] { util::AgedFileName(m_a, ".log", 1); }));
    EXPECT_EQ("", Asked([&] { util::ReplaceBadFileNameChars(m_a); }));
    EXPECT_EQ("", Asked([&] { util::addFilesFromDir(m_a); }));
    EXPECT_EQ("", Asked([&] { util::fs_get_volume_path_by_path(m_wide_a); }));
}

TEST_F(AccessOrder, PathUtilsAskThroughTheirTests)
{
    WriteFile(m_a, "");
    EXPECT_EQ("a ", Asked([&] { CPathUtils::Exists(m_a); }));
    EXPECT_EQ("a ", Asked([&] { CPathUtils::CreateHardLink(m_a, m_b); }));
    EXPECT_EQ("a b ", Asked([&] { CPathUtils::Rename(m_a, m_b); }));
    EXPECT_EQ("a c/d c ", Asked([&] { CPathUtils::Copy(m_a, m_folder / "c/d"); }));
    EXPECT_EQ("e/f e ", Asked([&] { CPathUtils::CreateDir(m_folder / "e/f", true, 755); }));
}

TEST_F(AccessOrder, InfoOfAFileIsAskedForOnce)
{
    WriteFile(m_a, "");
    EXPECT_EQ(0, ::symlink("a", m_b.c_str()));
    EXPECT_EQ("a ", Asked([&] { util::GetFileInfo(m_a, true); }));
    EXPECT_EQ("a ", Asked([&] { CPathUtils::GetInfo(m_a); }));
    EXPECT_EQ("a ", Asked([&] { CPathUtils::GetType(m_a); }));
    EXPECT_EQ("a ", Asked([&] { CPathUtils::IsFile(m_a); }));
    EXPECT_EQ("a ", Asked([&] { CPathUtils::IsDir(m_a); }));
    EXPECT_EQ("a ", Asked([&] { CPathUtils::IsLink(m_a); }));
    EXPECT_EQ("b ", Asked([&] { CPathUtils::GetRealPath(m_b); }));
}

TEST_F(AccessOrder, RefusalOfAFileWhoseTypeIsWantedGetsEachContext)
{
    EXPECT_EQ("refused\nCPathUtils: Failed to check whether [" + m_a +
                  "] exists.\nCan't get info for file [" + m_a + "].\nCPathUtils: Failed to get type of [" +
                  m_a + "].",
              Refused(m_a, [&] { CPathUtils::GetType(m_a); }));
}

TEST_F(AccessOrder, RecordsAloneAskNothing)
{
    WriteFile(m_a, "");
    EXPECT_EQ("", Asked([&] { util::ReadFileInfo(m_a); }));
    EXPECT_EQ("", Asked([&] { util::ApplyFileInfo({}, m_a); }));
    EXPECT_EQ("", Asked([&] { util::ApplyFileMeta(util::ReadFileInfo(m_a).meta, m_a); }));
    EXPECT_EQ("", Asked([&] { posix::posix_file_security::ReadFromFile(m_a)->ApplyToFile(m_a); }));
}

TEST_F(AccessOrder, LinksAndDeletionOfPathUtilsAskNothing)
{
    EXPECT_EQ("", Asked([&] { CPathUtils::CreateSymLink(m_a, m_b); }));
    EXPECT_EQ("", Asked([&] { CPathUtils::ReadLink(m_b); }));
    EXPECT_EQ("", Asked([&] { CPathUtils::Delete(m_b); }));
    EXPECT_EQ("", Asked([&] { CPathUtils::Rename(m_a, m_a); }));
}

TEST_F(AccessOrder, EmptyPathIsRefusedByPathUtilsBeforeAnybodyIsAsked)
{
    Asked([] { CPathUtils::Exists(""); });
    EXPECT_EQ(asked_t(), g_asked);
    Asked([] { CPathUtils::CreateDir("", true, 755); });
    EXPECT_EQ(asked_t(), g_asked);
}

TEST_F(AccessOrder, VmfsPathIsAskedAboutBeforeItsVolume)
{
    const std::string path = "/vmfs/volumes/x/y";
    const std::string volume = "/vmfs/volumes/x";
    g_asked.clear();
    EXPECT_EQ("refused", Refused(volume, [&] { util::CheckFreeSpace(path, 1); }));
    EXPECT_EQ((asked_t{path, volume}), g_asked);
    g_asked.clear();
    EXPECT_EQ("refused", Refused(path, [&] { util::CheckFreeSpace(path, 1); }));
    EXPECT_EQ(asked_t{path}, g_asked);
}

TEST_F(AccessOrder, RefusalOfAVolumeHasNoContext)
{
    g_asked.clear();
    EXPECT_EQ("refused", Refused("/vmfs/volumes/x", [] { util::CheckVmfsFreeSpace("/vmfs/volumes/x", 1); }));
    EXPECT_EQ(asked_t{"/vmfs/volumes/x"}, g_asked);
}

TEST_F(AccessOrder, PathIsAskedAboutAsFarAsTheSystemSeesIt)
{
    const std::string a = m_a + std::string("\0x", 2);
    const std::string b = m_b + std::string("\0x", 2);
    EXPECT_EQ("a ", Asked([&] { util::ExistsByStat(a); }));
    EXPECT_EQ("a ", Asked([&] { util::ExistsByStat(std::wstring(a.begin(), a.end())); }));
    EXPECT_EQ("a ", Asked([&] { util::ExistsByLstat(a); }));
    EXPECT_EQ("a ", Asked([&] { util::FileExists(a); }));
    EXPECT_EQ("a ", Asked([&] { util::fs_short_stat(a); }));
    EXPECT_EQ("a ", Asked([&] { util::GetDeviceId(a); }));
    EXPECT_EQ("a ", Asked([&] { util::CheckFreeSpace(a, 0); }));
    EXPECT_EQ("a ", Asked([&] { util::GetFreeSpace(a); }));
    EXPECT_EQ("a ", Asked([&] { CPathUtils::Exists(a); }));
    EXPECT_EQ("a b ", Asked([&] { util::CreateSymlink(a, b); }));
    EXPECT_EQ("b a ", Asked([&] { util::RenameFile(a, b); }));
    EXPECT_EQ("b a ", Asked([&] { util::CopyFile(b, a, false); }));
    EXPECT_EQ("a a ", Asked([&] { util::RemoveSymlink(a); }));
    EXPECT_EQ("a ", Asked([&] { util::RemoveFile(a); }));
    EXPECT_EQ("a ", Asked([&] { util::CreateEmptyFile(a); }));
    EXPECT_EQ("b ", Asked([&] { util::CreateDirectory(b); }));
    EXPECT_EQ("b b ", Asked([&] { util::CreateParentFolders(b + "/y"); }));
    EXPECT_EQ("refused", Refused("/vmfs/volumes/x",
                                 [] { util::CheckVmfsFreeSpace(std::string("/vmfs/volumes/x\0y", 17), 1); }));
}

TEST_F(AccessOrder, RefusalPassesOnAndNothingIsDone)
{
    WriteFile(m_a, "text");
    EXPECT_EQ("refused", Refused(m_a, [&] { util::RemoveFile(m_a); }));
    EXPECT_EQ("refused", Refused(m_b, [&] { util::RenameFile(m_a, m_b); }));
    EXPECT_EQ("refused", Refused(m_b, [&] { util::CopyFile(m_a, m_b, true); }));
    EXPECT_EQ("refused", Refused(m_b, [&] { util::CreateSymlink(m_a, m_b); }));
    EXPECT_EQ("refused", Refused(m_b, [&] { util::CreateDirectory(m_b); }));
    EXPECT_EQ("refused", Refused(m_a, [&] { util::RemoveSymlink(m_a); }));
    EXPECT_EQ("refused", Refused(m_a, [&] { util::CheckFreeSpace(m_a, 0); }));
    EXPECT_EQ("refused", Refused(m_b, [&] { util::CreateEmptyFile(m_b); }));
    EXPECT_EQ("refused", Refused(m_b, [&] { util::CreateEmptyFile(m_wide_b); }));
    EXPECT_EQ("refused", Refused(m_b, [&] { util::OpenForAppendOrCreate(m_wide_b); }));
    EXPECT_EQ("refused", Refused(m_a, [&] { util::SetImmutable(m_a, true); }));
    EXPECT_EQ("refused", Refused(m_a, [&] { util::SetNoCow(m_a, true); }));
    EXPECT_EQ("text", ReadFile(m_a));
    EXPECT_FALSE(util::ExistsByLstat(m_b));
}

TEST_F(AccessOrder, RefusalGetsTheContextOfTheOperation)
{
    WriteFile(m_a, "text");
    EXPECT_EQ("refused\nCPathUtils: Failed to check whether [" + m_a + "] exists.",
              Refused(m_a, [&] { CPathUtils::Exists(m_a); }));
    EXPECT_EQ("refused\nCannot age file. File path: [" + m_a + "]. Extension: [.log]. Ages limit: [0].",
              Refused(m_a, [&] { util::AgeFile(0, m_a, ".log"); }));
}

TEST_F(AccessOrder, RefusalOfAFileWhoseFlagsAreTriedIsAWarning)
{
    WriteFile(m_a, "text");
    const auto log = boost::make_shared<lines_receiver_t>();
    logging::GetProcessLog()->set_receiver(log);
    g_refused = m_a;
    EXPECT_NO_THROW(util::TrySetImmutable(m_a, true));
    EXPECT_NO_THROW(util::TrySetNoCow(m_a, false));
    g_refused.clear();
    logging::GetProcessLog()->set_receiver({});
    EXPECT_EQ("       | WARN|Unable to set IMMUTABLE file attribute\n"
              "       | >>  |refused\n"
              "       | WARN|Unable to remove NOCOW file attribute\n"
              "       | >>  |refused\n",
              WithoutHeads(log->text()));
}

TEST_F(AccessOrder, SecurityOfAFileIsAskedAboutOnce)
{
    cnt::plain_array_t buffer;
    EXPECT_EQ("a ", Asked([&] { util::GetFileSecurity(m_a, buffer); }));
    EXPECT_EQ("a ", Asked([&] { util::SetFileSecurity(m_a + std::string("\0x", 2), buffer); }));
}

TEST_F(AccessOrder, RefusalOfAFileWhoseSecurityIsWantedIsAWarning)
{
    WriteFile(m_a, "text");
    cnt::plain_array_t buffer(3);
    const auto log = boost::make_shared<lines_receiver_t>();
    logging::GetProcessLog()->set_receiver(log);
    g_refused = m_a;
    util::GetFileSecurity(m_a, buffer);
    util::SetFileSecurity(m_a, buffer);
    g_refused.clear();
    logging::GetProcessLog()->set_receiver({});
    EXPECT_TRUE(buffer.empty());
    EXPECT_EQ("       | WARN|Failed to get file security: " + m_a +
                  "\n"
                  "       | >>  |refused\n"
                  "       | WARN|Failed to set file security: " +
                  m_a +
                  "\n"
                  "       | >>  |refused\n",
              WithoutHeads(log->text()));
}
