// What a tree of 20,000 objects has is read, stored, read back and given to a copy.

#include "nelvo/fs/file_info.h"

#include <cstdio>
#include <ctime>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "tests/fs/record_checks.h"
#include "tests/support/temp_folder.h"

namespace
{

constexpr int kFolders = 100;
constexpr int kObjects = 199; // in each folder

enum class kind_t
{
    kFile,
    kLink,
    kFolder,
    kFifo
};

// One of ten objects is a link, one a folder and one of twenty a pipe.
kind_t KindOf(int number)
{
    if (number % 10 == 3)
        return kind_t::kLink;
    if (number % 10 == 7)
        return kind_t::kFolder;
    return number % 20 == 9 ? kind_t::kFifo : kind_t::kFile;
}

// Numbers that look like none in particular, the same in each run.
unsigned Scattered(int number) { return static_cast<unsigned>(number) * 2654435761u >> 7; }

void Make(const std::string& path, int number)
{
    switch (KindOf(number))
    {
    case kind_t::kLink: EXPECT_EQ(0, ::symlink(number % 3 == 0 ? "none" : "0", path.c_str())); break;
    case kind_t::kFolder: EXPECT_EQ(0, ::mkdir(path.c_str(), 0700)); break;
    case kind_t::kFifo: EXPECT_EQ(0, ::mkfifo(path.c_str(), 0600)); break;
    case kind_t::kFile:
        const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0600);
        EXPECT_NE(-1, file);
        EXPECT_EQ(0, ::ftruncate64(file, Scattered(number) % 0x180000000));
        EXPECT_EQ(0, ::close(file));
    }
}

// Gives an object an owner, a mode and times of its own. Only root gives owners, and others can remove a
// folder only if it is theirs to open.
void Dress(const std::string& path, int number)
{
    const unsigned value = Scattered(number);
    if (::geteuid() == 0)
    {
        EXPECT_EQ(0, ::lchown(path.c_str(), value % 70000, value % 65537)) << path;
    }
    if (KindOf(number) != kind_t::kLink)
    {
        const mode_t least = KindOf(number) == kind_t::kFolder ? 0700 : 0;
        EXPECT_EQ(0, ::chmod(path.c_str(), value % 010000 | least)) << path;
    }
    const timespec times[] = {{std::time_t{value} * 3, 7}, {1000000 - std::time_t{value} * 5, 8}};
    EXPECT_EQ(0, ::utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW)) << path;
}

struct stat64 StatusOf(const std::string& path)
{
    struct stat64 status = {};
    EXPECT_EQ(0, ::lstat64(path.c_str(), &status)) << path;
    return status;
}

std::string Text(const struct stat64& status)
{
    char text[128];
    std::snprintf(text, sizeof(text), "mode %o owner %u %u times %lld %lld", status.st_mode, status.st_uid,
                  status.st_gid, static_cast<long long>(status.st_mtime),
                  static_cast<long long>(status.st_atime));
    return text;
}

// What the record says, in the words of stat.
struct stat64 StatusIn(const util::FileInfo& info)
{
    static const mode_t kTypes[] = {S_IFREG, S_IFDIR, S_IFLNK, 0, S_IFIFO};
    struct stat64 status = {};
    unsigned mode = 0777;
    if (info.meta.mode.has_value())
        std::sscanf(std::to_string(*info.meta.mode).c_str(), "%o", &mode);
    status.st_mode = kTypes[info.type.value()] | mode;
    status.st_uid = static_cast<uid_t>(info.meta.uid.value());
    status.st_gid = static_cast<gid_t>(info.meta.gid.value());
    status.st_mtime = info.meta.modified.GetSeconds();
    status.st_atime = info.meta.accessed.GetSeconds();
    return status;
}

std::string Stored(const util::FileInfo& info)
{
    return Written([&](io::io_dev_t& stream) { util::SerializeFileInfo(info, stream); });
}

void ExpectToBeOf(const util::FileInfo& info, const std::string& path)
{
    const struct stat64 status = StatusOf(path);
    EXPECT_EQ(Text(status), Text(StatusIn(info))) << path;
    EXPECT_EQ(static_cast<std::uint64_t>(status.st_size), info.size) << path;
    EXPECT_EQ(status.st_nlink, info.link_count) << path;
    EXPECT_EQ(status.st_ctime, info.meta.changed.GetSeconds()) << path;
    EXPECT_EQ(path.substr(path.rfind('/') + 1), info.name) << path;
}

void ExpectToBeGivenTo(const std::string& path, const std::string& copy)
{
    const std::string stored = Stored(util::ReadFileInfo(path));
    record_stream_t stream(stored);
    const util::FileInfo info(stream);
    EXPECT_EQ(stored, Stored(info)) << path;
    ExpectToBeOf(info, path);
    util::ApplyFileInfo(info, copy);
    EXPECT_EQ(Text(StatusOf(path)), Text(StatusOf(copy))) << copy;
}

} // namespace

TEST(FileInfoTree, TwentyThousandObjectsGiveAllTheyHaveToTheirCopies)
{
    const temp_folder_t original;
    const temp_folder_t copy;
    for (int folder = 0; folder < kFolders; ++folder)
    {
        const std::string name = "/" + std::to_string(folder);
        ASSERT_EQ(0, ::mkdir((original.path() + name).c_str(), 0700));
        ASSERT_EQ(0, ::mkdir((copy.path() + name).c_str(), 0700));
        for (int object = 0; object < kObjects; ++object)
        {
            const int number = folder * kObjects + object;
            const std::string path = name + "/" + std::to_string(object);
            Make(original.path() + path, number);
            Make(copy.path() + path, number);
            Dress(original.path() + path, number);
            ExpectToBeGivenTo(original.path() + path, copy.path() + path);
        }
        ASSERT_EQ(0, ::chmod((original.path() + name).c_str(), 01751));
        ExpectToBeGivenTo(original.path() + name, copy.path() + name);
    }
}
