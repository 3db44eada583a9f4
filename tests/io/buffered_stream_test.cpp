#include "nelvo/io/buffered_stream.h"

#include <cstdint>
#include <exception>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/io/binary_value.h"
#include "nelvo/logging/log.h"
#include "tests/io/used_block.h"
#include "tests/support/lines_receiver.h"
#include "tests/support/stub_dev.h"
#include "tests/support/thrown.h"
#include "tests/support/vtable_slot.h"

namespace
{

using calls_t = std::vector<std::string>;

constexpr std::size_t kMiB = 1048576;

const char kDestructorLine[] = "cli    | TCP/IP send cache is not empty and will be cleared in destructor.\n";
const char kNoBufferedDevice[] = "Failed to cast binary stream device to buffered device object.";

// A buffer of 8 bytes on a target.
class BufferedIoDev : public ::testing::Test
{
protected:
    void SetUp() override { logging::GetProcessLog()->set_receiver(m_receiver); }
    void TearDown() override
    {
        m_device.reset();
        logging::GetProcessLog()->set_receiver({});
    }

    void Write(const std::string& bytes)
    {
        EXPECT_EQ(bytes.size(), m_device->write(bytes.data(), bytes.size()));
    }

    const calls_t& Calls() const { return m_target->calls(); }
    const std::string& Written() const { return m_target->written(); }
    std::uint64_t Forwarded() const { return m_device->GetForwardedBytes(); }
    std::string Logged() const { return WithoutHeads(m_receiver->text()); }

    boost::shared_ptr<lines_receiver_t> m_receiver = boost::make_shared<lines_receiver_t>();
    boost::shared_ptr<stub_dev_t> m_target = boost::make_shared<stub_dev_t>("answer");
    boost::shared_ptr<io::buffered_io_dev_t> m_device = io::buffered_io_dev_t::CreateBuffered(m_target, 8);
};

class BufferedBinStream : public BufferedIoDev
{
};

// Notes from where it was given its bytes.
class place_dev_t : public io::io_dev_t
{
public:
    std::uint64_t write(const void* data, std::uint64_t count) override
    {
        places.push_back(data);
        return count;
    }
    std::uint64_t read(void*, std::uint64_t) override { return 0; }

    std::vector<const void*> places;
};

// A stream whose own share is of a device of the test's choice.
struct any_stream_t : io::buffered_bin_stream_tt
{
    explicit any_stream_t(const boost::shared_ptr<io::io_dev_t>& device) : buffered_bin_stream_tt(device)
    {
        m_device = device;
    }
};

} // namespace

TEST_F(BufferedIoDev, KeepsTheOrderOfTheDevicesOperations)
{
    EXPECT_TRUE((std::is_base_of_v<io::io_dev_t, io::buffered_io_dev_t>));
    EXPECT_EQ(2u, VtableSlot(&io::buffered_io_dev_t::write));
    EXPECT_EQ(3u, VtableSlot(&io::buffered_io_dev_t::read));
    EXPECT_TRUE(IsAnyVirtual(&io::buffered_io_dev_t::read));
    EXPECT_FALSE(IsAnyVirtual(&io::buffered_io_dev_t::Flush, &io::buffered_io_dev_t::GetForwardedBytes,
                              &io::buffered_io_dev_t::ResetForwardedBytes));
}

TEST_F(BufferedIoDev, HoldsTargetBufferAndTwoCounts)
{
    EXPECT_EQ(sizeof(void*) + sizeof(boost::shared_ptr<io::io_dev_t>) + sizeof(std::vector<char>) + 16,
              sizeof(io::buffered_io_dev_t));
    EXPECT_EQ(2, m_target.use_count());
    EXPECT_EQ(1, m_device.use_count());
}

TEST_F(BufferedIoDev, KeepsWhatFits)
{
    Write("abc");
    Write("defg");
    EXPECT_EQ(calls_t(), Calls());
    EXPECT_EQ(0u, Forwarded());
    m_device->Flush();
    EXPECT_EQ("abcdefg", Written());
    EXPECT_EQ(calls_t({"write 7"}), Calls());
    EXPECT_EQ(7u, Forwarded());
}

TEST_F(BufferedIoDev, WriteOfNothingCallsNobody)
{
    EXPECT_EQ(0u, m_device->write(nullptr, 0));
    Write("abc");
    EXPECT_EQ(0u, m_device->write(nullptr, 0));
    EXPECT_EQ(calls_t(), Calls());
    m_device->Flush();
    EXPECT_EQ("abc", Written());
}

TEST_F(BufferedIoDev, FillToTheLastByteGoesOutAtOnce)
{
    Write("abcdefg");
    Write("h");
    EXPECT_EQ(calls_t({"write 8"}), Calls());
    EXPECT_EQ("abcdefgh", Written());
    EXPECT_EQ(8u, Forwarded());
}

TEST_F(BufferedIoDev, WriteOfTheBuffersSizeGoesOutAtOnce)
{
    Write("abcdefgh");
    EXPECT_EQ(calls_t({"write 8"}), Calls());
    EXPECT_EQ(8u, Forwarded());
    m_device->Flush();
    EXPECT_EQ(1u, Calls().size());
}

TEST_F(BufferedIoDev, LargeWritePassesInPiecesAndTheRestWaits)
{
    Write("abcdefgh12345678xyz");
    EXPECT_EQ(calls_t({"write 8", "write 8"}), Calls());
    EXPECT_EQ(16u, Forwarded());
    m_device->Flush();
    EXPECT_EQ("abcdefgh12345678xyz", Written());
    EXPECT_EQ(19u, Forwarded());
}

TEST_F(BufferedIoDev, LargeWriteFirstFillsWhatIsFree)
{
    Write("abc");
    Write("defgh12345678ABCDEFGHz");
    EXPECT_EQ(calls_t({"write 8", "write 8", "write 8"}), Calls());
    EXPECT_EQ(24u, Forwarded());
    m_device->Flush();
    EXPECT_EQ("abcdefgh12345678ABCDEFGHz", Written());
}

TEST_F(BufferedIoDev, MultipleOfTheBuffersSizeLeavesNothing)
{
    Write("abcdefgh12345678");
    EXPECT_EQ(calls_t({"write 8", "write 8"}), Calls());
    m_device->Flush();
    EXPECT_EQ(2u, Calls().size());
}

TEST_F(BufferedIoDev, OnlyWhatIsLargerThanAnEmptyBufferIsNotCopied)
{
    const auto target = boost::make_shared<place_dev_t>();
    io::buffered_io_dev_t device(8, target);
    const std::string bytes = "abcdefgh12345678x";
    device.write(bytes.data(), 17);
    EXPECT_EQ(std::vector<const void*>({bytes.data(), bytes.data() + 8}), target->places);

    device.Flush();
    target->places.clear();
    device.write(bytes.data(), 8);
    ASSERT_EQ(1u, target->places.size());
    EXPECT_NE(bytes.data(), target->places[0]);

    target->places.clear();
    device.write(bytes.data(), 16);
    ASSERT_EQ(2u, target->places.size());
    EXPECT_EQ(bytes.data(), target->places[0]);
    EXPECT_NE(bytes.data() + 8, target->places[1]);
}

TEST_F(BufferedIoDev, BufferIsZeroAsFarAsNothingWasWritten)
{
    const auto target = boost::make_shared<place_dev_t>();
    target->places.reserve(1);
    LeaveUsedBlock(64);
    io::buffered_io_dev_t device(64, target);
    device.write("a", 1);
    device.Flush();
    ASSERT_EQ(1u, target->places.size());
    EXPECT_EQ("a" + std::string(63, '\0'), std::string(static_cast<const char*>(target->places[0]), 64));
}

TEST_F(BufferedIoDev, BufferThatNoMemoryHasIsAFailureAtOnce)
{
    EXPECT_THROW(io::buffered_io_dev_t::CreateBuffered(m_target, UINT64_MAX), std::exception);
}

TEST_F(BufferedIoDev, EachWidthIsCopiedWhole)
{
    m_device = io::buffered_io_dev_t::CreateBuffered(m_target, 1000);
    const std::string text = "abcdefghijklmnopqrstuvwxyz";
    std::string expected;
    for (std::size_t width = 0; width <= text.size(); ++width)
    {
        Write(text.substr(0, width));
        expected += text.substr(0, width);
    }
    m_device->Flush();
    EXPECT_EQ(expected, Written());
    EXPECT_EQ(1u, Calls().size());
}

TEST_F(BufferedIoDev, BufferHasOneMebibyteUnlessTold)
{
    io::buffered_io_dev_t device(m_target);
    const std::string bytes(2 * kMiB, 'x');
    device.write(bytes.data(), kMiB - 1);
    EXPECT_EQ(calls_t(), Calls());
    device.write(bytes.data(), 1);
    EXPECT_EQ(calls_t({"write 1048576"}), Calls());
}

TEST_F(BufferedIoDev, TwoMebibytesBehindTenBytes)
{
    io::buffered_io_dev_t device(m_target);
    const std::string bytes(2 * kMiB, 'x');
    device.write("0123456789", 10);
    EXPECT_EQ(2 * kMiB, device.write(bytes.data(), bytes.size()));
    EXPECT_EQ(calls_t({"write 1048576", "write 1048576"}), Calls());
    EXPECT_EQ(2 * kMiB, device.GetForwardedBytes());
    device.Flush();
    EXPECT_EQ("write 10", Calls().back());
    EXPECT_TRUE("0123456789" + bytes == Written());
}

TEST_F(BufferedIoDev, ThreeMebibytesBehindTenBytesPassWithoutACopyInBetween)
{
    io::buffered_io_dev_t device(m_target);
    const std::string bytes(3 * kMiB, 'x');
    device.write("0123456789", 10);
    device.write(bytes.data(), bytes.size());
    EXPECT_EQ(calls_t({"write 1048576", "write 1048576", "write 1048576"}), Calls());
    EXPECT_EQ(3 * kMiB, device.GetForwardedBytes());
    device.Flush();
}

TEST_F(BufferedIoDev, FlushOfNothingCallsNobody)
{
    m_device->Flush();
    EXPECT_EQ(calls_t(), Calls());
    EXPECT_EQ(0u, Forwarded());
}

TEST_F(BufferedIoDev, CountOfForwardedBytesIsReset)
{
    Write("abcdefgh");
    m_device->ResetForwardedBytes();
    EXPECT_EQ(0u, Forwarded());
    Write("ab");
    m_device->ResetForwardedBytes();
    m_device->Flush();
    EXPECT_EQ(2u, Forwarded());
    EXPECT_EQ("abcdefghab", Written());
}

TEST_F(BufferedIoDev, WhatTheTargetLeavesIsLostAndCounted)
{
    m_target->TakeOnly(3);
    m_target->TakeOnly(1, 1);
    m_target->TakeOnly(0, 2);
    Write("abc");
    m_device->Flush();
    Write("defghijklm");
    EXPECT_EQ(11u, Forwarded());
    m_device->Flush();
    EXPECT_EQ("abcd", Written());
    EXPECT_EQ(13u, Forwarded());
}

TEST_F(BufferedIoDev, ReadFlushesAndThenForwards)
{
    Write("ask");
    char buffer[10] = {};
    EXPECT_EQ(6u, m_device->read(buffer, 10));
    EXPECT_STREQ("answer", buffer);
    EXPECT_EQ("ask", Written());
    EXPECT_EQ(calls_t({"write 3", "read 10"}), Calls());
    EXPECT_EQ(3u, Forwarded());
}

TEST_F(BufferedIoDev, ReadWithNothingToFlushIsOneCall)
{
    char buffer[3] = {};
    EXPECT_EQ(2u, m_device->read(buffer, 2));
    EXPECT_EQ(0u, m_device->read(buffer, 0));
    EXPECT_EQ(calls_t({"read 2", "read 0"}), Calls());
}

TEST_F(BufferedIoDev, FlushThatFailsKeepsTheBytesForTheNext)
{
    Write("abc");
    m_target->Fail("no line");
    EXPECT_EQ("no line", Thrown<std::runtime_error>([&] { m_device->Flush(); }));
    EXPECT_EQ(0u, Forwarded());
    Write("d");
    m_device->Flush();
    EXPECT_EQ("abcd", Written());
    EXPECT_EQ(4u, Forwarded());
}

TEST_F(BufferedIoDev, FullBufferThatFailedGoesOutBeforeAnythingElse)
{
    m_target->Fail("no line");
    EXPECT_EQ("no line", Thrown<std::runtime_error>([&] { Write("abcdefgh"); }));
    EXPECT_EQ(0u, Forwarded());
    Write("ij");
    EXPECT_EQ("abcdefgh", Written());
    m_device->Flush();
    EXPECT_EQ(calls_t({"write 8", "write 8", "write 2"}), Calls());
    EXPECT_EQ("abcdefghij", Written());
}

TEST_F(BufferedIoDev, LargeWriteBehindAFailedOnePassesByTheSameRules)
{
    m_target->Fail("no line");
    Thrown<std::runtime_error>([&] { Write("abcdefgh"); });
    Write("123456789");
    m_device->Flush();
    EXPECT_EQ(calls_t({"write 8", "write 8", "write 8", "write 1"}), Calls());
    EXPECT_EQ("abcdefgh123456789", Written());
}

TEST_F(BufferedIoDev, FullBufferThatFailsAgainTakesNothingOfTheNextWrite)
{
    m_target->Fail("no line");
    m_target->Fail("no line", 1);
    Thrown<std::runtime_error>([&] { Write("abcdefgh"); });
    Thrown<std::runtime_error>([&] { Write("ij"); });
    EXPECT_EQ(0u, m_device->write(nullptr, 0));
    EXPECT_EQ(calls_t({"write 8", "write 8"}), Calls());
    m_device->Flush();
    EXPECT_EQ("abcdefgh", Written());
}

TEST_F(BufferedIoDev, PieceThatFailsOnItsWayPastTheBufferIsNotKept)
{
    m_target->Fail("no line", 1);
    Thrown<std::runtime_error>([&] { Write("abcdefgh12345678x"); });
    EXPECT_EQ(8u, Forwarded());
    m_device->Flush();
    EXPECT_EQ("abcdefgh", Written());
}

TEST_F(BufferedIoDev, ReadDoesNotHappenWhenItsFlushFails)
{
    Write("abc");
    m_target->Fail("no line");
    char buffer = 0;
    EXPECT_EQ("no line", Thrown<std::runtime_error>([&] { m_device->read(&buffer, 1); }));
    EXPECT_EQ(calls_t({"write 3"}), Calls());
    m_device->Flush();
}

TEST_F(BufferedIoDev, ReadThatFailsLetsTheExceptionPass)
{
    m_target->Fail("no line");
    char buffer = 0;
    EXPECT_EQ("no line", Thrown<std::runtime_error>([&] { m_device->read(&buffer, 1); }));
}

TEST_F(BufferedIoDev, FlushedOneEndsInSilence)
{
    Write("abc");
    m_device->Flush();
    m_device.reset();
    EXPECT_EQ("", Logged());
    EXPECT_EQ(1u, Calls().size());
}

TEST_F(BufferedIoDev, DestructorSaysThatItDropsWhatItHandsOn)
{
    m_receiver->set_hook([this] { EXPECT_EQ(calls_t(), Calls()); });
    Write("abc");
    m_device.reset();
    EXPECT_EQ(kDestructorLine, Logged());
    EXPECT_EQ("abc", Written());
    EXPECT_EQ(calls_t({"write 3"}), Calls());
}

TEST_F(BufferedIoDev, FailureInTheDestructorIsLogged)
{
    Write("abc");
    m_target->Fail("no line");
    m_device.reset();
    EXPECT_EQ(std::string(kDestructorLine) + "       | ERR |no line\n", Logged());
    EXPECT_EQ("", Written());
}

TEST_F(BufferedIoDev, DestructorThatCannotLogHandsOnAllTheSame)
{
    m_receiver->set_hook([] { throw std::runtime_error("no log"); });
    Write("abc");
    m_device.reset();
    EXPECT_EQ("abc", Written());
}

TEST_F(BufferedIoDev, SizeZeroCanBeMadeFlushedAndRead)
{
    m_device = io::buffered_io_dev_t::CreateBuffered(m_target, 0);
    char buffer[7] = {};
    m_device->Flush();
    EXPECT_EQ(0u, m_device->write(buffer, 0));
    EXPECT_EQ(6u, m_device->read(buffer, 6));
    EXPECT_EQ(calls_t({"read 6"}), Calls());
}

TEST_F(BufferedIoDev, SizeZeroOffersNothingUntilTheTargetThrows)
{
    m_device = io::buffered_io_dev_t::CreateBuffered(m_target, 0);
    m_target->Fail("no end", 3);
    EXPECT_EQ("no end", Thrown<std::runtime_error>([&] { Write("a"); }));
    EXPECT_EQ(calls_t({"write 0", "write 0", "write 0", "write 0"}), Calls());
    EXPECT_EQ("", Written());
    EXPECT_EQ(0u, Forwarded());
}

TEST_F(BufferedBinStream, IsABinaryStreamOnANewBufferOfOneMebibyte)
{
    EXPECT_TRUE((std::is_base_of_v<io::binary_stream_tt, io::buffered_bin_stream_tt>));
    const boost::shared_ptr<io::io_dev_t> target = m_target;
    io::buffered_bin_stream_tt stream(target);
    const std::string bytes(kMiB, 'x');
    stream.write(bytes.data(), kMiB - 1);
    EXPECT_EQ(calls_t(), Calls());
    stream.write(bytes.data(), 1);
    EXPECT_EQ(calls_t({"write 1048576"}), Calls());
}

TEST_F(BufferedBinStream, UsesABufferedDeviceThatItIsGiven)
{
    io::buffered_bin_stream_tt stream(m_device);
    io::WriteString(stream, "ab");
    EXPECT_EQ(calls_t(), Calls());
    m_device->Flush();
    EXPECT_EQ(calls_t({"write 6"}), Calls());
}

TEST_F(BufferedBinStream, HasRoomForAThirdHandleThatStaysEmpty)
{
    EXPECT_EQ(sizeof(io::binary_stream_tt) + sizeof(boost::shared_ptr<io::io_dev_t>),
              sizeof(io::buffered_bin_stream_tt));
    const io::buffered_bin_stream_tt stream(m_device);
    EXPECT_EQ(3, m_device.use_count());
    const boost::shared_ptr<io::io_dev_t> target = m_target;
    const io::buffered_bin_stream_tt other(target);
    EXPECT_EQ(4, target.use_count());
}

TEST_F(BufferedBinStream, FlushIsTheDevices)
{
    const boost::shared_ptr<io::io_dev_t> target = m_target;
    io::buffered_bin_stream_tt stream(target);
    io::WriteString(stream, "ab");
    stream.Flush();
    EXPECT_EQ(calls_t({"write 6"}), Calls());
}

TEST_F(BufferedBinStream, DeviceOfAnotherKindCannotBeCast)
{
    any_stream_t stream(m_target);
    EXPECT_EQ(kNoBufferedDevice, Thrown<exc::runtime_exc_t>([&] { stream.Flush(); }));
}

TEST_F(BufferedBinStream, MissingDeviceFailsInTheSameWords)
{
    io::buffered_bin_stream_tt stream{boost::shared_ptr<io::buffered_io_dev_t>()};
    EXPECT_EQ(kNoBufferedDevice, Thrown<exc::runtime_exc_t>([&] { stream.Flush(); }));
}

TEST_F(BufferedBinStream, UnflushedOneIsRecoveredByItsDevice)
{
    {
        const boost::shared_ptr<io::io_dev_t> target = m_target;
        io::buffered_bin_stream_tt stream(target);
        io::WriteString(stream, "ab");
    }
    EXPECT_EQ(kDestructorLine, Logged());
    EXPECT_EQ(calls_t({"write 6"}), Calls());
}
