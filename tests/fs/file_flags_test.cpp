#include "nelvo/fs/file_flags.h"

#include <cerrno>
#include <cstdarg>
#include <string>
#include <vector>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "nelvo/core/exc/errno_exc.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/core/util/str.h"
#include "nelvo/logging/log.h"
#include "nelvo/posix/posix_file.h"
#include "tests/support/lines_receiver.h"
#include "tests/support/temp_folder.h"
#include "tests/support/thrown.h"

namespace
{

// An inode whose flags are kept here. Only the lower half of the eight bytes that the requests' numbers speak
// of is read and written, as the system does it.
struct inode_t
{
    std::uint32_t flags = 0;
    int get_error = 0;
    int get_result = 0;
    int set_error = 0;
    int set_result = 0;
    std::vector<unsigned long> requests;
    int descriptor = -1;
};
inode_t g_inode;

int Answer(int error, int result)
{
    errno = error;
    return error != 0 ? -1 : result;
}

} // namespace

extern "C" int ioctl(int descriptor, unsigned long request, ...) noexcept
{
    va_list arguments;
    va_start(arguments, request);
    auto* const value = va_arg(arguments, std::uint32_t*);
    va_end(arguments);
    g_inode.descriptor = descriptor;
    g_inode.requests.push_back(request);
    if (request == 0x80086601)
    {
        EXPECT_EQ(0u, *value);
        *value = g_inode.flags;
        return Answer(g_inode.get_error, g_inode.get_result);
    }
    g_inode.flags = *value;
    return Answer(g_inode.set_error, g_inode.set_result);
}

namespace
{

class FileFlags : public testing::Test
{
protected:
    FileFlags()
    {
        g_inode = {};
        WriteFile(m_path, "x");
        m_file = posix::posix_file_t::OpenRead(m_path);
    }

    // What the call writes to the process log, without time and thread.
    template <class Call>
    static std::string Logged(Call call)
    {
        const auto receiver = boost::make_shared<lines_receiver_t>();
        logging::GetProcessLog()->set_receiver(receiver);
        call();
        logging::GetProcessLog()->set_receiver({});
        return WithoutHeads(receiver->text());
    }

    // The warning that a file's flags could not be read.
    std::string Warning(const std::string& text) const
    {
        return "       | WARN|" + text +
               "\n       | >>  |Inappropriate ioctl for device"
               "\n       | >>  |POSIX: Failed to get file flags. File: [" +
               m_path + "].\n";
    }

    temp_folder_t m_folder;
    const std::string m_path = m_folder / "a";
    posix_file_ptr_t m_file;
};

} // namespace

TEST_F(FileFlags, ChangeReadsAndWritesTheFlagsOfTheOpenFile)
{
    util::ChangeFileFlags(m_file, 1, 2);
    EXPECT_EQ((std::vector<unsigned long>{0x80086601, 0x40086602}), g_inode.requests);
    EXPECT_EQ(m_file->GetDescriptor(), g_inode.descriptor);
}

TEST_F(FileFlags, ChangeClearsThenSetsAndKeepsTheRest)
{
    g_inode.flags = 0x80000F0F;
    util::ChangeFileFlags(m_file, 0x31, 0x0F);
    EXPECT_EQ(0x80000F31, g_inode.flags);
    util::ChangeFileFlags(m_file, 0, 0);
    EXPECT_EQ(0x80000F31, g_inode.flags);
}

TEST_F(FileFlags, ChangeReturnsTheResultOfTheLastCall)
{
    EXPECT_EQ(0, util::ChangeFileFlags(m_file, 1, 0));
    g_inode.set_result = 7;
    EXPECT_EQ(7, util::ChangeFileFlags(m_file, 1, 0));
}

TEST_F(FileFlags, OnlyMinusOneIsAFailedRead)
{
    g_inode.flags = 4;
    g_inode.get_result = 7;
    EXPECT_EQ(0, util::ChangeFileFlags(m_file, 1, 0));
    EXPECT_EQ(5u, g_inode.flags);
}

TEST_F(FileFlags, FailedReadNamesTheFileAndWritesNothing)
{
    g_inode.get_error = ENOTTY;
    EXPECT_EQ("Inappropriate ioctl for device\nPOSIX: Failed to get file flags. File: [" + m_path + "].",
              Thrown<posix::errno_exc_t>([&] { util::ChangeFileFlags(m_file, 1, 0); }));
    EXPECT_EQ(1u, g_inode.requests.size());
}

TEST_F(FileFlags, FailedWriteNamesTheFile)
{
    g_inode.set_error = EPERM;
    EXPECT_EQ("Operation not permitted\nPOSIX: Failed to set file flags. File: [" + m_path + "].",
              Thrown<posix::errno_exc_t>([&] { util::SetImmutable(m_file, true); }));
}

TEST_F(FileFlags, ImmutableIsOneFlag)
{
    g_inode.flags = 0x80000;
    util::SetImmutable(m_file, true);
    EXPECT_EQ(0x80010u, g_inode.flags);
    util::SetImmutable(m_path, false);
    EXPECT_EQ(0x80000u, g_inode.flags);
    util::SetImmutable(m_path, true);
    EXPECT_EQ(0x80010u, g_inode.flags);
    util::SetImmutable(m_file, false);
    EXPECT_EQ(0x80000u, g_inode.flags);
}

TEST_F(FileFlags, NoCowIsAnother)
{
    g_inode.flags = 0x80000;
    util::SetNoCow(m_file, true);
    EXPECT_EQ(0x880000u, g_inode.flags);
    util::SetNoCow(m_path, false);
    EXPECT_EQ(0x80000u, g_inode.flags);
    util::SetNoCow(m_path, true);
    EXPECT_EQ(0x880000u, g_inode.flags);
    util::SetNoCow(m_file, false);
    EXPECT_EQ(0x80000u, g_inode.flags);
}

TEST_F(FileFlags, PathThatCannotBeOpenedIsToldByTheOpening)
{
    const std::string path = m_folder / "none";
    const std::string text = "No such file or directory\nPOSIX: Failed to open file [" + path + "].";
    EXPECT_EQ(text, Thrown<posix::errno_exc_t>([&] { util::SetImmutable(path, true); }));
    EXPECT_EQ(text, Thrown<posix::errno_exc_t>([&] { util::SetNoCow(path, true); }));
}

TEST_F(FileFlags, EmptyPathIsToldByTheOpening)
{
    const std::string text = "No such file or directory\nPOSIX: Failed to open file [].";
    EXPECT_EQ(text, Thrown<posix::errno_exc_t>([] { util::SetImmutable("", true); }));
    EXPECT_EQ(text, Thrown<posix::errno_exc_t>([] { util::SetNoCow("", true); }));
}

TEST_F(FileFlags, TryingChangesTheFlagsWithoutAWord)
{
    EXPECT_EQ("", Logged([&] { util::TrySetImmutable(m_file, true); }));
    EXPECT_EQ(0x10u, g_inode.flags);
    EXPECT_EQ("", Logged([&] { util::TrySetNoCow(m_path, true); }));
    EXPECT_EQ(0x800010u, g_inode.flags);
    EXPECT_EQ("", Logged([&] { util::TrySetImmutable(m_path, false); }));
    EXPECT_EQ(0x800000u, g_inode.flags);
    EXPECT_EQ("", Logged([&] { util::TrySetNoCow(m_file, false); }));
    EXPECT_EQ(0u, g_inode.flags);
}

TEST_F(FileFlags, TryingInVainIsAWarning)
{
    g_inode.get_error = ENOTTY;
    EXPECT_EQ(Warning("Unable to set IMMUTABLE file attribute"),
              Logged([&] { util::TrySetImmutable(m_file, true); }));
    EXPECT_EQ(Warning("Unable to remove IMMUTABLE file attribute"),
              Logged([&] { util::TrySetImmutable(m_path, false); }));
    EXPECT_EQ(Warning("Unable to set NOCOW file attribute"),
              Logged([&] { util::TrySetNoCow(m_path, true); }));
    EXPECT_EQ(Warning("Unable to remove NOCOW file attribute"),
              Logged([&] { util::TrySetNoCow(m_file, false); }));
}

TEST_F(FileFlags, TryingAPathThatCannotBeOpenedIsAWarningToo)
{
    const std::string path = m_folder / "none";
    const auto warning = [&](const std::string& text)
    {
        return "       | WARN|" + text + "\n       | >>  |No such file or directory\n" +
               "       | >>  |POSIX: Failed to open file [" + path + "].\n";
    };
    EXPECT_EQ(warning("Unable to set NOCOW file attribute"), Logged([&] { util::TrySetNoCow(path, true); }));
    EXPECT_EQ(warning("Unable to remove NOCOW file attribute"),
              Logged([&] { util::TrySetNoCow(path, false); }));
    EXPECT_EQ(warning("Unable to set IMMUTABLE file attribute"),
              Logged([&] { util::TrySetImmutable(path, true); }));
    EXPECT_EQ(warning("Unable to remove IMMUTABLE file attribute"),
              Logged([&] { util::TrySetImmutable(path, false); }));
}

TEST_F(FileFlags, TryingAWidePathWithoutAnUtf8FormStillThrows)
{
    EXPECT_EQ("", Logged([] { EXPECT_THROW(util::TrySetImmutable(L"\xD800", true), exc::runtime_exc_t); }));
    EXPECT_EQ("", Logged([] { EXPECT_THROW(util::TrySetNoCow(L"\xD800", true), exc::runtime_exc_t); }));
}

TEST_F(FileFlags, AnyNameStandsInTheFailureByteByByte)
{
    for (const std::string& name : {std::string("%1 %2\n\xff"), std::string(255, 'x')})
    {
        const std::string path = m_folder / name;
        WriteFile(path, "");
        g_inode.get_error = ENOTTY;
        EXPECT_EQ("Inappropriate ioctl for device\nPOSIX: Failed to get file flags. File: [" + path + "].",
                  Thrown<posix::errno_exc_t>([&] { util::SetImmutable(path, true); }));
        g_inode = {};
        g_inode.set_error = EPERM;
        EXPECT_EQ("Operation not permitted\nPOSIX: Failed to set file flags. File: [" + path + "].",
                  Thrown<posix::errno_exc_t>([&] { util::SetNoCow(path, true); }));
    }
}
