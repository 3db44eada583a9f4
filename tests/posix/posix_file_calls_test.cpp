// What the file asks of the system, call by call. The functions below stand in the place of the C library's:
// each notes the call and answers as the test told it to, or passes the call on.

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <deque>
#include <functional>
#include <string>
#include <vector>

#include <boost/make_shared.hpp>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "nelvo/core/exc/errno_exc.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/core/util/format.h"
#include "nelvo/logging/log.h"
#include "nelvo/monitoring/thread_counters.h"
#include "nelvo/posix/posix_file.h"
#include "tests/support/failing_memory.h"
#include "tests/support/lines_receiver.h"
#include "tests/support/set_clock.h"
#include "tests/support/temp_folder.h"

using posix::posix_file_t;

namespace
{

// The answer of one call: a count or -1, with the number to leave in errno. A transfer of at most that
// many bytes is then really made.
struct answer_t
{
    long result;
    int error;
};

answer_t Fail(int error) { return {-1, error}; }

answer_t Take(long count) { return {count, 0}; }

struct record_t
{
    std::vector<std::string> calls;
    std::deque<answer_t> answers;
    std::function<void()> between;
    // How many calls got memory with something in it.
    int unclear = 0;
};

// Null while nobody listens.
record_t* g_record = nullptr;

std::string Octal(unsigned value)
{
    char text[16];
    std::snprintf(text, sizeof(text), "0%o", value);
    return text;
}

std::string Hex(unsigned long value)
{
    char text[32];
    std::snprintf(text, sizeof(text), "0x%lX", value);
    return text;
}

// Notes the call. True if the test has an answer to it.
bool Answered(const std::string& call, answer_t& answer)
{
    if (g_record == nullptr)
        return false;
    g_record->calls.push_back(call);
    if (g_record->between)
        g_record->between();
    if (g_record->answers.empty())
        return false;
    answer = g_record->answers.front();
    g_record->answers.pop_front();
    return true;
}

// The memory that a call is to fill. The compiler is not to know that it is read here.
[[gnu::noinline]] void LookAt(void* memory, std::size_t size)
{
    const auto* const begin = static_cast<const char*>(memory);
    if (g_record != nullptr && std::any_of(begin, begin + size, [](char byte) { return byte != 0; }))
        ++g_record->unclear;
}

// What an action finds on the stack where it writes nothing itself.
[[gnu::noinline]] void LeaveUsedStack()
{
    volatile char bytes[16384];
    for (volatile char& byte : bytes)
        byte = 'x';
}

// A question about a file. While somebody listens, the answer is made up.
int Stat(const char* name, const char* path, struct stat64* info, int flags)
{
    if (g_record == nullptr)
        return ::fstatat64(AT_FDCWD, path, info, flags);
    g_record->calls.push_back(util::Format("%1(%2)", name, path));
    LookAt(info, sizeof(*info));
    info->st_uid = 1234;
    info->st_gid = 5678;
    info->st_mode = S_IFLNK | 06741;
    return 0;
}

// A call that the test answers with a failure or in full.
template <class... Args>
long Call(const std::string& text, long number, Args... args)
{
    answer_t answer = {};
    if (!Answered(text, answer))
        return ::syscall(number, args...);
    errno = answer.error;
    return answer.result;
}

// A read or write, which may be told to be short.
template <class Data>
long Transfer(const char* name, long number, int descriptor, Data* data, std::size_t size)
{
    answer_t answer = {};
    if (!Answered(util::Format("%1(%2)", name, size), answer))
        return ::syscall(number, descriptor, data, size);
    if (answer.result > 0)
        return ::syscall(number, descriptor, data, answer.result);
    errno = answer.error;
    return answer.result;
}

} // namespace

extern "C" int open64(const char* path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const unsigned mode = va_arg(arguments, unsigned);
    va_end(arguments);
    const std::string shown_mode = (flags & O_CREAT) != 0 ? ", " + Octal(mode) : "";
    return static_cast<int>(
        Call("open64(" + Hex(static_cast<unsigned>(flags)) + shown_mode + ")", SYS_open, path, flags, mode));
}

extern "C" int close(int descriptor) { return static_cast<int>(Call("close", SYS_close, descriptor)); }

extern "C" ssize_t read(int descriptor, void* data, std::size_t size)
{
    LookAt(data, size);
    return Transfer("read", SYS_read, descriptor, data, size);
}

extern "C" ssize_t write(int descriptor, const void* data, std::size_t size)
{
    return Transfer("write", SYS_write, descriptor, data, size);
}

// Two requests come with a block of two numbers.
extern "C" int ioctl(int descriptor, unsigned long request, ...) noexcept
{
    va_list arguments;
    va_start(arguments, request);
    const auto* const block = va_arg(arguments, const std::uint64_t*);
    va_end(arguments);
    const bool has_block = request == 0xBBD || request == 0xBBC;
    const std::string shown = has_block ? util::Format(", {%1, %2}", block[0], Hex(block[1])) : "";
    return static_cast<int>(
        Call("ioctl(" + Hex(request) + shown + ")", SYS_ioctl, descriptor, request, block));
}

extern "C" int ftruncate64(int descriptor, off64_t size) noexcept
{
    return static_cast<int>(Call(util::Format("ftruncate64(%1)", size), SYS_ftruncate, descriptor, size));
}

extern "C" off64_t lseek64(int descriptor, off64_t distance, int method) noexcept
{
    return Call("lseek64", SYS_lseek, descriptor, distance, method);
}

extern "C" int fsync(int descriptor) { return static_cast<int>(Call("fsync", SYS_fsync, descriptor)); }

extern "C" ssize_t readlink(const char* path, char* buffer, std::size_t size) noexcept
{
    LookAt(buffer, size);
    return Call(util::Format("readlink(%1)", size), SYS_readlink, path, buffer, size);
}

extern "C" int fstat64(int descriptor, struct stat64* info) noexcept
{
    LookAt(info, sizeof(*info));
    return static_cast<int>(Call("fstat64", SYS_fstat, descriptor, info));
}

extern "C" int stat64(const char* path, struct stat64* info) noexcept
{
    return Stat("stat64", path, info, 0);
}

extern "C" int lstat64(const char* path, struct stat64* info) noexcept
{
    return Stat("lstat64", path, info, AT_SYMLINK_NOFOLLOW);
}

extern "C" int lchown(const char* path, uid_t uid, gid_t gid) noexcept
{
    return static_cast<int>(
        Call(util::Format("lchown(%1, %2, %3)", path, uid, gid), SYS_lchown, path, uid, gid));
}

// What fortified callers call instead.
// NOLINTBEGIN(clang-diagnostic-reserved-identifier): the linker's names.
extern "C" ssize_t __read_chk(int descriptor, void* data, std::size_t size, std::size_t)
{
    return ::read(descriptor, data, size);
}

extern "C" ssize_t __readlink_chk(const char* path, char* buffer, std::size_t size, std::size_t) noexcept
{
    return ::readlink(path, buffer, size);
}
// NOLINTEND(clang-diagnostic-reserved-identifier)

namespace
{

using calls_t = std::vector<std::string>;

class PosixFileCalls : public testing::Test
{
protected:
    PosixFileCalls()
    {
        WriteFile(m_path, "0123456789");
        m_file = posix_file_t::OpenReadWrite(m_path);
    }

    // The calls that the action makes while the system answers as given, and then as it likes.
    template <class Action>
    calls_t Calls(std::deque<answer_t> answers, Action action)
    {
        record_t record;
        record.answers = std::move(answers);
        record.between = m_between;
        m_failure.clear();
        LeaveUsedStack();
        g_record = &record;
        try
        {
            action();
        }
        catch (const posix::errno_exc_t& e)
        {
            m_failure = e.what();
        }
        catch (const exc::runtime_exc_t& e)
        {
            m_failure = std::string("no system failure: ") + e.what();
        }
        g_record = nullptr;
        m_unclear = record.unclear;
        return record.calls;
    }

    template <class Action>
    calls_t Calls(Action action)
    {
        return Calls({}, action);
    }

    // The one call of a factory; the file's end is not looked at.
    template <class Open>
    std::string Opening(Open open)
    {
        posix_file_ptr_t file;
        const calls_t calls = Calls([&] { file = open(); });
        return calls.size() == 1 ? calls.front() : "not one call";
    }

    temp_folder_t m_folder;
    const std::string m_path = m_folder / "file";
    posix_file_ptr_t m_file;
    std::function<void()> m_between;
    std::string m_failure;
    int m_unclear = 0;
};

// Each call takes a millisecond, and calls are told by the time they are counted with.
class PosixFileCounting : public PosixFileCalls
{
protected:
    PosixFileCounting()
    {
        m_between = [this] { m_clock.Advance(1'000'000); };
    }

    void Count(std::deque<answer_t> answers, const std::function<void()>& action)
    {
        for (auto* counters : {&workload::ReadCounters(), &workload::WriteCounters()})
        {
            counters->Stop(0);
            Counted(*counters);
        }
        Calls(std::move(answers), action);
    }

    // What has been counted, after the start that closes the last call.
    static std::string Counted(workload::CThreadCounters& counters)
    {
        std::uint64_t busy = 0;
        std::uint64_t bytes = 0;
        counters.Start();
        counters.Collect(busy, bytes);
        return util::Format("%1 calls, %2 bytes", busy / 1000, bytes);
    }

    set_clock_t m_clock{1'700'000'000};
};

class PosixFilePreallocation : public PosixFileCalls
{
public:
    PosixFilePreallocation() { logging::GetProcessLog()->set_receiver(m_log); }
    ~PosixFilePreallocation() override { logging::GetProcessLog()->set_receiver({}); }

protected:
    calls_t Create(stream_size_t size, std::deque<answer_t> answers)
    {
        m_created.reset();
        answers.push_front(Take(::dup(m_file->GetDescriptor())));
        return Calls(std::move(answers), [&] { m_created = posix_file_t::CreateWithPrealloc(m_path, size); });
    }

    std::string Logged() const { return WithoutHeads(m_log->text()); }

    boost::shared_ptr<lines_receiver_t> m_log = boost::make_shared<lines_receiver_t>();
    posix_file_ptr_t m_created;
};

} // namespace

TEST_F(PosixFileCalls, EachFactoryHasItsFlagsAndCreationItsMode)
{
    EXPECT_EQ("open64(0x42, 0666)", Opening([&] { return posix_file_t::CreateOrOpen(m_path); }));
    EXPECT_EQ("open64(0x42, 0666)", Opening([&] { return posix_file_t::CreateOrOpen(m_path, true); }));
    EXPECT_EQ("open64(0x2)", Opening([&] { return posix_file_t::OpenReadWrite(m_path); }));
    EXPECT_EQ("open64(0x0)", Opening([&] { return posix_file_t::OpenRead(m_path); }));
    EXPECT_EQ("open64(0x0)", Opening([&] { return posix_file_t::OpenRead(m_path, true); }));
    EXPECT_EQ("open64(0x0)", Opening([&] { return posix_file_t::OpenByAccess(m_path, true); }));
    EXPECT_EQ("open64(0x2)", Opening([&] { return posix_file_t::OpenByAccess(m_path, false); }));
    EXPECT_EQ("open64(0x101002)", Opening([&] { return posix_file_t::OpenReadWriteSync(m_path); }));
}

TEST_F(PosixFileCalls, OnlyTheWritableFormWithoutCacheBypassesTheCache)
{
    EXPECT_EQ("open64(0x101000)", Opening([&] { return posix_file_t::OpenReadWithoutCache(m_path); }));
    EXPECT_EQ(calls_t{"open64(0x105002)"},
              Calls({Fail(EINVAL)}, [&] { posix_file_t::OpenReadWriteWithoutCache(m_path); }));
    EXPECT_EQ("Invalid argument\nPOSIX: Failed to open file [" + m_path + "] for read/write access.",
              m_failure);
}

TEST_F(PosixFileCalls, OperationsOfOtherPlatformsMakeNoCall)
{
    EXPECT_EQ(calls_t(), Calls([&] { posix_file_t::CreateNewWithoutCache(m_path, 1); }));
    EXPECT_EQ(calls_t(), Calls([&] { posix_file_t::SparseFileCreate(m_path, 1); }));
    EXPECT_EQ(calls_t(), Calls([&] { posix_file_t::SparseFileSetZeroData(m_file, 0, 1); }));
}

TEST_F(PosixFileCalls, NothingButReadsAndWritesIsTriedAgainAfterASignal)
{
    const std::deque<answer_t> interrupted = {Fail(EINTR)};
    const auto failure = [&](const std::string& text) { return "Interrupted system call\n" + text; };

    EXPECT_EQ(calls_t{"open64(0x0)"}, Calls(interrupted, [&] { posix_file_t::OpenRead(m_path); }));
    EXPECT_EQ(failure("POSIX: Failed to open file [" + m_path + "]."), m_failure);
    EXPECT_EQ(calls_t{"ftruncate64(7)"}, Calls(interrupted, [&] { m_file->set_size(7); }));
    EXPECT_EQ(failure("set_size failed. File: [" + m_path + "]. New size: [7]"), m_failure);
    EXPECT_EQ(calls_t{"fstat64"}, Calls(interrupted, [&] { m_file->GetSize(); }));
    EXPECT_EQ(failure("fstat64(" + m_path + ") has failed."), m_failure);
    EXPECT_EQ(calls_t{"lseek64"}, Calls(interrupted, [&] { m_file->GetPosition(); }));
    EXPECT_EQ(failure("POSIX: Seek operation has failed. File: [" + m_path +
                      "]. Distance to move: [0]. Move method: [SEEK_CUR]."),
              m_failure);
    EXPECT_EQ(calls_t{"fsync"}, Calls(interrupted, [&] { m_file->Flush(); }));
    EXPECT_EQ(failure("POSIX: Failed to flush file buffers. File: [" + m_path + "]."), m_failure);
    EXPECT_EQ(calls_t{"close"}, Calls(interrupted, [&] { m_file->Close(); }));
    EXPECT_EQ(failure("POSIX: Failed to close file. File: [" + m_path + "]."), m_failure);
}

TEST_F(PosixFileCalls, FlushFailsForEveryResultButZero)
{
    EXPECT_EQ(calls_t{"fsync"}, Calls({answer_t{1, EIO}}, [&] { m_file->Flush(); }));
    EXPECT_EQ("Input/output error\nPOSIX: Failed to flush file buffers. File: [" + m_path + "].", m_failure);
}

TEST_F(PosixFileCalls, FileIsClosedToItsUserBeforeItIsToTheSystem)
{
    int descriptor = 0;
    m_between = [&] { descriptor = m_file->GetDescriptor(); };
    EXPECT_EQ(calls_t{"close"}, Calls([&] { m_file->Close(); }));
    EXPECT_EQ(-1, descriptor);
}

TEST_F(PosixFileCalls, DestructorIgnoresTheResultOfClose)
{
    EXPECT_EQ(calls_t{"close"}, Calls({Fail(EIO)}, [&] { m_file.reset(); }));
    EXPECT_EQ("", m_failure);
}

// Preallocation

TEST_F(PosixFilePreallocation, FirstRequestThatIsGrantedIsEnough)
{
    EXPECT_EQ((calls_t{"open64(0x42, 0666)", "ioctl(0xBBD, {1048576, 0x2400})"}), Create(1048576, {Take(0)}));
    EXPECT_EQ("       | [1,048,576] bytes were preallocated for the file [" + m_path + "].\n", Logged());
    EXPECT_EQ(10, m_created->GetSize());
    EXPECT_EQ((calls_t{"open64(0x42, 0666)", "ioctl(0xBBD, {7, 0x2400})"}), Create(7, {Take(1)}));
}

TEST_F(PosixFilePreallocation, SecondRequestFollowsARefusal)
{
    EXPECT_EQ((calls_t{"open64(0x42, 0666)", "ioctl(0xBBD, {999, 0x2400})", "ioctl(0xBBC, {999, 0x2400})"}),
              Create(999, {Fail(ENOTTY), Take(1)}));
    EXPECT_EQ("       | [999] bytes were preallocated for the file [" + m_path + "].\n", Logged());
}

TEST_F(PosixFilePreallocation, SizeIsSetWhenBothRequestsAreRefused)
{
    EXPECT_EQ((calls_t{"open64(0x42, 0666)", "ioctl(0xBBD, {1000, 0x2400})", "ioctl(0xBBC, {1000, 0x2400})",
                       "ftruncate64(1000)"}),
              Create(1000, {Fail(ENOTTY), Fail(ENOTTY)}));
    EXPECT_EQ("       | [1,000] bytes were preallocated for the file [" + m_path + "].\n", Logged());
    EXPECT_EQ(1000, m_created->GetSize());
    EXPECT_EQ(0, m_created->GetPosition());
}

TEST_F(PosixFilePreallocation, FailureOfAllThreeWaysIsAWarningAndTheFileIsOpen)
{
    EXPECT_EQ((calls_t{"open64(0x42, 0666)", "ioctl(0xBBD, {1048576, 0x2400})",
                       "ioctl(0xBBC, {1048576, 0x2400})", "ftruncate64(1048576)"}),
              Create(1048576, {Fail(ENOTTY), Fail(ENOTTY), Fail(ENOSPC)}));
    EXPECT_EQ("       | Preallocating [1,048,576] bytes for the file [" + m_path +
                  "]. Failed.\n"
                  "       | WARN|Unable to preallocate [1,048,576] bytes for the file [" +
                  m_path +
                  "].\n"
                  "       | >>  |No space left on device\n"
                  "       | >>  |ftruncate64() has failed.\n",
              Logged());
    m_created->WriteText("open");
    EXPECT_EQ("open456789", ReadFile(m_path));
}

TEST_F(PosixFilePreallocation, SizeIsNotSetAgainAfterASignal)
{
    EXPECT_EQ(4u, Create(5, {Fail(EINTR), Fail(EINTR), Fail(EINTR)}).size());
    EXPECT_EQ("       | Preallocating [5] bytes for the file [" + m_path +
                  "]. Failed.\n"
                  "       | WARN|Unable to preallocate [5] bytes for the file [" +
                  m_path +
                  "].\n"
                  "       | >>  |Interrupted system call\n"
                  "       | >>  |ftruncate64() has failed.\n",
              Logged());
}

TEST_F(PosixFilePreallocation, NegativeSizeIsAskedForAsItStands)
{
    EXPECT_EQ((calls_t{"open64(0x42, 0666)", "ioctl(0xBBD, {18446744073708503040, 0x2400})",
                       "ioctl(0xBBC, {18446744073708503040, 0x2400})", "ftruncate64(-1048576)"}),
              Create(-1048576, {}));
    EXPECT_EQ("       | Preallocating [-1,048,576] bytes for the file [" + m_path +
                  "]. Failed.\n"
                  "       | WARN|Unable to preallocate [-1,048,576] bytes for the file [" +
                  m_path +
                  "].\n"
                  "       | >>  |Invalid argument\n"
                  "       | >>  |ftruncate64() has failed.\n",
              Logged());
    EXPECT_EQ("0123456789", ReadFile(m_path));
}

TEST_F(PosixFilePreallocation, AnyNameStandsInTheWarningByteByByte)
{
    const std::string longest(255, 'x');
    for (const std::string& name : {std::string("%1 %2\n\xff"), longest})
        Calls({Take(::dup(m_file->GetDescriptor())), Fail(ENOTTY), Fail(ENOTTY), Fail(ENOSPC)},
              [&] { posix_file_t::CreateWithPrealloc(m_folder / name, 10); });
    EXPECT_EQ("", m_failure);
    EXPECT_EQ("       | Preallocating [10] bytes for the file [" + m_folder.path() +
                  "/%1 %2\n"
                  "       | \xff]. Failed.\n"
                  "       | WARN|Unable to preallocate [10] bytes for the file [" +
                  m_folder.path() +
                  "/%1 %2\n"
                  "       | >>  |\xff].\n"
                  "       | >>  |No space left on device\n"
                  "       | >>  |ftruncate64() has failed.\n"
                  "       | Preallocating [10] bytes for the file [" +
                  (m_folder / longest) +
                  "]. Failed.\n"
                  "       | WARN|Unable to preallocate [10] bytes for the file [" +
                  (m_folder / longest) +
                  "].\n"
                  "       | >>  |No space left on device\n"
                  "       | >>  |ftruncate64() has failed.\n",
              Logged());
}

TEST_F(PosixFilePreallocation, MemoryThatRunsOutIsAWarningToo)
{
    int calls = 0;
    m_between = [&]
    {
        if (++calls == 2)
            FailNextAllocation();
    };
    EXPECT_EQ((calls_t{"open64(0x42, 0666)", "ioctl(0xBBD, {10, 0x2400})"}), Create(10, {Take(0)}));
    EXPECT_TRUE(HasAllocationFailed());
    EXPECT_EQ("", m_failure);
    EXPECT_EQ("       | Preallocating [10] bytes for the file [" + m_path +
                  "]. Failed.\n"
                  "       | WARN|Unable to preallocate [10] bytes for the file [" +
                  m_path +
                  "].\n"
                  "       | >>  |std::bad_alloc\n",
              Logged());
    EXPECT_EQ(10, m_created->GetSize());
}

TEST_F(PosixFilePreallocation, SizeOfZeroAsksForNothingAndLogsNothing)
{
    EXPECT_EQ(calls_t{"open64(0x42, 0666)"}, Create(0, {}));
    EXPECT_EQ("", Logged());
    EXPECT_EQ("0123456789", ReadFile(m_path));
}

TEST_F(PosixFilePreallocation, FileThatCannotBeOpenedAsksForNothing)
{
    EXPECT_EQ(calls_t{"open64(0x42, 0666)"},
              Calls({Fail(EACCES)}, [&] { posix_file_t::CreateWithPrealloc(m_path, 10); }));
    EXPECT_EQ("Permission denied\nPOSIX: Failed to create or open file [" + m_path + "].", m_failure);
    EXPECT_EQ("", Logged());
}

TEST_F(PosixFilePreallocation, NoOtherFailureIsLogged)
{
    char byte = 0;
    const std::function<void()> operations[] = {
        [&] { posix_file_t::OpenRead(m_path); },
        [&] { m_file->WriteBytes(1, "x"); },
        [&] { m_file->ReadBytes(&byte, 1); },
        [&] { m_file->set_size(7); },
        [&] { m_file->GetSize(); },
        [&] { m_file->GetPosition(); },
        [&] { m_file->Flush(); },
        [&] { m_file->Close(); },
        [&] { posix_file_t::SetOwner("", 1, 2); },
        [&] { posix_file_t::SetPermissions("", 0600); },
        [&] { posix_file_t::SetFileTimes("", 1, 2); },
        [&] { posix_file_t::ReadSymlink(""); },
        [&] { posix_file_t::CreateNewWithoutCache("", 1); },
    };
    for (const std::function<void()>& operation : operations)
    {
        Calls({Fail(EIO)}, operation);
        EXPECT_NE("", m_failure);
    }
    m_file = posix_file_t::OpenReadWrite(m_path);
    EXPECT_EQ(calls_t{"close"}, Calls({Fail(EIO)}, [&] { m_file.reset(); }));
    EXPECT_EQ("", Logged());
}

// Writing

TEST_F(PosixFileCalls, NothingToWriteMakesNoCall)
{
    for (const stream_size_t length : {stream_size_t{0}, stream_size_t{-1}, INT64_MIN})
        EXPECT_EQ(calls_t(), Calls([&] { m_file->WriteBytes(length, "x"); })) << length;
    EXPECT_EQ(calls_t(), Calls([&] { m_file->WriteText(""); }));
}

TEST_F(PosixFileCalls, WriteGoesOnAfterShortAndInterruptedCalls)
{
    EXPECT_EQ(
        (calls_t{"write(10)", "write(7)", "write(7)", "write(7)", "write(6)"}),
        Calls({Take(3), Fail(EINTR), Fail(EINTR), Take(1)}, [&] { m_file->WriteBytes(10, "abcdefghij"); }));
    EXPECT_EQ("", m_failure);
    EXPECT_EQ("abcdefghij", ReadFile(m_path));
}

TEST_F(PosixFileCalls, WriteThatTakesNothingIsTriedAgain)
{
    EXPECT_EQ((calls_t{"write(3)", "write(3)", "write(3)", "write(3)"}),
              Calls({Take(0), Take(0), Take(0)}, [&] { m_file->WriteBytes(3, "abc"); }));
    EXPECT_EQ("abc3456789", ReadFile(m_path));
}

TEST_F(PosixFileCalls, WriteEndsAtTheFirstOtherFailure)
{
    EXPECT_EQ((calls_t{"write(10)", "write(8)"}),
              Calls({Take(2), Fail(ENOSPC)}, [&] { m_file->WriteBytes(10, "abcdefghij"); }));
    EXPECT_EQ("No space left on device\nPOSIX: Failed to write data to the file [" + m_path + "].",
              m_failure);
    EXPECT_EQ("ab23456789", ReadFile(m_path));
    EXPECT_EQ((calls_t{"write(1)"}), Calls({Fail(EAGAIN)}, [&] { m_file->WriteBytes(1, "a"); }));
}

TEST_F(PosixFileCalls, TextIsWrittenInPiecesOf1024Bytes)
{
    const auto sizes = [&](std::size_t size)
    { return Calls([&] { m_file->WriteText(std::string(size, 't')); }); };
    EXPECT_EQ((calls_t{"write(1)"}), sizes(1));
    EXPECT_EQ((calls_t{"write(1024)"}), sizes(1024));
    EXPECT_EQ((calls_t{"write(1024)", "write(1)"}), sizes(1025));
    EXPECT_EQ((calls_t{"write(1024)", "write(1024)", "write(452)"}), sizes(2500));
}

TEST_F(PosixFileCalls, TextIsAskedForItsLengthBeforeEachPiece)
{
    std::string text(3000, 't');
    m_between = [&] { text.resize(1500); };
    EXPECT_EQ((calls_t{"write(1024)", "write(476)"}), Calls([&] { m_file->WriteText(text); }));
    m_between = [&] { text.resize(10); };
    EXPECT_EQ((calls_t{"write(1024)"}), Calls([&] { m_file->WriteText(text); }));
}

// Reading

TEST_F(PosixFileCalls, NothingToReadMakesNoCall)
{
    char byte = 'x';
    for (const stream_size_t length : {stream_size_t{0}, stream_size_t{-1}, INT64_MIN})
    {
        stream_size_t count = -1;
        EXPECT_EQ(calls_t(), Calls([&] { count = m_file->ReadBytes(&byte, length); })) << length;
        EXPECT_EQ(0, count);
    }
    EXPECT_EQ('x', byte);
}

TEST_F(PosixFileCalls, ReadGoesOnAfterShortAndInterruptedCalls)
{
    std::string text(10, '?');
    stream_size_t count = 0;
    EXPECT_EQ((calls_t{"read(10)", "read(7)", "read(7)", "read(7)", "read(6)"}),
              Calls({Take(3), Fail(EINTR), Fail(EINTR), Take(1)},
                    [&] { count = m_file->ReadBytes(text.data(), 10); }));
    EXPECT_EQ("", m_failure);
    EXPECT_EQ(10, count);
    EXPECT_EQ("0123456789", text);
}

TEST_F(PosixFileCalls, ReadEndsWhereTheFileDoes)
{
    std::string text(12, '?');
    stream_size_t count = 0;
    EXPECT_EQ((calls_t{"read(12)", "read(2)"}), Calls([&] { count = m_file->ReadBytes(text.data(), 12); }));
    EXPECT_EQ(10, count);
    EXPECT_EQ("0123456789??", text);
}

TEST_F(PosixFileCalls, ReadThatFailsAfterSomeBytesThrows)
{
    std::string text(10, '?');
    EXPECT_EQ((calls_t{"read(10)", "read(6)"}),
              Calls({Take(4), Fail(EIO)}, [&] { m_file->ReadBytes(text.data(), 10); }));
    EXPECT_EQ("Input/output error\nPOSIX: Failed to read data from the file [" + m_path + "].", m_failure);
    EXPECT_EQ(4, m_file->GetPosition());
}

TEST_F(PosixFileCalls, WholeTextOf1024BytesNeedsASecondRead)
{
    WriteFile(m_path, std::string(1024, 't'));
    std::string text;
    EXPECT_EQ((calls_t{"read(1024)", "read(1024)"}), Calls([&] { m_file->ReadAllText(text); }));
    EXPECT_EQ(std::string(1024, 't'), text);
}

TEST_F(PosixFileCalls, WholeTextIsReadOnAfterAShortPiece)
{
    std::string text;
    EXPECT_EQ((calls_t{"read(1024)", "read(1014)", "read(1024)"}), Calls([&] { m_file->ReadAllText(text); }));
    EXPECT_EQ("0123456789", text);
}

TEST_F(PosixFileCalls, EachPieceOfAWholeTextIsReadToClearedMemory)
{
    WriteFile(m_path, std::string(3000, 't'));
    std::string text;
    EXPECT_EQ((calls_t{"read(1024)", "read(1024)", "read(1024)", "read(72)", "read(1024)"}),
              Calls([&] { m_file->ReadAllText(text); }));
    EXPECT_EQ(0, m_unclear);
    EXPECT_EQ(std::string(3000, 't'), text);
}

// Counting

TEST_F(PosixFileCounting, EachWriteIsCountedWithItsResult)
{
    Count({Take(3), Fail(EINTR), Take(0), Fail(EINTR), Take(1)},
          [&] { m_file->WriteBytes(10, "abcdefghij"); });
    EXPECT_EQ("6 calls, 10 bytes", Counted(workload::WriteCounters()));
    EXPECT_EQ("0 calls, 0 bytes", Counted(workload::ReadCounters()));
    Count({}, [&] { m_file->WriteText(std::string(2500, 't')); });
    EXPECT_EQ("3 calls, 2500 bytes", Counted(workload::WriteCounters()));
}

TEST_F(PosixFileCounting, EachReadIsCountedWithItsResult)
{
    std::string text(12, '?');
    Count({Take(3), Fail(EINTR), Fail(EINTR), Take(1)}, [&] { m_file->ReadBytes(text.data(), 12); });
    EXPECT_EQ("6 calls, 10 bytes", Counted(workload::ReadCounters()));
    EXPECT_EQ("0 calls, 0 bytes", Counted(workload::WriteCounters()));
}

TEST_F(PosixFileCounting, FailedCallIsCountedAndItsErrorIsKept)
{
    Count({Take(2), Fail(EINTR), Fail(ENOSPC)}, [&] { m_file->WriteBytes(10, "abcdefghij"); });
    EXPECT_EQ("3 calls, 2 bytes", Counted(workload::WriteCounters()));
    EXPECT_EQ("No space left on device\nPOSIX: Failed to write data to the file [" + m_path + "].",
              m_failure);

    char byte = 0;
    Count({Fail(EINTR), Fail(EIO)}, [&] { m_file->ReadBytes(&byte, 1); });
    EXPECT_EQ("2 calls, 0 bytes", Counted(workload::ReadCounters()));
    EXPECT_EQ("Input/output error\nPOSIX: Failed to read data from the file [" + m_path + "].", m_failure);
}

TEST_F(PosixFileCounting, NothingToTransferCountsNothing)
{
    Count({},
          [&]
          {
              m_file->WriteBytes(0, "");
              m_file->WriteBytes(-1, "");
              m_file->ReadBytes(nullptr, 0);
              m_file->ReadBytes(nullptr, -1);
              m_file->WriteText("");
          });
    EXPECT_EQ("0 calls, 0 bytes", Counted(workload::WriteCounters()));
    EXPECT_EQ("0 calls, 0 bytes", Counted(workload::ReadCounters()));
}

TEST_F(PosixFileCounting, NothingElseIsCounted)
{
    Count({},
          [&]
          {
              const posix_file_ptr_t other = posix_file_t::OpenRead(m_path);
              m_file->SeekFromEnd(0);
              m_file->set_size(5);
              m_file->GetSize();
              m_file->Flush();
              m_file->Close();
          });
    EXPECT_EQ("0 calls, 0 bytes", Counted(workload::WriteCounters()));
    EXPECT_EQ("0 calls, 0 bytes", Counted(workload::ReadCounters()));
}

// By path

TEST_F(PosixFileCalls, OwnersAndPermissionsAreAskedOfTheTarget)
{
    uid_t uid = 0;
    gid_t gid = 0;
    mode_t mode = 0;
    EXPECT_EQ(calls_t{"stat64(x)"}, Calls([&] { uid = posix_file_t::GetOwnerUid("x"); }));
    EXPECT_EQ(calls_t{"stat64(x)"}, Calls([&] { gid = posix_file_t::GetOwnerGid("x"); }));
    EXPECT_EQ(calls_t{"stat64(x)"}, Calls([&] { mode = posix_file_t::GetPermissions("x"); }));
    EXPECT_EQ(1234u, uid);
    EXPECT_EQ(5678u, gid);
    EXPECT_EQ(06741u, mode);
}

TEST_F(PosixFileCalls, OwnersOfALinkAreAskedOfTheLink)
{
    bool is_link = false;
    uid_t uid = 0;
    gid_t gid = 0;
    EXPECT_EQ(calls_t{"lstat64(x)"}, Calls([&] { posix_file_t::GetLinkOwner("x", is_link, uid, gid); }));
    EXPECT_TRUE(is_link);
    EXPECT_EQ(1234u, uid);
    EXPECT_EQ(5678u, gid);
}

TEST_F(PosixFileCalls, EachAnswerAboutAFileGoesToClearedMemory)
{
    bool is_link = false;
    uid_t uid = 0;
    gid_t gid = 0;
    const std::function<void()> questions[] = {
        [&] { m_file->GetSize(); },
        [] { posix_file_t::GetOwnerUid("x"); },
        [] { posix_file_t::GetOwnerGid("x"); },
        [] { posix_file_t::GetPermissions("x"); },
        [&] { posix_file_t::GetLinkOwner("x", is_link, uid, gid); },
        [] { posix_file_t::IsSymlink("x"); },
        [] { posix_file_t::GetFileTimes("x", nullptr, nullptr); },
    };
    for (const std::function<void()>& question : questions)
    {
        EXPECT_EQ(1u, Calls(question).size());
        EXPECT_EQ(0, m_unclear);
    }
}

TEST_F(PosixFileCalls, SetOwnerDoesNotFollowALink)
{
    int result = -1;
    EXPECT_EQ(calls_t{"lchown(x, 1234, 5678)"},
              Calls({Take(7)}, [&] { result = posix_file_t::SetOwner("x", 1234, 5678); }));
    EXPECT_EQ(7, result);
    EXPECT_EQ(calls_t{"lchown(x, 1, 2)"}, Calls({Fail(EPERM)}, [] { posix_file_t::SetOwner("x", 1, 2); }));
    EXPECT_EQ("Operation not permitted\nchown(x) has failed.", m_failure);
}

// Links

TEST_F(PosixFileCalls, LinkThatFillsTheBufferIsAskedForAgainWithTwiceTheRoom)
{
    const std::string link = m_folder / "link";
    const auto calls = [&](std::size_t size)
    {
        EXPECT_EQ(0, ::symlink(std::string(size, 't').c_str(), link.c_str()));
        std::string target;
        calls_t made = Calls([&] { target = posix_file_t::ReadSymlink(link); });
        EXPECT_EQ(0, m_unclear) << "the room is not cleared";
        EXPECT_EQ(std::string(size, 't'), target);
        ::unlink(link.c_str());
        return made;
    };
    EXPECT_EQ((calls_t{"readlink(256)"}), calls(255));
    EXPECT_EQ((calls_t{"readlink(256)", "readlink(512)"}), calls(256));
    EXPECT_EQ(
        (calls_t{"readlink(256)", "readlink(512)", "readlink(1024)", "readlink(2048)", "readlink(4096)"}),
        calls(4095));
}

TEST_F(PosixFileCalls, EighthAttemptMayStillSucceed)
{
    std::string target;
    const calls_t calls = Calls(
        {Take(256), Take(512), Take(1024), Take(2048), Take(4096), Take(8192), Take(16384), Take(32767)},
        [&] { target = posix_file_t::ReadSymlink(m_path); });
    EXPECT_EQ(8u, calls.size());
    EXPECT_EQ("", m_failure);
    EXPECT_EQ(32767u, target.size());
}

TEST_F(PosixFileCalls, LinkThatOutgrowsTheEighthBufferIsNoSystemFailure)
{
    EXPECT_EQ((calls_t{"readlink(256)", "readlink(512)", "readlink(1024)", "readlink(2048)", "readlink(4096)",
                       "readlink(8192)", "readlink(16384)", "readlink(32768)"}),
              Calls({Take(256), Take(512), Take(1024), Take(2048), Take(4096), Take(8192), Take(16384),
                     Take(32768)},
                    [&] { posix_file_t::ReadSymlink(m_path); }));
    EXPECT_EQ("no system failure: Unable to get symbolic link target path. Link: [" + m_path + "].",
              m_failure);
}

TEST_F(PosixFileCalls, LinkIsNotAskedForAgainAfterASignal)
{
    EXPECT_EQ((calls_t{"readlink(256)"}), Calls({Fail(EINTR)}, [&] { posix_file_t::ReadSymlink(m_path); }));
    EXPECT_EQ("Interrupted system call\nreadlink(" + m_path + ") has failed.", m_failure);
}
