#include <string>

#include <gtest/gtest.h>
#include <unistd.h>

#include "nelvo/context/common_lib_ctx.h"
#include "nelvo/core/util/str.h"
#include "nelvo/posix/posix_file.h"
#include "tests/support/path_spy.h"

using folder_t = const temp_folder_t&;
using posix::posix_file_t;

namespace
{

// The path and more behind a zero byte.
std::string Cut(const std::string& path) { return path + std::string("\0more", 5); }

// Each factory, on the path that a name gives.
template <class PathOf>
spied_operations_t Factories(const std::string& events, PathOf path)
{
    return {
        {"CreateOrOpen", events, [=](folder_t f) { posix_file_t::CreateOrOpen(path(f)); }},
        {"CreateWithPrealloc, 0", events, [=](folder_t f) { posix_file_t::CreateWithPrealloc(path(f), 0); }},
        {"CreateWithPrealloc", events, [=](folder_t f) { posix_file_t::CreateWithPrealloc(path(f), 10); }},
        {"OpenRead", events, [=](folder_t f) { posix_file_t::OpenRead(path(f)); }},
        {"OpenReadWrite", events, [=](folder_t f) { posix_file_t::OpenReadWrite(path(f)); }},
        {"OpenByAccess, read", events, [=](folder_t f) { posix_file_t::OpenByAccess(path(f), true); }},
        {"OpenByAccess", events, [=](folder_t f) { posix_file_t::OpenByAccess(path(f), false); }},
        {"OpenReadWriteSync", events, [=](folder_t f) { posix_file_t::OpenReadWriteSync(path(f)); }},
        {"OpenReadWithoutCache", events, [=](folder_t f) { posix_file_t::OpenReadWithoutCache(path(f)); }},
        {"OpenReadWriteWithoutCache", events,
         [=](folder_t f) { posix_file_t::OpenReadWriteWithoutCache(path(f)); }},
    };
}

} // namespace

TEST(PosixFileAccess, EveryFactoryAsksAboutThePathOnceAndThenOpensIt)
{
    ExpectStoppedByEachRefusal(Factories("ask a; touch a; ", [](folder_t f) { return f / "a"; }));
    ExpectStoppedByEachRefusal(Factories("ask b; touch b; ", [](folder_t f) { return f / "b"; }));
}

TEST(PosixFileAccess, PathIsAskedAboutAsFarAsTheSystemSeesIt)
{
    ExpectStoppedByEachRefusal(Factories("ask a; touch a; ", [](folder_t f) { return Cut(f / "a"); }));
}

TEST(PosixFileAccess, RefusalPassesOnWithoutAContext)
{
    for (const spied_operation_t& factory : Factories("", [](folder_t f) { return f / "a"; }))
        EXPECT_EQ("refused", SpyOnRefused(0, factory.call).failure) << factory.name;
}

TEST(PosixFileAccess, OpenFileHasNoShareOfTheContext)
{
    const temp_folder_t folder;
    const auto context = GetCommonLibCtx();
    const auto shares = context.use_count();
    const posix_file_ptr_t file = posix_file_t::CreateOrOpen(folder / "a");
    EXPECT_EQ(shares, context.use_count());
}

TEST(PosixFileAccess, OperationsOfOtherPlatformsDoNotAsk)
{
    EXPECT_EQ("", SpyOn([](folder_t f) { posix_file_t::CreateNewWithoutCache(f / "a", 1); }).events);
    EXPECT_EQ("", SpyOn([](folder_t f) { posix_file_t::SparseFileCreate(f / "a", 1); }).events);
    EXPECT_EQ("", SpyOn([](folder_t) { posix_file_t::SparseFileSetZeroData({}, 0, 1); }).events);
}

TEST(PosixFileAccess, OperationsByPathDoNotAsk)
{
    bool is_link = false;
    uid_t uid = 0;
    gid_t gid = 0;
    ExpectNobodyIsAsked({
        {"GetOwnerUid", "touch a; ", [](folder_t f) { posix_file_t::GetOwnerUid((f / "a").c_str()); }},
        {"GetOwnerGid", "touch a; ", [](folder_t f) { posix_file_t::GetOwnerGid((f / "a").c_str()); }},
        {"GetPermissions", "touch a; ", [](folder_t f) { posix_file_t::GetPermissions((f / "a").c_str()); }},
        {"SetPermissions", "touch a; ",
         [](folder_t f) { posix_file_t::SetPermissions((f / "a").c_str(), 0600); }},
        {"GetLinkOwner", "touch a; ",
         [&](folder_t f) { posix_file_t::GetLinkOwner((f / "a").c_str(), is_link, uid, gid); }},
        {"IsSymlink", "touch l; ", [](folder_t f) { posix_file_t::IsSymlink((f / "l").c_str()); }},
        {"SetOwner", "touch a; ",
         [](folder_t f) { posix_file_t::SetOwner((f / "a").c_str(), ::geteuid(), ::getegid()); }},
        {"GetFileTimes", "touch a; ",
         [](folder_t f) { posix_file_t::GetFileTimes(f / "a", nullptr, nullptr); }},
        {"SetFileTimes", "touch a; ", [](folder_t f) { posix_file_t::SetFileTimes(f / "a", 1, 2); }},
        {"ReadSymlink", "touch l; ", [](folder_t f) { posix_file_t::ReadSymlink(f / "l"); }},
    });
}

TEST(PosixFileAccess, OpenFileIsNotAskedAboutAgain)
{
    const spied_t spied = SpyOn(
        [](folder_t f)
        {
            const posix_file_ptr_t file = posix_file_t::OpenReadWrite(f / "a");
            std::string text;
            file->ReadAllText(text);
            file->WriteText("more");
            file->set_size(file->GetSize());
            file->SeekFromBegin(0);
            file->Close();
        });
    EXPECT_EQ("ask a; touch a; ", spied.events);
    EXPECT_EQ("", spied.failure);
}
