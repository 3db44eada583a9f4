#include <cerrno>
#include <string>

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "nelvo/posix/posix_file.h"
#include "tests/support/temp_folder.h"

using posix::posix_file_t;

namespace
{

class LibcOverrides : public testing::Test
{
protected:
    LibcOverrides()
    {
        WriteFile(m_path, "0123456789");
        m_file = posix_file_t::OpenReadWrite(m_path);
        m_descriptor = m_file->GetDescriptor();
    }

    std::string Pread(std::size_t size, off_t offset)
    {
        std::string text(size, '?');
        const ssize_t count = ::pread(m_descriptor, text.data(), size, offset);
        text.resize(count == -1 ? 0 : static_cast<std::size_t>(count));
        return text;
    }

    temp_folder_t m_folder;
    const std::string m_path = m_folder / "file";
    posix_file_ptr_t m_file;
    int m_descriptor = -1;
};

} // namespace

TEST_F(LibcOverrides, FsyncDoesNothingAndCannotFail)
{
    errno = 0;
    EXPECT_EQ(0, ::fsync(m_descriptor));
    EXPECT_EQ(0, ::fsync(-1));
    EXPECT_EQ(0, errno);
}

TEST_F(LibcOverrides, FlushSucceedsEvenAfterClose)
{
    m_file->Close();
    EXPECT_NO_THROW(m_file->Flush());
}

TEST_F(LibcOverrides, PreadReadsFromTheGivenOffset)
{
    EXPECT_EQ("345", Pread(3, 3));
    EXPECT_EQ("012", Pread(3, 0));
    EXPECT_EQ("89", Pread(5, 8));
    EXPECT_EQ("", Pread(5, 10));
}

TEST_F(LibcOverrides, PreadMovesThePosition)
{
    Pread(3, 4);
    EXPECT_EQ(7, m_file->GetPosition());
}

TEST_F(LibcOverrides, PreadReadsWhereItStandsIfTheSeekFails)
{
    m_file->SeekFromBegin(5);
    EXPECT_EQ("56", Pread(2, -1));
    EXPECT_EQ("7", Pread(1, -100));
}

TEST_F(LibcOverrides, PreadReadsAPipe)
{
    int ends[2];
    ASSERT_EQ(0, ::pipe(ends));
    ASSERT_EQ(4, ::write(ends[1], "text", 4));
    char text[4] = {};
    EXPECT_EQ(4, ::pread(ends[0], text, sizeof(text), 2));
    EXPECT_EQ("text", std::string(text, sizeof(text)));
    ::close(ends[0]);
    ::close(ends[1]);
}

TEST_F(LibcOverrides, PreadReportsTheFailureOfTheRead)
{
    char byte = 0;
    errno = 0;
    EXPECT_EQ(-1, ::pread(-1, &byte, 1, 0));
    EXPECT_EQ(EBADF, errno);
}

TEST_F(LibcOverrides, PwriteWritesAtTheGivenOffset)
{
    EXPECT_EQ(2, ::pwrite(m_descriptor, "ab", 2, 3));
    EXPECT_EQ(1, ::pwrite(m_descriptor, "c", 1, 0));
    EXPECT_EQ("c12ab56789", ReadFile(m_path));
}

TEST_F(LibcOverrides, PwriteMovesThePosition)
{
    EXPECT_EQ(2, ::pwrite(m_descriptor, "ab", 2, 3));
    EXPECT_EQ(5, m_file->GetPosition());
}

TEST_F(LibcOverrides, PwriteWritesWhereItStandsIfTheSeekFails)
{
    m_file->SeekFromBegin(5);
    EXPECT_EQ(2, ::pwrite(m_descriptor, "ab", 2, -1));
    EXPECT_EQ("01234ab789", ReadFile(m_path));
}

TEST_F(LibcOverrides, PwriteReportsTheFailureOfTheWrite)
{
    const posix_file_ptr_t file = posix_file_t::OpenRead(m_path);
    errno = 0;
    EXPECT_EQ(-1, ::pwrite(file->GetDescriptor(), "a", 1, 0));
    EXPECT_EQ(EBADF, errno);
}

TEST_F(LibcOverrides, SharedLibrariesOfTheProcessGetThemToo)
{
    EXPECT_EQ(reinterpret_cast<void*>(&::fsync), ::dlsym(RTLD_DEFAULT, "fsync"));
    EXPECT_EQ(reinterpret_cast<void*>(&::pread), ::dlsym(RTLD_DEFAULT, "pread"));
    EXPECT_EQ(reinterpret_cast<void*>(&::pwrite), ::dlsym(RTLD_DEFAULT, "pwrite"));
    Dl_info program = {};
    Dl_info found = {};
    ASSERT_NE(0, ::dladdr(reinterpret_cast<void*>(&ReadFile), &program));
    ASSERT_NE(0, ::dladdr(::dlsym(RTLD_DEFAULT, "pread"), &found));
    EXPECT_EQ(program.dli_fbase, found.dli_fbase);
}
