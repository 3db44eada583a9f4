#include "nelvo/logging/receiver/rotation.h"

#include <algorithm>
#include <atomic>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sys/file.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include <boost/make_shared.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "nelvo/core/exc/errno_exc.h"
#include "nelvo/core/exc/exc_base.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/logging/log.h"
#include "nelvo/logging/log_channel.h"
#include "nelvo/logging/receiver/debug_log.h"
#include "nelvo/logging/receiver/posix_log_file.h"
#include "nelvo/logging/receiver/stdout_log.h"
#include "nelvo/logging/receiver/zip_writer.h"
#include "tests/logging/receiver/count_anew.h"
#include "tests/support/gz.h"
#include "tests/support/lines_receiver.h"
#include "tests/support/private_disk.h"
#include "tests/support/stdout_capture.h"
#include "tests/support/temp_folder.h"
#include "tests/support/thrown.h"

using logging::receiver::validate_log_size;
using posix::posix_log_file_t;
using testing::ElementsAre;
using testing::IsEmpty;

namespace fs = std::filesystem;

namespace
{

constexpr std::size_t kLimit = 15728639;
constexpr std::size_t kMebibyte = 1'048'576;

using names_t = std::vector<std::string>;

// Tells of a size and keeps no text.
class sized_receiver_t : public lines_receiver_t
{
public:
    sized_receiver_t(const std::string& path, std::uint64_t size) : lines_receiver_t(path), m_size(size) {}
    std::uint64_t get_size() const override
    {
        if (m_size == 0)
            throw exc::runtime_exc_t("no size");
        return m_size;
    }
    void compress_to(util::zip_writer_t&) override { ++m_compressions; }

    int m_compressions = 0;

private:
    std::uint64_t m_size;
};

// Throws what is no std::exception.
class odd_receiver_t : public sized_receiver_t
{
public:
    using sized_receiver_t::sized_receiver_t;
    std::uint64_t get_size() const override { throw 1; }
};

std::string Mark(int number) { return "rotation " + std::to_string(number) + "\n"; }

class Rotation : public ::testing::Test
{
protected:
    void Open(const std::string& name) { m_log = boost::make_shared<posix_log_file_t>(m_folder / name); }

    // A log of zeros that ends in the text.
    void Grow(std::size_t size, const std::string& text)
    {
        ASSERT_EQ(0, ::truncate(m_log->get_path().c_str(), static_cast<off_t>(size - text.size())));
        std::ofstream(m_log->get_path(), std::ios::binary | std::ios::app) << text;
        ASSERT_EQ(size, m_log->get_size());
    }

    void Rotate() { validate_log_size(*m_log); }

    void RotateTimes(int count)
    {
        for (int i = 1; i <= count; ++i)
        {
            Grow(kLimit + 1, Mark(i));
            Rotate();
        }
    }

    // What a rotation says that fails.
    template <class Exception>
    static std::string Failure(logging::receiver::log_file_t& log)
    {
        return Thrown<Exception>([&] { validate_log_size(log); });
    }

    template <class Exception>
    std::string Failure()
    {
        return Failure<Exception>(*m_log);
    }

    // The names in the folder but the log's own, sorted.
    names_t Archives() const
    {
        names_t names;
        for (const fs::directory_entry& entry : fs::directory_iterator(m_folder.path()))
        {
            if (!m_log || entry.path() != m_log->get_path())
                names.push_back(entry.path().filename());
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    // The end of what is in an archive: the text without the zeros before it.
    std::string End(const std::string& name)
    {
        const std::string text = Unpack(m_folder / name);
        EXPECT_EQ(kLimit + 1, text.size()) << name;
        return text.substr(text.find_last_of('\0') + 1);
    }

    // What the process log is told of an archive that cannot be completed.
    std::string ClosingFailure() const
    {
        return "       | ERR |Cannot close GZ archive [" + m_folder / "a.log.gz" +
               "].\n"
               "       | ERR |Error code: -1\n";
    }

    void Archive(const std::string& name, const std::string& text) { WriteFile(m_folder / name, text); }
    std::string Read(const std::string& name) { return ReadFile(m_folder / name); }

    temp_folder_t m_folder;
    boost::shared_ptr<posix_log_file_t> m_log;
};

} // namespace

TEST_F(Rotation, LogOfTheLimitStays)
{
    Open("a.log");
    Grow(15728639, "text");
    Rotate();
    EXPECT_EQ(15728639u, m_log->get_size());
    EXPECT_THAT(Archives(), IsEmpty());
}

TEST_F(Rotation, OneByteMoreMovesToAnArchive)
{
    Open("a.log");
    Grow(15728640, "text");
    Rotate();
    EXPECT_EQ(0u, m_log->get_size());
    EXPECT_THAT(Archives(), ElementsAre("a.log.gz"));
    EXPECT_EQ("text", End("a.log.gz"));
}

TEST_F(Rotation, ArchiveHoldsEveryByte)
{
    const std::string content = Noise(kLimit + 2);
    WriteFile(m_folder / "a.log", content);
    Open("a.log");
    Rotate();
    EXPECT_TRUE(content == Unpack(m_folder / "a.log.gz"));
    EXPECT_EQ(0u, m_log->get_size());
}

TEST_F(Rotation, ArchiveIsPackedAsWellAsCanBe)
{
    Open("a.log");
    RotateTimes(1);
    EXPECT_EQ('\x02', Read("a.log.gz")[8]);
}

TEST_F(Rotation, NextTextStandsAtTheStart)
{
    Open("a.log");
    RotateTimes(1);
    m_log->write("first\n");
    m_log->write("second\n");
    EXPECT_EQ("first\nsecond\n", Read("a.log"));
}

TEST_F(Rotation, SizeAloneDecides)
{
    sized_receiver_t small(m_folder / "a.log", 15728639);
    validate_log_size(small);
    EXPECT_EQ(0, small.m_compressions);
    EXPECT_THAT(Archives(), IsEmpty());

    sized_receiver_t big(m_folder / "a.log", 15728640);
    validate_log_size(big);
    EXPECT_EQ(1, big.m_compressions);
    EXPECT_EQ("", Unpack(m_folder / "a.log.gz"));
}

TEST_F(Rotation, LogsThatAreNoFilesAreLeftAlone)
{
    const stdout_capture_t captured;
    ASSERT_EQ(0, ::chdir(m_folder.path().c_str()));
    logging::receiver::COutputDebugStringLog debug;
    validate_log_size(debug);
    const auto standard_output = logging::receiver::create_stdout_log();
    standard_output->write(std::string(100, 'a'));
    validate_log_size(*standard_output);
    EXPECT_THAT(Archives(), IsEmpty());
}

TEST_F(Rotation, ElevenLeaveElevenArchives)
{
    Open("a.log");
    RotateTimes(11);

    EXPECT_THAT(Archives(), ElementsAre("a.1.log.gz", "a.10.log.gz", "a.2.log.gz", "a.3.log.gz", "a.4.log.gz",
                                        "a.5.log.gz", "a.6.log.gz", "a.7.log.gz", "a.8.log.gz", "a.9.log.gz",
                                        "a.log.gz"));
    EXPECT_EQ(Mark(11), End("a.log.gz"));
    EXPECT_EQ(Mark(10), End("a.1.log.gz"));
    EXPECT_EQ(Mark(9), End("a.2.log.gz"));
    EXPECT_EQ(Mark(2), End("a.9.log.gz"));
    EXPECT_EQ(Mark(1), End("a.10.log.gz"));
}

TEST_F(Rotation, TwelfthDropsTheOldest)
{
    Open("a.log");
    RotateTimes(12);

    EXPECT_EQ(11u, Archives().size());
    EXPECT_EQ(Mark(12), End("a.log.gz"));
    EXPECT_EQ(Mark(11), End("a.1.log.gz"));
    EXPECT_EQ(Mark(2), End("a.10.log.gz"));
}

TEST_F(Rotation, GapsAmongTheArchivesMoveUpToo)
{
    Archive("a.log.gz", "0");
    Archive("a.3.log.gz", "3");
    Archive("a.11.log.gz", "11");
    Open("a.log");
    RotateTimes(1);
    EXPECT_THAT(Archives(), ElementsAre("a.1.log.gz", "a.11.log.gz", "a.4.log.gz", "a.log.gz"));
    EXPECT_EQ("0", Read("a.1.log.gz"));
    EXPECT_EQ("3", Read("a.4.log.gz"));
}

// The names of three rotations.
TEST_F(Rotation, NameOfTheLogDecidesHowArchivesAge)
{
    const struct
    {
        std::string log;
        names_t archives;
    } cases[] = {
        {"a.log", {"a.1.log.gz", "a.2.log.gz", "a.log.gz"}},
        {"A.LOG", {"A.1.log.gz", "A.2.log.gz", "A.LOG.gz"}},
        {"a.txt", {"a.txt.gz", "a.txt.gz.1", "a.txt.gz.2"}},
        {"a", {"a.gz", "a.gz.1", "a.gz.2"}},
        {"a.", {"a..gz", "a..gz.1", "a..gz.2"}},
        {".log", {".1.log.gz", ".2.log.gz", ".log.gz"}},
        {"a.1.log", {"a.1.1.log.gz", "a.1.2.log.gz", "a.1.log.gz"}},
    };
    for (const auto& expected : cases)
    {
        Open(expected.log);
        RotateTimes(3);
        EXPECT_EQ(expected.archives, Archives()) << expected.log;
        for (const std::string& name : Archives())
            fs::remove(m_folder / name);
        fs::remove(m_folder / expected.log);
    }
}

TEST_F(Rotation, NumberedLogsArchivesAgeWithTheFirstLogs)
{
    Open("a.1.log");
    RotateTimes(1);
    m_log.reset();
    Open("a.log");
    RotateTimes(1);
    EXPECT_THAT(Archives(), ElementsAre("a.1.log", "a.2.log.gz", "a.log.gz"));
}

// Descriptor and lock stay, and nobody else gets in between.
TEST_F(Rotation, KeepsTheFileLockedThroughout)
{
    Open("a.log");
    const pid_t other = ::fork();
    if (other == 0)
    {
        ::close_range(3, ~0u, 0); // or it would keep the lock for the log
        const int descriptor = ::open((m_folder / "a.log").c_str(), O_RDONLY | O_CLOEXEC);
        while (::flock(descriptor, LOCK_EX | LOCK_NB) != 0)
        {
        }
        ::_exit(0);
    }
    RotateTimes(5);
    EXPECT_EQ(0, ::waitpid(other, nullptr, WNOHANG)) << "the other process got the lock";
    ::kill(other, SIGKILL);
    EXPECT_EQ(other, ::waitpid(other, nullptr, 0));
}

TEST_F(Rotation, FailureToFindTheSizeNamesTheLog)
{
    sized_receiver_t log("/x/a%1.log", 0);
    EXPECT_EQ("no size\nUnable to validate log size limit. Log path: [/x/a%1.log].",
              Failure<exc::runtime_exc_t>(log));
}

TEST_F(Rotation, WhatIsNoStandardExceptionPassesAsItIs)
{
    odd_receiver_t log("/x/a.log", 0);
    EXPECT_THROW(validate_log_size(log), int);
}

TEST_F(Rotation, FailureToAgeLeavesTheLog)
{
    ASSERT_TRUE(fs::create_directories(m_folder / "a.10.log.gz/x"));
    Archive("a.9.log.gz", "9");
    Open("a.log");
    Grow(kLimit + 1, "text");
    EXPECT_EQ("Directory not empty\n"
              "Cannot age file. File path: [" +
                  m_folder / "a.log.gz" +
                  "]. Extension: [.log.gz]. Ages limit: [10].\n"
                  "Unable to validate log size limit. Log path: [" +
                  m_folder / "a.log" + "].",
              Failure<exc::runtime_exc_t>());
    EXPECT_EQ(kLimit + 1, m_log->get_size());
    EXPECT_EQ("9", Read("a.9.log.gz"));
    EXPECT_THAT(Archives(), ElementsAre("a.10.log.gz", "a.9.log.gz"));
}

// The archives make room first, so each attempt that cannot open a new one ages them once more.
TEST_F(Rotation, FailureToOpenTheArchiveHasAgedTheOthers)
{
    Archive("a.1.log.gz", "1");
    fs::create_symlink(m_folder / "no/such", m_folder / "a.log.gz");
    Open("a.log");
    Grow(kLimit + 1, "text");
    const std::string failure = "No such file or directory\n"
                                "Failed to open GZ archive [" +
                                m_folder / "a.log.gz" +
                                "].\n"
                                "Unable to validate log size limit. Log path: [" +
                                m_folder / "a.log" + "].";
    EXPECT_EQ(failure, Failure<posix::errno_exc_t>());
    EXPECT_THAT(Archives(), ElementsAre("a.2.log.gz", "a.log.gz"));
    EXPECT_EQ(failure, Failure<posix::errno_exc_t>());
    EXPECT_THAT(Archives(), ElementsAre("a.3.log.gz", "a.log.gz"));
    EXPECT_EQ("1", Read("a.3.log.gz"));
    EXPECT_EQ(kLimit + 1, m_log->get_size());
}

TEST_F(Rotation, DanglingLinkAtTheArchivesNameIsFollowed)
{
    const temp_folder_t other;
    fs::create_symlink(other / "b.gz", m_folder / "a.log.gz");
    Open("a.log");
    RotateTimes(2);
    EXPECT_TRUE(fs::is_symlink(m_folder / "a.1.log.gz"));
    EXPECT_EQ(Mark(1), End("a.1.log.gz"));
    EXPECT_EQ(Mark(2), End("a.log.gz"));
}

TEST_F(Rotation, NameThatIsTooLongForAnArchiveFailsToAge)
{
    const std::string name = std::string(251, 'n') + ".log";
    Open(name);
    Grow(kLimit + 1, "text");
    EXPECT_EQ("File name too long\n"
              "Cannot age file. File path: [" +
                  m_folder / name +
                  ".gz]. Extension: [.log.gz]. Ages limit: [10].\n"
                  "Unable to validate log size limit. Log path: [" +
                  m_folder / name + "].",
              Failure<exc::runtime_exc_t>());
    EXPECT_EQ(kLimit + 1, m_log->get_size());
}

TEST_F(Rotation, NamesMayHoldAnyByte)
{
    const std::string name = "a \n\xff%1.log";
    Open(name);
    RotateTimes(2);
    EXPECT_THAT(Archives(), ElementsAre("a \n\xff%1.1.log.gz", name + ".gz"));
}

namespace
{

// A log on a disk of its own, and what the process log is told.
class RotationOnAFullDisk : public Rotation
{
protected:
    void SetUp() override { logging::GetProcessLog()->set_receiver(m_reported); }
    void TearDown() override { logging::GetProcessLog()->set_receiver({}); }

    std::string Reported() const { return WithoutHeads(m_reported->text()); }

    boost::shared_ptr<lines_receiver_t> m_reported = boost::make_shared<lines_receiver_t>();
};

} // namespace

TEST_F(RotationOnAFullDisk, FailedCopyCutsNothing)
{
    const private_disk_t disk(m_folder.path(), 16 * kMebibyte);
    std::string content = Noise(kLimit + 1);
    WriteFile(m_folder / "a.log", content);
    Open("a.log");
    const std::string failure = "No space left on device\n"
                                "Cannot add data to the GZ archive [" +
                                m_folder / "a.log.gz" +
                                "].\n"
                                "Cannot compress log file. Log: [" +
                                m_folder / "a.log" +
                                "].\n"
                                "Unable to validate log size limit. Log path: [" +
                                m_folder / "a.log" + "].";
    EXPECT_EQ(failure, Failure<posix::errno_exc_t>());
    EXPECT_TRUE(content == Read("a.log"));
    EXPECT_EQ(ClosingFailure(), Reported());

    // The second of the mebibytes finds no room, so the next text stands over the third.
    m_log->write("new\n");
    EXPECT_TRUE(content.replace(2 * kMebibyte, 4, "new\n") == Read("a.log"));
    EXPECT_EQ(failure, Failure<posix::errno_exc_t>());
    EXPECT_TRUE(content == Read("a.log"));
}

// Of the archive, 15 KiB of packed zeros, the first 8 KiB find room while the log is copied; the rest is
// held back until the archive is completed, and by then the log is cut. A log of holes gives no room back.
TEST_F(RotationOnAFullDisk, ArchiveThatFailsAtItsEndLosesTheLog)
{
    const private_disk_t disk(m_folder.path(), 8192);
    Open("a.log");
    ASSERT_EQ(0, ::truncate((m_folder / "a.log").c_str(), kLimit + 1));
    EXPECT_NO_THROW(Rotate());
    EXPECT_EQ(0u, m_log->get_size());
    EXPECT_EQ(8192u, fs::file_size(m_folder / "a.log.gz"));
    EXPECT_EQ(ClosingFailure(), Reported());
}

// The cut frees the room that the archive's end needs.
TEST_F(RotationOnAFullDisk, LogOnTheSameDiskMakesRoomForItsArchive)
{
    const private_disk_t disk(m_folder.path(), kLimit + 1 + 8192);
    WriteFile(m_folder / "a.log", std::string(kLimit + 1, 'a'));
    Open("a.log");
    Rotate();
    EXPECT_EQ(std::string(kLimit + 1, 'a'), Unpack(m_folder / "a.log.gz"));
    EXPECT_EQ("", Reported());
}

namespace
{

// A log whose size is checked, as the process log's is.
class SizeCheckOfAFile : public Rotation
{
protected:
    void SetUp() override
    {
        CountAnew(*m_process_log);
        Open("a.log");
        m_process_log->set_receiver(m_log);
    }

    void TearDown() override
    {
        m_process_log->set_receiver({});
        m_log.reset();
    }

    void Log(int first, int last)
    {
        for (int i = first; i <= last; ++i)
            m_channel.info("message %1", i);
    }

    static std::string Lines(int first, int last)
    {
        std::string lines;
        for (int i = first; i <= last; ++i)
            lines += "tag    | message " + std::to_string(i) + "\n";
        return lines;
    }

    // Enough for a rotation, in front of what is logged.
    void MakeBig() { Skip(kLimit + 1); }

    // Moves the place of the next message.
    void Skip(std::size_t size)
    {
        ASSERT_EQ(0, ::truncate((m_folder / "a.log").c_str(), static_cast<off_t>(size)));
        m_process_log->set_receiver({});
        m_log.reset();
        Open("a.log");
        m_process_log->set_receiver(m_log);
    }

    // An archive that cannot make way.
    void Block() { ASSERT_TRUE(fs::create_directories(m_folder / "a.10.log.gz/x")); }
    void Unblock() { ASSERT_EQ(2u, fs::remove_all(m_folder / "a.10.log.gz")); }

    static std::string Text(const std::string& log)
    {
        const std::size_t zeros = log.find_last_of('\0');
        return WithoutHeads(zeros == std::string::npos ? log : log.substr(zeros + 1));
    }

    boost::shared_ptr<logging::log_t> m_process_log = logging::GetProcessLog();
    logging::log_channel_t m_channel{"tag"};
};

} // namespace

TEST_F(SizeCheckOfAFile, ComesWithTheThousandthMessage)
{
    MakeBig();
    Log(1, 999);
    EXPECT_THAT(Archives(), IsEmpty());
    Log(1000, 1000);
    EXPECT_EQ(0u, m_log->get_size());
    EXPECT_EQ(Lines(1, 1000), Text(Unpack(m_folder / "a.log.gz")));
    Log(1001, 1002);
    EXPECT_EQ(Lines(1001, 1002), Text(Read("a.log")));
}

TEST_F(SizeCheckOfAFile, LeavesASmallLogAlone)
{
    Log(1, 3000);
    EXPECT_THAT(Archives(), IsEmpty());
    EXPECT_EQ(Lines(1, 3000), Text(Read("a.log")));
}

TEST_F(SizeCheckOfAFile, IsRepeatedOnEachMessageUntilItSucceeds)
{
    MakeBig();
    Block();
    Log(1, 1002);
    EXPECT_THAT(Archives(), ElementsAre("a.10.log.gz"));
    Unblock();
    Log(1003, 1003);
    EXPECT_THAT(Archives(), ElementsAre("a.log.gz"));
    EXPECT_EQ(Lines(1, 1003), Text(Unpack(m_folder / "a.log.gz")));

    MakeBig();
    Log(1004, 2002);
    EXPECT_THAT(Archives(), ElementsAre("a.log.gz"));
    Log(2003, 2003);
    EXPECT_THAT(Archives(), ElementsAre("a.1.log.gz", "a.log.gz"));
}

TEST_F(SizeCheckOfAFile, MayBeAskedForAtAnyTime)
{
    m_process_log->check_size();
    EXPECT_THAT(Archives(), IsEmpty());
    MakeBig();
    m_process_log->check_size();
    EXPECT_THAT(Archives(), ElementsAre("a.log.gz"));
    m_process_log->set_receiver({});
    EXPECT_NO_THROW(m_process_log->check_size());
}

TEST_F(SizeCheckOfAFile, AskedForThrowsWhatTheRotationDoes)
{
    MakeBig();
    Block();
    EXPECT_THROW(m_process_log->check_size(), exc::runtime_exc_t);
}

namespace
{

// Takes itself out of its log when it is to be rotated.
class leaving_receiver_t : public sized_receiver_t
{
public:
    leaving_receiver_t(const std::string& path, logging::log_t& log, bool& gone)
        : sized_receiver_t(path, kLimit + 1), m_log(log), m_gone(gone)
    {
    }
    ~leaving_receiver_t() override { m_gone = true; }
    void compress_to(util::zip_writer_t&) override
    {
        const bool& gone = m_gone;
        m_log.set_receiver({});
        EXPECT_FALSE(gone);
    }

private:
    logging::log_t& m_log;
    bool& m_gone;
};

} // namespace

TEST_F(Rotation, ReceiverThatIsReplacedInsideStaysUntilItsEnd)
{
    logging::log_t log;
    bool gone = false;
    log.set_receiver(boost::make_shared<leaving_receiver_t>(m_folder / "a.log", log, gone));
    log.check_size();
    EXPECT_TRUE(gone);
    EXPECT_THAT(Archives(), ElementsAre("a.log.gz"));
}

namespace
{

// Lets another thread ask the log for its receiver while it is rotated.
class waiting_receiver_t : public sized_receiver_t
{
public:
    waiting_receiver_t(const std::string& path, logging::log_t& log)
        : sized_receiver_t(path, kLimit + 1), m_log(log)
    {
    }
    void compress_to(util::zip_writer_t&) override
    {
        m_other = std::thread(
            [this]
            {
                m_started = true;
                m_log.get_receiver();
                m_answered = true;
            });
        while (!m_started)
            std::this_thread::yield();
        for (int i = 0; i != 10'000; ++i)
            std::this_thread::yield();
        EXPECT_FALSE(m_answered);
    }
    void Join() { m_other.join(); }

private:
    logging::log_t& m_log;
    std::thread m_other;
    std::atomic<bool> m_started{false};
    std::atomic<bool> m_answered{false};
};

} // namespace

TEST_F(Rotation, OthersWaitForACheckThatIsAskedFor)
{
    logging::log_t log;
    const auto receiver = boost::make_shared<waiting_receiver_t>(m_folder / "a.log", log);
    log.set_receiver(receiver);
    log.check_size();
    receiver->Join();
}

namespace
{

// The log is a link to another disk, so that only the archives are short of room.
class SizeCheckWithFullArchives : public SizeCheckOfAFile
{
protected:
    void SetUp() override
    {
        CountAnew(*m_process_log);
        m_archives = std::make_unique<private_disk_t>(m_folder.path(), 8192);
        WriteFile(m_other / "a.log", "");
        fs::create_symlink(m_other / "a.log", m_folder / "a.log");
        MakeBig();
    }

    temp_folder_t m_other;
    std::unique_ptr<private_disk_t> m_archives;
};

} // namespace

// The archive's failure is logged from inside the check, when the count says that a check is due.
TEST_F(SizeCheckWithFullArchives, MessageFromInsideStartsNoOther)
{
    m_archives->Fill(0);
    Archive("a.log.gz", "");
    Log(1, 999);
    EXPECT_THAT(Archives(), ElementsAre("a.log.gz", "filler"));
    Log(1000, 1000);
    EXPECT_THAT(Archives(), ElementsAre("a.1.log.gz", "a.log.gz", "filler"));
    Log(1001, 1001);
    EXPECT_THAT(Archives(), ElementsAre("a.1.log.gz", "a.2.log.gz", "a.log.gz", "filler"));
}

TEST_F(SizeCheckWithFullArchives, MessageFromInsideCounts)
{
    m_archives->Fill(0);
    Archive("a.log.gz", "");
    Log(1, 998);
    EXPECT_THROW(m_process_log->check_size(), exc::exc_base_t);
    EXPECT_THAT(Archives(), ElementsAre("a.1.log.gz", "a.log.gz", "filler"));
    Log(999, 999);
    EXPECT_THAT(Archives(), ElementsAre("a.1.log.gz", "a.2.log.gz", "a.log.gz", "filler"));
}

TEST_F(SizeCheckWithFullArchives, CheckThatIsAskedForStartsNoOtherEither)
{
    m_archives->Fill(0);
    Block();
    Log(1, 1000);
    Unblock();
    Archive("a.log.gz", "");
    EXPECT_THROW(m_process_log->check_size(), exc::exc_base_t);
    EXPECT_THAT(Archives(), ElementsAre("a.1.log.gz", "a.log.gz", "filler"));
}

// Each check that fails sets the position back to where its copying stopped: what the last one wrote there
// is lost as well.
TEST_F(SizeCheckWithFullArchives, MessagesAfterAFailedCopyStandOverOldText)
{
    const std::string noise = Noise(kLimit + 1);
    WriteFile(m_other / "a.log", noise);
    Skip(noise.size());
    m_archives->Fill(0);
    Log(1, 1002);
    const std::string log = Read("a.log");
    EXPECT_TRUE(log.substr(0, kMebibyte) == noise.substr(0, kMebibyte));
    EXPECT_EQ(Lines(1, 1000), WithoutHeads(log.substr(noise.size())));

    const std::string end = "message 1002\n";
    const std::size_t fresh = log.find(end, kMebibyte) + end.size() - kMebibyte;
    EXPECT_EQ(ClosingFailure() + Lines(1002, 1002), WithoutHeads(log.substr(kMebibyte, fresh)));
    EXPECT_TRUE(log.substr(kMebibyte + fresh, noise.size() - kMebibyte - fresh) ==
                noise.substr(kMebibyte + fresh));
}

TEST_F(SizeCheckWithFullArchives, LossAtTheArchivesEndIsToldInTheEmptyLog)
{
    Log(1, 1000);
    Log(1001, 1001);
    EXPECT_EQ(ClosingFailure() + Lines(1001, 1001), Text(Read("a.log")));
    EXPECT_EQ(8192u, fs::file_size(m_folder / "a.log.gz"));
}
