#include <cstdlib>
#include <string>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "nelvo/context/common_lib_ctx.h"
#include "nelvo/core/util/str.h"
#include "nelvo/fs/access_permissions.h"
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
#include "tests/support/path_spy.h"

using folder_t = const temp_folder_t&;

namespace
{

std::wstring Wide(const std::string& path) { return {path.begin(), path.end()}; }

class odd_refusal_t : public security::IFilesAccessPermissions
{
public:
    void CheckAccess(const util::str_t&) override { throw 7; }
};

// The path and more behind a zero byte.
std::string Cut(const std::string& path) { return path + std::string("\0/x", 3); }

std::string Failure(const spied_call_t& call) { return SpyOnRefused(0, call).failure; }

// The lines that are logged while the first ask is refused.
std::string Log(const spied_call_t& call)
{
    const auto log = boost::make_shared<lines_receiver_t>();
    logging::GetProcessLog()->set_receiver(log);
    SpyOnRefused(0, call);
    logging::GetProcessLog()->set_receiver({});
    return WithoutHeads(log->text());
}

} // namespace

// clang-format off
TEST(FileUtilsAccess, RefusalStopsEachOperationOnOnePath)
{
    ExpectStoppedByEachRefusal({
        {"ExistsByStat", "ask a; touch a; ", [](folder_t f) { util::ExistsByStat(f / "a"); }},
        {"ExistsByStat, wide", "ask a; touch a; ", [](folder_t f) { util::ExistsByStat(Wide(f / "a")); }},
        {"ExistsByLstat", "ask a; touch a; ", [](folder_t f) { util::ExistsByLstat(f / "a"); }},
        {"FileExists", "ask a; touch a; ", [](folder_t f) { util::FileExists(f / "a"); }},
        {"FileExists, wide", "ask a; touch a; ", [](folder_t f) { util::FileExists(Wide(f / "a")); }},
        {"fs_short_stat", "ask a; touch a; ", [](folder_t f) { util::fs_short_stat(f / "a"); }},
        {"GetDeviceId", "ask a; touch a; ", [](folder_t f) { util::GetDeviceId(f / "a"); }},
        {"CreateDirectory", "ask b; touch b; ", [](folder_t f) { util::CreateDirectory(f / "b"); }},
        {"RemoveFile", "ask a; touch a; ", [](folder_t f) { util::RemoveFile(f / "a"); }},
        {"CreateEmptyFile", "ask b; touch b; ", [](folder_t f) { util::CreateEmptyFile(f / "b"); }},
        {"CreateEmptyFile, wide", "ask b; touch b; ",
         [](folder_t f) { util::CreateEmptyFile(Wide(f / "b")); }},
        {"OpenForAppendOrCreate", "ask b; touch b; ",
         [](folder_t f) { util::OpenForAppendOrCreate(Wide(f / "b")); }},
        {"CheckFreeSpace", "ask a; touch a; ", [](folder_t f) { util::CheckFreeSpace(f / "a", 0); }},
        {"GetFreeSpace", "ask a; touch a; ", [](folder_t f) { util::GetFreeSpace(f / "a"); }},
        {"SetImmutable", "ask a; touch a; ", [](folder_t f) { util::SetImmutable(f / "a", false); }},
        {"SetNoCow", "ask a; touch a; ", [](folder_t f) { util::SetNoCow(f / "a", false); }},
    });
}

TEST(FileUtilsAccess, RefusalStopsEachOperationOnTwoPathsWhicheverIsRefused)
{
    ExpectStoppedByEachRefusal({
        {"CreateSymlink", "ask b; ask a; touch b; ",
         [](folder_t f) { util::CreateSymlink(f / "b", f / "a"); }},
        {"RenameFile", "ask b; ask a; touch a; touch b; ",
         [](folder_t f) { util::RenameFile(f / "a", f / "b"); }},
        {"CopyFile", "ask a; ask b; touch b; touch a; touch b; ",
         [](folder_t f) { util::CopyFile(f / "a", f / "b", true); }},
        {"CopyFile, wide", "ask a; ask b; touch b; touch a; touch b; ",
         [](folder_t f) { util::CopyFile(Wide(f / "a"), Wide(f / "b"), true); }},
        {"IsSameDevice", "ask a; touch a; ask l; touch l; ",
         [](folder_t f) { util::IsSameDevice(f / "a", f / "l"); }},
    });
}

TEST(FileUtilsAccess, RefusalStopsEachStepOfAnOperation)
{
    ExpectStoppedByEachRefusal({
        {"CreateParentFolders",
         "ask c/d/e; ask c; touch c; ask c; touch c; ask c/d; touch c/d; ask c/d; touch c/d; ",
         [](folder_t f) { util::CreateParentFolders(f / "c/d/e"); }},
        {"RemoveSymlink", "ask l; ask l; touch l; ", [](folder_t f) { util::RemoveSymlink(f / "l"); }},
        {"AgeFile", "ask a.1; touch a.1; ask a; touch a; ask a.1; ask a; touch a; touch a.1; ",
         [](folder_t f) { util::AgeFile(1, f / "a", ".log"); }},
    });
}

TEST(FileUtilsAccess, RefusalStopsTheFolderBelowHome)
{
    InChild([] {
        ExpectStoppedByEachRefusal({
            {"GetHomeTempDir", "ask tmp/; touch tmp/; ask tmp/; touch tmp/; ",
             [](folder_t f) { ::setenv("HOME", f.path().c_str(), 1); util::GetHomeTempDir(); }},
        });
    });
}

TEST(FileUtilsAccess, RefusalStopsTheQuestionForFreeSpaceOnAVolume)
{
    ExpectStoppedByEachRefusal({
        {"CheckVmfsFreeSpace", "ask /vmfs/volumes/spied; fork; ",
         [](folder_t) { util::CheckVmfsFreeSpace("/vmfs/volumes/spied", 1); }},
        {"CheckFreeSpace", "ask /vmfs/volumes/spied/x; ask /vmfs/volumes/spied; fork; ",
         [](folder_t) { util::CheckFreeSpace("/vmfs/volumes/spied/x", 1); }},
    });
}

TEST(FileUtilsAccess, RefusalStopsPathUtilsThroughTheirTests)
{
    ExpectStoppedByEachRefusal({
        {"Exists", "ask a; touch a; ", [](folder_t f) { CPathUtils::Exists(f / "a"); }},
        {"CreateHardLink", "ask a; touch a; touch b; ",
         [](folder_t f) { CPathUtils::CreateHardLink(f / "a", f / "b"); }},
        {"Rename", "ask a; touch a; ask b; touch b; touch a; touch b; ",
         [](folder_t f) { CPathUtils::Rename(f / "a", f / "b"); }},
        {"Copy", "ask a; touch a; ask c/d; touch c/d; touch a; ask c; touch c; touch c/d; ",
         [](folder_t f) { CPathUtils::Copy(f / "a", f / "c/d"); }},
        {"CreateDir", "ask e/f; touch e/f; ask e; touch e; touch e/f; ",
         [](folder_t f) { CPathUtils::CreateDir(f / "e/f", true, 755); }},
        {"CreateDirParents", "ask e/f; touch e/f; ask e; touch e; touch e/f; ",
         [](folder_t f) { CPathUtils::CreateDirParents(f / "e/f", true); }},
        {"CreateDirPlain", "ask e; touch e; ", [](folder_t f) { CPathUtils::CreateDirPlain(f / "e"); }},
        {"FindCommand",
         "ask /usr/bin/spied; touch /usr/bin/spied; ask /bin/spied; touch /bin/spied; "
         "ask /usr/local/bin/spied; touch /usr/local/bin/spied; ",
         [](folder_t) { CPathUtils::FindCommand("spied"); }},
    });
}

TEST(FileUtilsAccess, RefusalStopsTheQuestionWhatAFileIs)
{
    ExpectStoppedByEachRefusal({
        {"GetFileInfo", "ask a; touch a; ", [](folder_t f) { util::GetFileInfo(f / "a", true); }},
        {"GetFileInfo, missing", "ask b; touch b; ", [](folder_t f) { util::GetFileInfo(f / "b", false); }},
        {"GetInfo", "ask a; touch a; ", [](folder_t f) { CPathUtils::GetInfo(f / "a"); }},
        {"GetType", "ask a; touch a; ", [](folder_t f) { CPathUtils::GetType(f / "a"); }},
        {"IsFile", "ask a; touch a; ", [](folder_t f) { CPathUtils::IsFile(f / "a"); }},
        {"IsDir", "ask a; touch a; ", [](folder_t f) { CPathUtils::IsDir(f / "a"); }},
        {"IsLink", "ask a; touch a; ", [](folder_t f) { CPathUtils::IsLink(f / "a"); }},
        {"GetRealPath", "ask l; touch l; ", [](folder_t f) { CPathUtils::GetRealPath(f / "l"); }},
    });
}

TEST(FileUtilsAccess, RefusalStopsOperationsThatOnlyLogTheirFailures)
{
    cnt::plain_array_t security;
    util::GetFileSecurity("/", security);
    cnt::plain_array_t buffer;
    ExpectStoppedByEachRefusal({
        {"TrySetImmutable", "ask a; touch a; ", [](folder_t f) { util::TrySetImmutable(f / "a", false); }},
        {"TrySetNoCow", "ask a; touch a; ", [](folder_t f) { util::TrySetNoCow(f / "a", false); }},
        {"GetFileSecurity", "ask a; touch a; ", [&](folder_t f) { util::GetFileSecurity(f / "a", buffer); }},
        {"SetFileSecurity", "ask a; touch a; ",
         [&](folder_t f) { util::SetFileSecurity(f / "a", security); }},
    }, false);
}

TEST(FileUtilsAccess, RecordsAndLinksAskNobody)
{
    ExpectNobodyIsAsked({
        {"ReadFileInfo", "touch a; ", [](folder_t f) { util::ReadFileInfo(f / "a"); }},
        {"ApplyFileInfo", "touch a; ",
         [](folder_t f) { util::ApplyFileInfo(util::ReadFileInfo(f / "a"), f / "a"); }},
        {"ApplyFileMeta", "touch a; ",
         [](folder_t f) { util::ApplyFileMeta(util::ReadFileInfo(f / "a").meta, f / "a"); }},
        {"ApplyFileMetaUnchecked", "touch a; ",
         [](folder_t f) { util::ApplyFileMetaUnchecked(util::ReadFileInfo(f / "a").meta, f / "a"); }},
        {"ReadFromFile", "touch a; ", [](folder_t f) { posix::posix_file_security::ReadFromFile(f / "a"); }},
        {"ApplyToFile", "touch a; ",
         [](folder_t f) { posix::posix_file_security::ReadFromFile(f / "a")->ApplyToFile(f / "a"); }},
        {"CreateSymLink", "touch b; ", [](folder_t f) { CPathUtils::CreateSymLink(f / "a", f / "b"); }},
        {"ReadLink", "touch l; ", [](folder_t f) { CPathUtils::ReadLink(f / "l"); }},
        {"Delete", "touch a; ", [](folder_t f) { CPathUtils::Delete(f / "a"); }},
    });
}

TEST(FileUtilsAccess, TextAloneIsNeitherAskedAboutNorTouched)
{
    std::string volume;
    ExpectNobodyIsAsked({
        {"Rename to the same", "", [](folder_t f) { CPathUtils::Rename(f / "a", f / "a"); }},
        {"IsVmfsPath", "", [&](folder_t) { util::IsVmfsPath("/vmfs/volumes/spied/x", volume); }},
        {"AgedFileName", "", [](folder_t f) { util::AgedFileName(f / "a", ".log", 1); }},
        {"ReplaceBadFileNameChars", "", [](folder_t f) { util::ReplaceBadFileNameChars(f / "a"); }},
    });
}

TEST(FileUtilsAccess, OperationsOfOtherPlatformsAskNobody)
{
    EXPECT_EQ("", SpyOn([](folder_t f) { util::addFilesFromDir(f / "a"); }).events);
    EXPECT_EQ("", SpyOn([](folder_t f) { util::fs_get_volume_path_by_path(Wide(f / "a")); }).events);
}

TEST(FileUtilsAccess, PathIsAskedAboutAsFarAsTheSystemSeesIt)
{
    ExpectStoppedByEachRefusal({
        {"ExistsByStat", "ask a; touch a; ", [](folder_t f) { util::ExistsByStat(Cut(f / "a")); }},
        {"ExistsByStat, wide", "ask a; touch a; ",
         [](folder_t f) { util::ExistsByStat(Wide(Cut(f / "a"))); }},
        {"ExistsByLstat", "ask a; touch a; ", [](folder_t f) { util::ExistsByLstat(Cut(f / "a")); }},
        {"FileExists", "ask a; touch a; ", [](folder_t f) { util::FileExists(Cut(f / "a")); }},
        {"fs_short_stat", "ask a; touch a; ", [](folder_t f) { util::fs_short_stat(Cut(f / "a")); }},
        {"GetDeviceId", "ask a; touch a; ", [](folder_t f) { util::GetDeviceId(Cut(f / "a")); }},
        {"CheckFreeSpace", "ask a; touch a; ", [](folder_t f) { util::CheckFreeSpace(Cut(f / "a"), 0); }},
        {"GetFreeSpace", "ask a; touch a; ", [](folder_t f) { util::GetFreeSpace(Cut(f / "a")); }},
        {"Exists", "ask a; touch a; ", [](folder_t f) { CPathUtils::Exists(Cut(f / "a")); }},
        {"CreateSymlink", "ask b; ask a; touch b; ",
         [](folder_t f) { util::CreateSymlink(Cut(f / "b"), Cut(f / "a")); }},
        {"RenameFile", "ask b; ask a; touch a; touch b; ",
         [](folder_t f) { util::RenameFile(Cut(f / "a"), Cut(f / "b")); }},
        {"CopyFile", "ask a; ask b; touch b; touch a; touch b; ",
         [](folder_t f) { util::CopyFile(Cut(f / "a"), Cut(f / "b"), false); }},
        {"RemoveSymlink", "ask l; ask l; touch l; ", [](folder_t f) { util::RemoveSymlink(Cut(f / "l")); }},
        {"RemoveFile", "ask a; touch a; ", [](folder_t f) { util::RemoveFile(Cut(f / "a")); }},
        {"CreateEmptyFile", "ask b; touch b; ", [](folder_t f) { util::CreateEmptyFile(Cut(f / "b")); }},
        {"CreateDirectory", "ask b; touch b; ", [](folder_t f) { util::CreateDirectory(Cut(f / "b")); }},
        {"CreateParentFolders", "ask b; ask b; touch b; ask b; touch b; ",
         [](folder_t f) { util::CreateParentFolders(Cut(f / "b")); }},
        {"CheckVmfsFreeSpace", "ask /vmfs/volumes/spied; fork; ",
         [](folder_t) { util::CheckVmfsFreeSpace(Cut("/vmfs/volumes/spied"), 1); }},
    });
}
// clang-format on

TEST(FileUtilsAccess, EmptyPathIsRefusedByPathUtilsBeforeAnybodyIsAsked)
{
    for (const spied_call_t& call : {spied_call_t([](folder_t) { CPathUtils::Exists(""); }),
                                     spied_call_t([](folder_t) { CPathUtils::CreateDir("", true, 755); })})
    {
        const std::string failure = Failure(call);
        EXPECT_EQ("Path is not set.", failure.substr(0, failure.find('\n')));
    }
}

TEST(FileUtilsAccess, RefusalOfTheFreeSpaceOfAVolumeHasNoContext)
{
    EXPECT_EQ("refused", Failure([](folder_t) { util::CheckVmfsFreeSpace("/vmfs/volumes/spied", 1); }));
}

TEST(FileUtilsAccess, RefusalThatIsNoStdExceptionPassesEachHandler)
{
    const auto context = GetCommonLibCtx();
    const auto before = context->GetFilesAccessPermissions();
    context->SetFilesAccessPermissions(boost::make_shared<odd_refusal_t>());
    cnt::plain_array_t buffer;
    EXPECT_THROW(util::TrySetImmutable("/a", true), int);
    EXPECT_THROW(util::TrySetNoCow("/a", true), int);
    EXPECT_THROW(util::GetFileSecurity("/a", buffer), int);
    EXPECT_THROW(util::SetFileSecurity("/a", buffer), int);
    EXPECT_THROW(util::AgeFile(0, "/a", ".log"), int);
    EXPECT_THROW(CPathUtils::Rename("/a", "/b"), int);
    EXPECT_THROW(CPathUtils::CreateDir("/a", true, 755), int);
    EXPECT_THROW(CPathUtils::GetRealPath("/a"), int);
    context->SetFilesAccessPermissions(before);
}

TEST(FileUtilsAccess, RefusalGetsTheContextOfTheOperation)
{
    const spied_t exists = SpyOnRefused(0, [](folder_t f) { CPathUtils::Exists(f / "a"); });
    EXPECT_EQ("refused\nCPathUtils: Failed to check whether [a] exists.", exists.failure);
    const spied_t ages = SpyOnRefused(0, [](folder_t f) { util::AgeFile(0, f / "a", ".log"); });
    EXPECT_EQ("refused\nCannot age file. File path: [a]. Extension: [.log]. Ages limit: [0].", ages.failure);
    const spied_t type = SpyOnRefused(0, [](folder_t f) { CPathUtils::GetType(f / "a"); });
    EXPECT_EQ("refused\n"
              "CPathUtils: Failed to check whether [a] exists.\n"
              "Can't get info for file [a].\n"
              "CPathUtils: Failed to get type of [a].",
              type.failure);
}

TEST(FileUtilsAccess, RefusalOfAFileWhoseFlagsAreTriedIsAWarning)
{
    EXPECT_EQ("       | WARN|Unable to set IMMUTABLE file attribute\n"
              "       | >>  |refused\n",
              Log([](folder_t f) { util::TrySetImmutable(f / "a", true); }));
    EXPECT_EQ("       | WARN|Unable to remove NOCOW file attribute\n"
              "       | >>  |refused\n",
              Log([](folder_t f) { util::TrySetNoCow(f / "a", false); }));
}

TEST(FileUtilsAccess, RefusalOfAFileWhoseSecurityIsWantedIsAWarning)
{
    cnt::plain_array_t buffer(3);
    std::string path;
    const std::string get = Log([&](folder_t f) { util::GetFileSecurity(path = f / "a", buffer); });
    EXPECT_EQ("       | WARN|Failed to get file security: " + path + "\n       | >>  |refused\n", get);
    EXPECT_TRUE(buffer.empty());
    const std::string set = Log([&](folder_t f) { util::SetFileSecurity(path = f / "a", buffer); });
    EXPECT_EQ("       | WARN|Failed to set file security: " + path + "\n       | >>  |refused\n", set);
}
