#include "nelvo/posix/posix_file.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <string>
#include <thread>
#include <type_traits>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include "nelvo/core/exc/errno_exc.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "tests/support/failing_memory.h"
#include "tests/support/file_mask.h"
#include "tests/support/temp_folder.h"
#include "tests/support/thrown.h"

using posix::posix_file_t;

namespace
{

[[maybe_unused]] const bool g_errno_changes = ChangeErrnoWithMemory();

constexpr stream_size_t kGiB = 1024LL * 1024 * 1024;

template <class Action>
std::string Failure(Action action)
{
    return Thrown<posix::errno_exc_t>(action);
}

template <class Action>
std::string RuntimeFailure(Action action)
{
    return Thrown<exc::runtime_exc_t>(action);
}

class PosixFile : public testing::Test
{
protected:
    posix_file_ptr_t Create(const std::string& content = "")
    {
        WriteFile(m_path, content);
        return posix_file_t::OpenReadWrite(m_path);
    }

    posix_file_ptr_t Closed()
    {
        posix_file_ptr_t file = Create("text");
        file->Close();
        return file;
    }

    std::string LinkTo(const std::string& target)
    {
        std::string link = m_folder / "link";
        EXPECT_EQ(0, ::symlink(target.c_str(), link.c_str())) << target;
        return link;
    }

    temp_folder_t m_folder;
    const std::string m_path = m_folder / "file";
    const std::string m_missing = m_folder / "missing";
};

// An interval timer interrupts the system calls of the thread that made it.
class interrupting_timer_t
{
public:
    interrupting_timer_t()
    {
        struct sigaction action = {};
        action.sa_handler = [](int) { ++s_count; };
        EXPECT_EQ(0, ::sigaction(SIGALRM, &action, nullptr));
        Set(1000);
    }

    ~interrupting_timer_t()
    {
        Set(0);
        std::signal(SIGALRM, SIG_IGN);
    }

    interrupting_timer_t(const interrupting_timer_t&) = delete;
    interrupting_timer_t& operator=(const interrupting_timer_t&) = delete;

    // For the other threads: the signals are not for them.
    static void Block()
    {
        sigset_t signals;
        sigemptyset(&signals);
        sigaddset(&signals, SIGALRM);
        EXPECT_EQ(0, ::pthread_sigmask(SIG_BLOCK, &signals, nullptr));
    }

    static void WaitForMore(int count)
    {
        for (const int end = s_count + count; s_count < end;)
            std::this_thread::yield();
    }

private:
    static void Set(suseconds_t microseconds)
    {
        const itimerval interval = {{0, microseconds}, {0, microseconds}};
        EXPECT_EQ(0, ::setitimer(ITIMER_REAL, &interval, nullptr));
    }

    static inline std::atomic<int> s_count = 0;
};

class PosixFileInterrupted : public PosixFile
{
protected:
    PosixFileInterrupted()
    {
        EXPECT_EQ(0, ::mkfifo(m_path.c_str(), 0600));
        m_fifo = posix_file_t::OpenReadWrite(m_path);
        for (std::size_t i = 0; i < kSize; ++i)
            m_bytes += static_cast<char>(i % 251);
    }

    int Waiting() const
    {
        int bytes = 0;
        EXPECT_EQ(0, ::ioctl(m_fifo->GetDescriptor(), FIONREAD, &bytes));
        return bytes;
    }

    void WaitUntilFull() const
    {
        const int capacity = ::fcntl(m_fifo->GetDescriptor(), F_GETPIPE_SZ);
        while (Waiting() < capacity)
            std::this_thread::yield();
    }

    void WaitUntilEmpty() const
    {
        while (Waiting() != 0)
            std::this_thread::yield();
    }

    static constexpr std::size_t kSize = 1000003;

    posix_file_ptr_t m_fifo;
    std::string m_bytes;
};

} // namespace

TEST_F(PosixFile, HoldsTheDescriptorAndThePathAndNothingElse)
{
    EXPECT_EQ(sizeof(std::int64_t) + sizeof(util::str_t), sizeof(posix_file_t));
    const posix_file_ptr_t file = Create();
    std::int32_t first = -1;
    std::memcpy(&first, static_cast<const void*>(file.get()), sizeof(first));
    EXPECT_EQ(file->GetDescriptor(), first);
}

TEST_F(PosixFile, ComesFromItsFactoriesAlone)
{
    EXPECT_FALSE(std::is_default_constructible_v<posix_file_t>);
    EXPECT_FALSE((std::is_constructible_v<posix_file_t, util::str_t>));
    EXPECT_FALSE((std::is_constructible_v<posix_file_t, util::str_t, int>));
    EXPECT_FALSE((std::is_constructible_v<posix_file_t, int, util::str_t>));
    EXPECT_FALSE(std::is_copy_constructible_v<posix_file_t>);
    EXPECT_FALSE(std::is_copy_assignable_v<posix_file_t>);
}

// Opening

TEST_F(PosixFile, CreateOrOpenMakesAMissingFile)
{
    const posix_file_ptr_t file = posix_file_t::CreateOrOpen(m_path);
    EXPECT_EQ("", ReadFile(m_path));
    file->WriteText("new");
    EXPECT_EQ("new", ReadFile(m_path));
}

TEST_F(PosixFile, CreateOrOpenKeepsAnExistingFilesContent)
{
    WriteFile(m_path, "content");
    const posix_file_ptr_t file = posix_file_t::CreateOrOpen(m_path);
    file->WriteText("C");
    EXPECT_EQ("Content", ReadFile(m_path));
}

TEST_F(PosixFile, CreatedFileHasMode0666LessTheUmask)
{
    const file_mask_t none(0);
    posix_file_t::CreateOrOpen(m_path);
    const file_mask_t narrow(027);
    posix_file_t::CreateOrOpen(m_missing);
    EXPECT_EQ(0666u, posix_file_t::GetPermissions(m_path.c_str()));
    EXPECT_EQ(0640u, posix_file_t::GetPermissions(m_missing.c_str()));
}

TEST_F(PosixFile, CreateOrOpenAndOpenReadNeverReadTheirFlag)
{
    for (const bool flag : {false, true})
    {
        WriteFile(m_path, "content");
        std::string text;
        posix_file_t::CreateOrOpen(m_path, flag)->ReadAllText(text);
        EXPECT_EQ("content", text);
        posix_file_t::OpenRead(m_path, flag)->ReadAllText(text);
        EXPECT_EQ("content", text);
        EXPECT_THROW(posix_file_t::OpenRead(m_path, flag)->WriteText("x"), posix::errno_exc_t);
    }
}

TEST_F(PosixFile, PreallocatedFileHasItsSizeAndKeepsItsContent)
{
    WriteFile(m_path, "content");
    posix_file_t::CreateWithPrealloc(m_path, 9)->WriteText("C");
    EXPECT_EQ(std::string("Content\0\0", 9), ReadFile(m_path));
    EXPECT_EQ(5 * kGiB, posix_file_t::CreateWithPrealloc(m_missing, 5 * kGiB)->GetSize());
    posix_file_t::CreateWithPrealloc(m_path, 0);
    EXPECT_EQ(std::string("Content\0\0", 9), ReadFile(m_path));
}

TEST_F(PosixFile, PreallocationCutsALongerFile)
{
    WriteFile(m_path, "content");
    posix_file_t::CreateWithPrealloc(m_path, 4);
    EXPECT_EQ("cont", ReadFile(m_path));
}

TEST_F(PosixFile, OpenByAccessReadsOnlyIfAskedTo)
{
    WriteFile(m_path, "content");
    EXPECT_THROW(posix_file_t::OpenByAccess(m_path, true)->WriteText("x"), posix::errno_exc_t);
    posix_file_t::OpenByAccess(m_path, false)->WriteText("C");
    EXPECT_EQ("Content", ReadFile(m_path));
}

TEST_F(PosixFile, OnlyCreateOrOpenCreates)
{
    const std::string read = "No such file or directory\nPOSIX: Failed to open file [" + m_missing + "].";
    const std::string write =
        "No such file or directory\nPOSIX: Failed to open file [" + m_missing + "] for read/write access.";

    EXPECT_EQ(read, Failure([&] { posix_file_t::OpenRead(m_missing); }));
    EXPECT_EQ(read, Failure([&] { posix_file_t::OpenByAccess(m_missing, true); }));
    EXPECT_EQ(read, Failure([&] { posix_file_t::OpenReadWithoutCache(m_missing); }));
    EXPECT_EQ(write, Failure([&] { posix_file_t::OpenReadWrite(m_missing); }));
    EXPECT_EQ(write, Failure([&] { posix_file_t::OpenByAccess(m_missing, false); }));
    EXPECT_EQ(write, Failure([&] { posix_file_t::OpenReadWriteSync(m_missing); }));
    EXPECT_EQ(write, Failure([&] { posix_file_t::OpenReadWriteWithoutCache(m_missing); }));
    EXPECT_NE(0, ::access(m_missing.c_str(), F_OK));
}

TEST_F(PosixFile, CreateOrOpenSaysSoWhenItFails)
{
    const std::string path = m_missing + "/file";
    EXPECT_EQ("No such file or directory\nPOSIX: Failed to create or open file [" + path + "].",
              Failure([&] { posix_file_t::CreateOrOpen(path); }));
}

TEST_F(PosixFile, FailureCarriesTheSystemsNumber)
{
    try
    {
        posix_file_t::OpenRead(m_missing);
        FAIL() << "nothing was thrown";
    }
    catch (const posix::errno_exc_t& e)
    {
        EXPECT_EQ(static_cast<std::uint32_t>(ENOENT), e.GetErrorCode());
    }
}

TEST_F(PosixFile, EmptyPathFailsInTheSystemCall)
{
    EXPECT_EQ("No such file or directory\nPOSIX: Failed to open file [].",
              Failure([] { posix_file_t::OpenRead(""); }));
    EXPECT_EQ("No such file or directory\nPOSIX: Failed to create or open file [].",
              Failure([] { posix_file_t::CreateOrOpen(""); }));
}

TEST_F(PosixFile, FolderOpensForReadingOnlyAndCannotBeRead)
{
    const std::string path = m_folder.path();
    char byte = 0;
    EXPECT_EQ("Is a directory\nPOSIX: Failed to read data from the file [" + path + "].",
              Failure([&] { posix_file_t::OpenRead(path)->ReadBytes(&byte, 1); }));
    EXPECT_EQ("Is a directory\nPOSIX: Failed to open file [" + path + "] for read/write access.",
              Failure([&] { posix_file_t::OpenReadWrite(path); }));
    EXPECT_EQ("Is a directory\nPOSIX: Failed to create or open file [" + path + "].",
              Failure([&] { posix_file_t::CreateOrOpen(path); }));
}

TEST_F(PosixFile, DanglingLinkIsCreatedThroughAndNotRead)
{
    const std::string link = LinkTo(m_path);
    EXPECT_EQ("No such file or directory\nPOSIX: Failed to open file [" + link + "].",
              Failure([&] { posix_file_t::OpenRead(link); }));
    posix_file_t::CreateOrOpen(link)->WriteText("through");
    EXPECT_EQ("through", ReadFile(m_path));
}

TEST_F(PosixFile, CircularLinkFails)
{
    const std::string link = LinkTo(m_folder / "link");
    EXPECT_EQ("Too many levels of symbolic links\nPOSIX: Failed to open file [" + link + "].",
              Failure([&] { posix_file_t::OpenRead(link); }));
}

TEST_F(PosixFile, AnyNameTheSystemTakesIsTaken)
{
    for (const std::string& name :
         {std::string("with blanks in it "), std::string("line\nfeed"), std::string("\xff\xfe no text"),
          std::string("%1 %2"), std::string(255, 'n')})
    {
        const posix_file_ptr_t file = posix_file_t::CreateOrOpen(m_folder / name);
        file->WriteText(name);
        EXPECT_EQ(name, ReadFile(m_folder / name));
        EXPECT_EQ(m_folder / name, file->GetPath().narrow());
    }
}

TEST_F(PosixFile, NameThatIsTooLongIsNamedInFull)
{
    const std::string path = m_folder / std::string(256, 'n');
    EXPECT_EQ("File name too long\nPOSIX: Failed to create or open file [" + path + "].",
              Failure([&] { posix_file_t::CreateOrOpen(path); }));
}

TEST_F(PosixFile, PathStaysInTheMessageByteByByte)
{
    const std::string path = m_missing + "/%1 \xff\n";
    EXPECT_EQ("No such file or directory\nPOSIX: Failed to open file [" + path + "].",
              Failure([&] { posix_file_t::OpenRead(path); }));
}

TEST_F(PosixFile, WidePathIsUtf8)
{
    const std::wstring wide_folder(m_folder.path().begin(), m_folder.path().end());
    const posix_file_ptr_t file = posix_file_t::CreateOrOpen(wide_folder + L"/\x20ac");
    file->WriteText("euro");
    EXPECT_EQ("euro", ReadFile(m_folder / "\xe2\x82\xac"));
    EXPECT_EQ(m_folder / "\xe2\x82\xac", file->GetPath().narrow());
    EXPECT_EQ(wide_folder + L"/\x20ac", file->GetPath().wide());
}

TEST_F(PosixFile, EveryFactoryTakesNarrowAndWidePaths)
{
    const std::wstring wide(m_path.begin(), m_path.end());
    WriteFile(m_path, "content");
    const auto paths = [&](auto open)
    {
        const posix_file_ptr_t files[] = {open(m_path), open(m_path.c_str()), open(wide), open(wide.c_str()),
                                          open(util::str_t(m_path))};
        std::string opened;
        for (const posix_file_ptr_t& file : files)
            opened += file->GetPath().narrow() == m_path ? "+" : "-";
        return opened;
    };
    EXPECT_EQ("+++++", paths([](const auto& path) { return posix_file_t::CreateOrOpen(path); }));
    EXPECT_EQ("+++++", paths([](const auto& path) { return posix_file_t::CreateWithPrealloc(path, 7); }));
    EXPECT_EQ("+++++", paths([](const auto& path) { return posix_file_t::OpenRead(path); }));
    EXPECT_EQ("+++++", paths([](const auto& path) { return posix_file_t::OpenReadWrite(path); }));
    EXPECT_EQ("+++++", paths([](const auto& path) { return posix_file_t::OpenByAccess(path, true); }));
    EXPECT_EQ("+++++", paths([](const auto& path) { return posix_file_t::OpenReadWriteSync(path); }));
    EXPECT_EQ("+++++", paths([](const auto& path) { return posix_file_t::OpenReadWithoutCache(path); }));

    // Not every file system opens a file without its cache.
    const std::wstring wide_missing(m_missing.begin(), m_missing.end());
    const std::string failure =
        "No such file or directory\nPOSIX: Failed to open file [" + m_missing + "] for read/write access.";
    EXPECT_EQ(failure, Failure([&] { posix_file_t::OpenReadWriteWithoutCache(wide_missing); }));
    EXPECT_EQ(failure, Failure([&] { posix_file_t::OpenReadWriteWithoutCache(wide_missing.c_str()); }));
    EXPECT_EQ(failure, Failure([&] { posix_file_t::OpenReadWriteWithoutCache(m_missing.c_str()); }));
}

TEST_F(PosixFile, WidePathThatCannotBeConvertedIsNoSystemFailure)
{
    const std::wstring bad(1, static_cast<wchar_t>(0xd800));
    EXPECT_THROW(posix_file_t::OpenRead(bad), exc::runtime_exc_t);
    EXPECT_THROW(posix_file_t::CreateOrOpen(bad), exc::runtime_exc_t);
}

TEST_F(PosixFile, DescriptorIsInheritedByChildProcesses)
{
    EXPECT_EQ(0, ::fcntl(Create()->GetDescriptor(), F_GETFD) & FD_CLOEXEC);
}

TEST_F(PosixFile, MemoryThatRunsOutLeavesNothingOpen)
{
    const util::str_t path = "/dev/null"; // short enough to need no memory of its own
    const int next = posix_file_t::OpenRead(path)->GetDescriptor();
    FailNextAllocation();
    EXPECT_THROW(posix_file_t::OpenRead(path), std::bad_alloc);
    EXPECT_EQ(next, posix_file_t::OpenRead(path)->GetDescriptor());
}

TEST_F(PosixFile, OperationsOfOtherPlatformsFailWithoutTouchingThePath)
{
    EXPECT_EQ(
        "[unimplemented] posix_file_ptr_t posix_file_t::CreateNewWithoutCache( const util::str_t& path, stream_size_t prealloc_size )",
        RuntimeFailure([&] { posix_file_t::CreateNewWithoutCache(m_missing, 1); }));
    EXPECT_EQ(
        "[unimplemented] posix_file_ptr_t posix_file_t::SparseFileCreate( const util::str_t& path, stream_size_t zeroesSize )",
        RuntimeFailure([&] { posix_file_t::SparseFileCreate(m_missing, 1); }));
    EXPECT_NE(0, ::access(m_missing.c_str(), F_OK));

    const posix_file_ptr_t file = Create("text");
    EXPECT_EQ(
        "[unimplemented] void posix_file_t::SparseFileSetZeroData( posix_file_ptr_t handle, stream_pos_t offset, stream_size_t length )",
        RuntimeFailure([&] { posix_file_t::SparseFileSetZeroData(file, 0, 4); }));
    EXPECT_EQ("text", ReadFile(m_path));
}

TEST_F(PosixFile, OperationsOfOtherPlatformsTakeWidePathsToo)
{
    EXPECT_EQ(
        "[unimplemented] posix_file_ptr_t posix_file_t::CreateNewWithoutCache( const util::str_t& path, stream_size_t prealloc_size )",
        RuntimeFailure([] { posix_file_t::CreateNewWithoutCache(L"missing", 1); }));
    EXPECT_EQ(
        "[unimplemented] posix_file_ptr_t posix_file_t::SparseFileCreate( const util::str_t& path, stream_size_t zeroesSize )",
        RuntimeFailure([] { posix_file_t::SparseFileCreate(L"missing", 1); }));
}

TEST_F(PosixFile, OperationsOfOtherPlatformsConvertTheirPathsFirst)
{
    const std::wstring bad(1, static_cast<wchar_t>(0xd800));
    const std::string failure = "Unicode string cannot be converted to multibyte UTF8 string.";
    EXPECT_EQ(failure, RuntimeFailure([&] { posix_file_t::CreateNewWithoutCache(bad, 1); }));
    EXPECT_EQ(failure, RuntimeFailure([&] { posix_file_t::SparseFileCreate(bad, 1); }));
}

// Writing

TEST_F(PosixFile, WriteBytesWritesAtThePositionAndMovesIt)
{
    const posix_file_ptr_t file = Create("0123456789");
    file->SeekFromBegin(3);
    file->WriteBytes(2, "abc");
    EXPECT_EQ("012ab56789", ReadFile(m_path));
    EXPECT_EQ(5, file->GetPosition());
}

TEST_F(PosixFile, WriteTextKeepsEveryByteAndEveryLength)
{
    for (const std::size_t size : {0u, 1u, 1023u, 1024u, 1025u, 2048u, 5000u})
    {
        std::string text;
        for (std::size_t i = 0; i < size; ++i)
            text += static_cast<char>(i % 256);
        Create()->WriteText(text);
        EXPECT_EQ(text, ReadFile(m_path)) << size;
    }
}

TEST_F(PosixFile, WriteWithoutPermissionFails)
{
    WriteFile(m_path, "");
    EXPECT_EQ("Bad file descriptor\nPOSIX: Failed to write data to the file [" + m_path + "].",
              Failure([&] { posix_file_t::OpenRead(m_path)->WriteText("x"); }));
}

TEST_F(PosixFile, WriteToAFullDeviceFails)
{
    EXPECT_EQ("No space left on device\nPOSIX: Failed to write data to the file [/dev/full].",
              Failure([] { posix_file_t::OpenReadWrite("/dev/full")->WriteBytes(1, "x"); }));
    EXPECT_EQ("No space left on device\nPOSIX: Failed to write data to the file [/dev/full].",
              Failure([] { posix_file_t::OpenReadWrite("/dev/full")->WriteText("x"); }));
}

// A thread's first calls make its counters.
TEST_F(PosixFile, ReadingAndWritingTakeNoMoreMemory)
{
    const posix_file_ptr_t file = Create();
    const std::string text(3000, 't');
    char buffer[100];
    file->WriteText("first");
    file->ReadBytes(buffer, 1);
    FailNextAllocation();
    file->WriteText(text);
    file->WriteBytes(4, "tail");
    file->SeekFromBegin(0);
    const stream_size_t count = file->ReadBytes(buffer, sizeof(buffer));
    EXPECT_FALSE(HasAllocationFailed());
    EXPECT_EQ(100, count);
}

// Reading

TEST_F(PosixFile, ReadBytesReadsFromThePosition)
{
    const posix_file_ptr_t file = Create("0123456789");
    char buffer[] = "....";
    EXPECT_EQ(4, file->ReadBytes(buffer, 4));
    EXPECT_STREQ("0123", buffer);
    EXPECT_EQ(2, file->ReadBytes(buffer, 2));
    EXPECT_STREQ("4523", buffer);
    EXPECT_EQ(6, file->GetPosition());
}

TEST_F(PosixFile, ReadBytesReturnsLessAtTheEndAndThenNothing)
{
    const posix_file_ptr_t file = Create("0123456789");
    char buffer[] = "............";
    EXPECT_EQ(10, file->ReadBytes(buffer, 12));
    EXPECT_STREQ("0123456789..", buffer);
    EXPECT_EQ(0, file->ReadBytes(buffer, 12));
}

TEST_F(PosixFile, ReadAllTextTakesWhatIsLeft)
{
    const posix_file_ptr_t file = Create("0123456789");
    file->SeekFromBegin(4);
    std::string text = "before";
    EXPECT_EQ(6, file->ReadAllText(text));
    EXPECT_EQ("456789", text);
}

TEST_F(PosixFile, ReadAllTextKeepsEveryByteAndEveryLength)
{
    for (const std::size_t size : {1u, 1023u, 1024u, 1025u, 2048u, 5000u})
    {
        std::string content;
        for (std::size_t i = 0; i < size; ++i)
            content += static_cast<char>(i % 256);
        std::string text;
        EXPECT_EQ(static_cast<stream_size_t>(size), Create(content)->ReadAllText(text));
        EXPECT_EQ(content, text) << size;
    }
}

TEST_F(PosixFile, ReadAllTextOfAnEmptyFileClearsTheText)
{
    std::string text = "before";
    EXPECT_EQ(0, Create()->ReadAllText(text));
    EXPECT_EQ("", text);
}

TEST_F(PosixFile, ReadAllTextThatFailsHasClearedTheText)
{
    std::string text = "before";
    EXPECT_EQ("Bad file descriptor\nPOSIX: Failed to read data from the file [" + m_path + "].",
              Failure([&] { Closed()->ReadAllText(text); }));
    EXPECT_EQ("", text);
}

// Signals

TEST_F(PosixFileInterrupted, LongWriteLosesAndRepeatsNothing)
{
    std::string read(kSize, '\0');
    std::thread reader(
        [&]
        {
            interrupting_timer_t::Block();
            WaitUntilFull();
            interrupting_timer_t::WaitForMore(5);
            EXPECT_EQ(static_cast<stream_size_t>(kSize), m_fifo->ReadBytes(read.data(), kSize));
        });
    const interrupting_timer_t timer;
    posix_file_t::OpenReadWrite(m_path)->WriteBytes(kSize, m_bytes.data());
    reader.join();
    EXPECT_TRUE(m_bytes == read);
}

TEST_F(PosixFileInterrupted, LongReadLosesAndRepeatsNothing)
{
    std::string read(kSize, '\0');
    std::thread writer(
        [&]
        {
            interrupting_timer_t::Block();
            m_fifo->WriteBytes(1, m_bytes.data());
            WaitUntilEmpty();
            interrupting_timer_t::WaitForMore(5);
            m_fifo->WriteBytes(kSize - 1, m_bytes.data() + 1);
        });
    const interrupting_timer_t timer;
    EXPECT_EQ(static_cast<stream_size_t>(kSize),
              posix_file_t::OpenReadWrite(m_path)->ReadBytes(read.data(), kSize));
    writer.join();
    EXPECT_TRUE(m_bytes == read);
}

TEST_F(PosixFile, PipeOpensThroughItsDescriptorsName)
{
    int ends[2];
    ASSERT_EQ(0, ::pipe(ends));
    posix_file_t::OpenReadWrite("/proc/self/fd/" + std::to_string(ends[1]))->WriteText("text");
    ::close(ends[1]);
    std::string text;
    posix_file_t::OpenRead("/proc/self/fd/" + std::to_string(ends[0]))->ReadAllText(text);
    ::close(ends[0]);
    EXPECT_EQ("text", text);
}

// Sizes and positions

TEST_F(PosixFile, SetSizeCutsAndGrowsWithZeros)
{
    const posix_file_ptr_t file = Create("0123456789");
    file->set_size(4);
    EXPECT_EQ("0123", ReadFile(m_path));
    file->set_size(6);
    EXPECT_EQ(std::string("0123\0\0", 6), ReadFile(m_path));
    EXPECT_EQ(6, file->GetSize());
    EXPECT_EQ(0, file->GetPosition());
}

TEST_F(PosixFile, SetSizeFailureNamesTheSizeAndHasNoFullStop)
{
    EXPECT_EQ("Invalid argument\nset_size failed. File: [" + m_path + "]. New size: [-1]",
              Failure([&] { Create()->set_size(-1); }));
    EXPECT_EQ("Bad file descriptor\nset_size failed. File: [" + m_path + "]. New size: [1048576]",
              Failure([&] { Closed()->set_size(1048576); }));
}

TEST_F(PosixFile, FilesBeyondFourGibibytesKeepSizesAndPositions)
{
    const posix_file_ptr_t file = Create();
    file->set_size(5 * kGiB);
    EXPECT_EQ(5368709120, file->GetSize());
    EXPECT_EQ(5368709110, file->SeekFromEnd(-10));
    file->WriteText("0123456789abc");
    EXPECT_EQ(5368709123, file->GetSize());
    EXPECT_EQ(5368709123, file->GetPosition());

    EXPECT_EQ(4294967296, file->SeekFromBegin(4 * kGiB));
    EXPECT_EQ(5368709119, file->SeekFromCurrent(kGiB - 1));
    std::string text;
    EXPECT_EQ(4, file->ReadAllText(text));
    EXPECT_EQ("9abc", text);
}

TEST_F(PosixFile, SeekReturnsTheNewPosition)
{
    const posix_file_ptr_t file = Create("0123456789");
    EXPECT_EQ(0, file->GetPosition());
    EXPECT_EQ(4, file->Seek(4, SEEK_SET));
    EXPECT_EQ(3, file->Seek(-1, SEEK_CUR));
    EXPECT_EQ(12, file->Seek(2, SEEK_END));
    EXPECT_EQ(7, file->SeekFromBegin(7));
    EXPECT_EQ(9, file->SeekFromCurrent(2));
    EXPECT_EQ(8, file->SeekFromEnd(-2));
    EXPECT_EQ(8, file->GetPosition());
}

TEST_F(PosixFile, SeekFailureNamesDistanceAndMethod)
{
    const posix_file_ptr_t file = Create();
    const std::string begin =
        "Invalid argument\nPOSIX: Seek operation has failed. File: [" + m_path + "]. Distance to move: ";
    EXPECT_EQ(begin + "[-1]. Move method: [SEEK_SET].", Failure([&] { file->SeekFromBegin(-1); }));
    EXPECT_EQ(begin + "[-1048576]. Move method: [SEEK_CUR].",
              Failure([&] { file->SeekFromCurrent(-1048576); }));
    EXPECT_EQ(begin + "[-2]. Move method: [SEEK_END].", Failure([&] { file->SeekFromEnd(-2); }));
    EXPECT_EQ(begin + "[5]. Move method: [7].", Failure([&] { file->Seek(5, 7); }));
}

TEST_F(PosixFile, PositionOfAPipeFailsAsASeekByNothing)
{
    ASSERT_EQ(0, ::mkfifo(m_path.c_str(), 0600));
    const posix_file_ptr_t file = posix_file_t::OpenReadWrite(m_path);
    EXPECT_EQ("Illegal seek\nPOSIX: Seek operation has failed. File: [" + m_path +
                  "]. Distance to move: [0]. Move method: [SEEK_CUR].",
              Failure([&] { file->GetPosition(); }));
}

TEST_F(PosixFile, SeekMethodWithoutANameIsItsNumber)
{
    EXPECT_EQ("SEEK_SET", posix_file_t::SeekMethodName(0));
    EXPECT_EQ("SEEK_CUR", posix_file_t::SeekMethodName(1));
    EXPECT_EQ("SEEK_END", posix_file_t::SeekMethodName(2));
    EXPECT_EQ("7", posix_file_t::SeekMethodName(7));
    EXPECT_EQ("-1", posix_file_t::SeekMethodName(-1));
}

// The end

TEST_F(PosixFile, CloseReturnsTheCallsResult)
{
    const posix_file_ptr_t file = Create();
    const int descriptor = file->GetDescriptor();
    EXPECT_EQ(0, file->Close());
    EXPECT_EQ(-1, file->GetDescriptor());
    EXPECT_EQ(-1, ::fcntl(descriptor, F_GETFD));
}

TEST_F(PosixFile, SecondCloseFails)
{
    EXPECT_EQ("Bad file descriptor\nPOSIX: Failed to close file. File: [" + m_path + "].",
              Failure([&] { Closed()->Close(); }));
}

TEST_F(PosixFile, CloseThatFailsHasClosedAllTheSame)
{
    const posix_file_ptr_t file = Create();
    ASSERT_EQ(0, ::close(file->GetDescriptor()));
    EXPECT_THROW(file->Close(), posix::errno_exc_t);
    EXPECT_EQ(-1, file->GetDescriptor());
}

TEST_F(PosixFile, EveryOperationFailsAfterClose)
{
    const posix_file_ptr_t file = Closed();
    const std::string bad = "Bad file descriptor\n";
    char byte = 0;
    EXPECT_EQ(bad + "POSIX: Failed to write data to the file [" + m_path + "].",
              Failure([&] { file->WriteBytes(1, "x"); }));
    EXPECT_EQ(bad + "POSIX: Failed to read data from the file [" + m_path + "].",
              Failure([&] { file->ReadBytes(&byte, 1); }));
    EXPECT_EQ(bad + "fstat64(" + m_path + ") has failed.", Failure([&] { file->GetSize(); }));
    EXPECT_EQ(bad + "set_size failed. File: [" + m_path + "]. New size: [0]",
              Failure([&] { file->set_size(0); }));
    EXPECT_EQ(bad + "POSIX: Seek operation has failed. File: [" + m_path +
                  "]. Distance to move: [3]. Move method: [SEEK_END].",
              Failure([&] { file->SeekFromEnd(3); }));
    EXPECT_EQ(bad + "POSIX: Seek operation has failed. File: [" + m_path +
                  "]. Distance to move: [0]. Move method: [SEEK_CUR].",
              Failure([&] { file->GetPosition(); }));
}

TEST_F(PosixFile, FlushReachesTheSystemInAProgramThatDefinesNoFsync)
{
    EXPECT_NO_THROW(Create("text")->Flush());
    EXPECT_EQ("Bad file descriptor\nPOSIX: Failed to flush file buffers. File: [" + m_path + "].",
              Failure([&] { Closed()->Flush(); }));
    EXPECT_EQ("Invalid argument\nPOSIX: Failed to flush file buffers. File: [/dev/null].",
              Failure([] { posix_file_t::OpenReadWrite("/dev/null")->Flush(); }));
}

TEST_F(PosixFile, LastHandleClosesTheDescriptor)
{
    posix_file_ptr_t file = Create();
    const posix_file_ptr_t other = file;
    const int descriptor = file->GetDescriptor();
    file.reset();
    EXPECT_NE(-1, ::fcntl(descriptor, F_GETFD));
}

TEST_F(PosixFile, DestructorClosesTheDescriptor)
{
    const int descriptor = Create()->GetDescriptor();
    EXPECT_EQ(-1, ::fcntl(descriptor, F_GETFD));
}

TEST_F(PosixFile, DestructorIgnoresAFailingClose)
{
    posix_file_ptr_t file = Create();
    ASSERT_EQ(0, ::close(file->GetDescriptor()));
    EXPECT_NO_THROW(file.reset());
}

TEST_F(PosixFile, DestructorAfterCloseClosesNothing)
{
    posix_file_ptr_t file = Create();
    const int descriptor = file->GetDescriptor();
    file->Close();
    ASSERT_EQ(descriptor, ::open(m_path.c_str(), O_RDONLY));
    file.reset();
    EXPECT_EQ(0, ::close(descriptor));
}

TEST_F(PosixFile, DestructorLeavesDescriptorZeroOpen)
{
    const int standard_input = ::dup(0);
    ::close(0);
    posix_file_ptr_t file = Create();
    ASSERT_EQ(0, file->GetDescriptor());
    file.reset();
    EXPECT_NE(-1, ::fcntl(0, F_GETFD));
    ::dup2(standard_input, 0);
    ::close(standard_input);
}

TEST_F(PosixFile, DescriptorZeroIsClosedByClose)
{
    const int standard_input = ::dup(0);
    ::close(0);
    const posix_file_ptr_t file = Create("text");
    ASSERT_EQ(0, file->GetDescriptor());
    EXPECT_EQ(4, file->GetSize());
    EXPECT_EQ(0, file->Close());
    EXPECT_EQ(-1, ::fcntl(0, F_GETFD));
    ::dup2(standard_input, 0);
    ::close(standard_input);
}

// By path

TEST_F(PosixFile, OwnersAndPermissionsAreTheTargets)
{
    WriteFile(m_path, "");
    const std::string link = LinkTo(m_path);
    ASSERT_EQ(0, ::chmod(m_path.c_str(), 06741));
    for (const std::string& path : {m_path, link})
    {
        EXPECT_EQ(::geteuid(), posix_file_t::GetOwnerUid(path.c_str()));
        EXPECT_EQ(::getegid(), posix_file_t::GetOwnerGid(path.c_str()));
        EXPECT_EQ(06741u, posix_file_t::GetPermissions(path.c_str()));
    }
}

TEST_F(PosixFile, SetPermissionsFollowsALink)
{
    WriteFile(m_path, "");
    posix_file_t::SetPermissions(LinkTo(m_path).c_str(), 01751);
    EXPECT_EQ(01751u, posix_file_t::GetPermissions(m_path.c_str()));
}

TEST_F(PosixFile, IsSymlinkIsTrueForLinksAlone)
{
    WriteFile(m_path, "");
    ASSERT_EQ(0, ::mkfifo(m_missing.c_str(), 0600));
    EXPECT_TRUE(posix_file_t::IsSymlink(LinkTo("dangling").c_str()));
    EXPECT_FALSE(posix_file_t::IsSymlink(m_path.c_str()));
    EXPECT_FALSE(posix_file_t::IsSymlink(m_missing.c_str()));
    EXPECT_FALSE(posix_file_t::IsSymlink(m_folder.path().c_str()));
}

TEST_F(PosixFile, OwnerOfAPathSaysWhetherItIsALink)
{
    WriteFile(m_path, "");
    bool is_link = false;
    uid_t uid = ~::geteuid();
    gid_t gid = ~::getegid();
    posix_file_t::GetLinkOwner(LinkTo("dangling").c_str(), is_link, uid, gid);
    EXPECT_TRUE(is_link);
    EXPECT_EQ(::geteuid(), uid);
    EXPECT_EQ(::getegid(), gid);
    posix_file_t::GetLinkOwner(m_path.c_str(), is_link, uid, gid);
    EXPECT_FALSE(is_link);
}

TEST_F(PosixFile, FailuresByPathNameThePath)
{
    const char* const path = m_missing.c_str();
    const std::string stat = "No such file or directory\nstat64(" + m_missing + ") has failed.";
    EXPECT_EQ(stat, Failure([&] { posix_file_t::GetOwnerUid(path); }));
    EXPECT_EQ(stat, Failure([&] { posix_file_t::GetOwnerGid(path); }));
    EXPECT_EQ(stat, Failure([&] { posix_file_t::GetPermissions(path); }));
    EXPECT_EQ(stat, Failure([&] { posix_file_t::GetFileTimes(path, nullptr, nullptr); }));
    EXPECT_EQ("No such file or directory\nchmod(" + m_missing + ") has failed.",
              Failure([&] { posix_file_t::SetPermissions(path, 0600); }));
}

TEST_F(PosixFile, FailuresOfLinkCallsNameTheCallsThatFollowLinks)
{
    const char* const path = m_missing.c_str();
    const std::string stat = "No such file or directory\nstat64(" + m_missing + ") has failed.";
    bool is_link = true;
    uid_t uid = 1;
    gid_t gid = 2;
    EXPECT_EQ(stat, Failure([&] { posix_file_t::IsSymlink(path); }));
    EXPECT_EQ(stat, Failure([&] { posix_file_t::GetLinkOwner(path, is_link, uid, gid); }));
    EXPECT_EQ("No such file or directory\nchown(" + m_missing + ") has failed.",
              Failure([&] { posix_file_t::SetOwner(path, 1, 2); }));
    EXPECT_TRUE(is_link);
    EXPECT_EQ(1u, uid);
    EXPECT_EQ(2u, gid);
}

TEST_F(PosixFile, LinksThatAreCallsOnTheTargetFailWhenTheyDangle)
{
    const std::string link = LinkTo("dangling");
    EXPECT_EQ("No such file or directory\nstat64(" + link + ") has failed.",
              Failure([&] { posix_file_t::GetOwnerUid(link.c_str()); }));
    EXPECT_EQ("No such file or directory\nchmod(" + link + ") has failed.",
              Failure([&] { posix_file_t::SetPermissions(link.c_str(), 0600); }));
    EXPECT_EQ(0, posix_file_t::SetOwner(link.c_str(), ::geteuid(), ::getegid()));
}

TEST_F(PosixFile, TimesAreWholeSecondsOfTheTarget)
{
    WriteFile(m_path, "");
    const std::string link = LinkTo(m_path);
    posix_file_t::SetFileTimes(link, 1000000001, 1100000002);

    std::time_t accessed = 0;
    std::time_t modified = 0;
    posix_file_t::GetFileTimes(link, &accessed, &modified);
    EXPECT_EQ(1000000001, accessed);
    EXPECT_EQ(1100000002, modified);

    struct stat info = {};
    ASSERT_EQ(0, ::stat(m_path.c_str(), &info));
    EXPECT_EQ(0, info.st_atim.tv_nsec);
    EXPECT_EQ(0, info.st_mtim.tv_nsec);
    ASSERT_EQ(0, ::lstat(link.c_str(), &info));
    EXPECT_NE(1100000002, info.st_mtime);
}

TEST_F(PosixFile, TimesThatNobodyAsksForArePassedOver)
{
    WriteFile(m_path, "");
    posix_file_t::SetFileTimes(m_path, 11, 22);
    std::time_t accessed = 0;
    std::time_t modified = 0;
    posix_file_t::GetFileTimes(m_path, &accessed, nullptr);
    posix_file_t::GetFileTimes(m_path, nullptr, &modified);
    posix_file_t::GetFileTimes(m_path, nullptr, nullptr);
    EXPECT_EQ(11, accessed);
    EXPECT_EQ(22, modified);
}

TEST_F(PosixFile, TimesTakeNarrowAndWidePaths)
{
    WriteFile(m_path, "");
    const std::wstring wide(m_path.begin(), m_path.end());
    std::time_t modified = 0;
    posix_file_t::SetFileTimes(wide, 1, 2);
    posix_file_t::GetFileTimes(m_path.c_str(), nullptr, &modified);
    EXPECT_EQ(2, modified);
    posix_file_t::SetFileTimes(util::str_t(m_path), 3, 4);
    posix_file_t::GetFileTimes(wide, nullptr, &modified);
    EXPECT_EQ(4, modified);
}

TEST_F(PosixFile, SetFileTimesFailureIsGluedAroundThePath)
{
    const std::string path = m_missing + "%01";
    EXPECT_EQ("No such file or directory\nFailed to set access time and modification time for item '" + path +
                  "'",
              Failure([&] { posix_file_t::SetFileTimes(path, 1, 2); }));
}

TEST_F(PosixFile, ReadSymlinkReturnsTargetsOfEveryLength)
{
    for (const std::size_t size : {1u, 255u, 256u, 257u, 512u, 4095u})
    {
        const std::string target(size, 't');
        const std::string link = LinkTo(target);
        EXPECT_EQ(target, posix_file_t::ReadSymlink(link)) << size;
        ASSERT_EQ(0, ::unlink(link.c_str()));
    }
}

TEST_F(PosixFile, ReadSymlinkAnswersInTheFormOfThePath)
{
    const std::string link = LinkTo("\xe2\x82\xac");
    EXPECT_EQ(L"\x20ac", posix_file_t::ReadSymlink(std::wstring(link.begin(), link.end())));
    EXPECT_EQ(util::str_t("\xe2\x82\xac"), posix_file_t::ReadSymlink(util::str_t(link)));
}

TEST_F(PosixFile, ReadSymlinkTakesLiterals)
{
    static_assert(std::is_same_v<std::string, decltype(posix_file_t::ReadSymlink("literal"))>);
    static_assert(std::is_same_v<std::wstring, decltype(posix_file_t::ReadSymlink(L"literal"))>);
    const std::string self = std::to_string(::getpid());
    EXPECT_EQ(self, posix_file_t::ReadSymlink("/proc/self"));
    EXPECT_EQ(std::wstring(self.begin(), self.end()), posix_file_t::ReadSymlink(L"/proc/self"));
}

TEST_F(PosixFile, ReadSymlinkKeepsTheTargetByteByByte)
{
    const std::string link = LinkTo("\xff\n %1");
    EXPECT_EQ("\xff\n %1", posix_file_t::ReadSymlink(link));
    EXPECT_EQ("\xff\n %1", posix_file_t::ReadSymlink(util::str_t(link)).narrow());
    EXPECT_THROW(posix_file_t::ReadSymlink(std::wstring(link.begin(), link.end())), exc::runtime_exc_t);
}

TEST_F(PosixFile, ReadSymlinkFailureNamesTheLink)
{
    WriteFile(m_path, "");
    EXPECT_EQ("Invalid argument\nreadlink(" + m_path + ") has failed.",
              Failure([&] { posix_file_t::ReadSymlink(m_path); }));
    EXPECT_EQ("No such file or directory\nreadlink(" + m_missing + ") has failed.",
              Failure([&] { posix_file_t::ReadSymlink(util::str_t(m_missing)); }));
    EXPECT_EQ("No such file or directory\nreadlink(missing) has failed.",
              Failure([] { posix_file_t::ReadSymlink(std::wstring(L"missing")); }));
}
