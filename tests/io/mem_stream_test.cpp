#include "nelvo/io/mem_stream.h"

#include <cstdint>
#include <new>
#include <string>
#include <type_traits>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/io/binary_value.h"
#include "tests/support/golden.h"
#include "tests/support/stub_dev.h"
#include "tests/support/thrown.h"
#include "tests/support/vtable_slot.h"

namespace
{

template <class Array>
class MemDev : public ::testing::Test
{
protected:
    void Write(const std::string& bytes)
    {
        EXPECT_EQ(bytes.size(), m_device.write(bytes.data(), bytes.size()));
    }

    std::string Read(std::uint64_t count)
    {
        std::string buffer(10, '-');
        return buffer.substr(0, m_device.read(buffer.data(), count));
    }

    std::string Content() const { return std::string(m_array->begin(), m_array->end()); }

    boost::shared_ptr<Array> m_array = boost::make_shared<Array>();
    io::mem_dev_tt<Array> m_device{m_array};
};

template <class Array>
class MemStream : public ::testing::Test
{
};

using arrays_t = ::testing::Types<cnt::plain_array_t, cnt::secure_array_t>;
TYPED_TEST_SUITE(MemDev, arrays_t);
TYPED_TEST_SUITE(MemStream, arrays_t);

std::string SeekFailure(const std::string& size, const std::string& offset, const std::string& kind,
                        const std::string& seek)
{
    return "Failed to seek memory stream pointer : out of the buffer (buffer size '" + size +
           "', current offset '" + offset + "', seek " + kind + " '" + seek + "').";
}

template <class Call>
std::string Failure(Call call)
{
    return Thrown<exc::runtime_exc_t>(call);
}

const char kNoMemDevice[] = "Failed to cast binary stream device to memory RW device object.";

// A stream whose own share is of a device of the test's choice.
template <class Array>
struct any_stream_tt : io::mem_stream_tt<Array>
{
    explicit any_stream_tt(const boost::shared_ptr<io::io_dev_t>& device) { this->m_device = device; }
};

} // namespace

TYPED_TEST(MemDev, KeepsTheOrderOfTheDevicesOperations)
{
    using device_t = io::mem_dev_tt<TypeParam>;
    EXPECT_TRUE((std::is_base_of_v<io::io_dev_t, device_t>));
    EXPECT_EQ(2u, VtableSlot(&device_t::write));
    EXPECT_EQ(3u, VtableSlot(&device_t::read));
    EXPECT_TRUE(IsAnyVirtual(&device_t::write));
    EXPECT_FALSE(IsAnyVirtual(&device_t::GetArray, &device_t::GetOffset, &device_t::GetCurrentPointer,
                              &device_t::GetRemaining, &device_t::SeekRelative, &device_t::SeekAbsolute));
}

TYPED_TEST(MemDev, HoldsTheArrayAndAnOffset)
{
    EXPECT_EQ(sizeof(void*) + sizeof(boost::shared_ptr<TypeParam>) + sizeof(std::uint64_t),
              sizeof(io::mem_dev_tt<TypeParam>));
    EXPECT_EQ(this->m_array, this->m_device.GetArray());
    EXPECT_EQ(2, this->m_array.use_count());
}

TYPED_TEST(MemDev, MakesAnArrayOfItsOwn)
{
    const io::mem_dev_tt<TypeParam> device;
    EXPECT_EQ(1, device.GetArray().use_count());
    EXPECT_TRUE(device.GetArray()->empty());
    EXPECT_EQ(0u, device.GetOffset());
}

TYPED_TEST(MemDev, BeginsAtTheStartOfASharedArray)
{
    *this->m_array = TypeParam("abc", 3);
    EXPECT_EQ(0u, this->m_device.GetOffset());
    EXPECT_EQ(3u, this->m_device.GetRemaining());
    EXPECT_EQ(this->m_array->data(), this->m_device.GetCurrentPointer());
    this->Write("x");
    EXPECT_EQ("xbc", this->Content());
}

TYPED_TEST(MemDev, EmptyHasNothingToReadOrPointAt)
{
    EXPECT_EQ("", this->Read(1));
    EXPECT_EQ("", this->Read(0));
    EXPECT_EQ(nullptr, this->m_device.GetCurrentPointer());
    EXPECT_EQ(0u, this->m_device.GetRemaining());
}

TYPED_TEST(MemDev, EmptySeeksToZeroAlone)
{
    this->m_device.SeekRelative(0);
    this->m_device.SeekAbsolute(0);
    EXPECT_EQ(SeekFailure("0", "0", "offset", "1"), Failure([&] { this->m_device.SeekAbsolute(1); }));
    EXPECT_EQ(SeekFailure("0", "0", "size", "1"), Failure([&] { this->m_device.SeekRelative(1); }));
    EXPECT_EQ(0u, this->m_device.GetOffset());
}

TYPED_TEST(MemDev, WriteGrowsTheArrayAndAdvances)
{
    this->Write("abc");
    EXPECT_EQ("abc", this->Content());
    EXPECT_EQ(3u, this->m_device.GetOffset());
    EXPECT_EQ(0u, this->m_device.GetRemaining());
    this->Write("de");
    EXPECT_EQ("abcde", this->Content());
}

TYPED_TEST(MemDev, GrowsByDoubling)
{
    this->Write("abcd");
    EXPECT_EQ(4u, this->m_array->capacity());
    this->Write("e");
    EXPECT_EQ(8u, this->m_array->capacity());
    this->Write("1234567890");
    EXPECT_EQ(15u, this->m_array->capacity());
}

TYPED_TEST(MemDev, WriteWithinTheCapacityMovesNothing)
{
    this->Write("abcde");
    this->m_device.SeekAbsolute(0);
    const char* const before = this->m_array->data();
    this->Write("12345");
    EXPECT_EQ(before, this->m_array->data());
    EXPECT_EQ("12345", this->Content());
}

TYPED_TEST(MemDev, WriteInTheMiddleOverwritesAndExtendsOnlyAsFarAsNeeded)
{
    this->Write("abcdef");
    this->m_device.SeekAbsolute(2);
    this->Write("12");
    EXPECT_EQ("ab12ef", this->Content());
    this->m_device.SeekAbsolute(4);
    this->Write("3456");
    EXPECT_EQ("ab123456", this->Content());
}

TYPED_TEST(MemDev, WriteAfterASeekToTheEndAppends)
{
    *this->m_array = TypeParam("abc", 3);
    this->m_device.SeekAbsolute(3);
    this->Write("de");
    EXPECT_EQ("abcde", this->Content());
}

TYPED_TEST(MemDev, WriteOfNothingChangesNothing)
{
    EXPECT_EQ(0u, this->m_device.write(nullptr, 0));
    this->Write("abc");
    this->m_device.SeekAbsolute(1);
    EXPECT_EQ(0u, this->m_device.write(nullptr, 0));
    EXPECT_EQ("abc", this->Content());
    EXPECT_EQ(1u, this->m_device.GetOffset());
}

TYPED_TEST(MemDev, EachWidthIsCopiedWhole)
{
    const std::string text = "abcdefghijklmnopqrstuvwxyz";
    std::string expected;
    for (std::size_t width = 0; width <= text.size(); ++width)
    {
        this->Write(text.substr(0, width));
        expected += text.substr(0, width);
    }
    EXPECT_EQ(expected, this->Content());

    this->m_device.SeekAbsolute(0);
    for (std::size_t width = 0; width <= 10; ++width)
        EXPECT_EQ(text.substr(0, width), this->Read(width));
}

TYPED_TEST(MemDev, ReadAdvances)
{
    *this->m_array = TypeParam("abcde", 5);
    EXPECT_EQ("ab", this->Read(2));
    EXPECT_EQ(2u, this->m_device.GetOffset());
    EXPECT_EQ(3u, this->m_device.GetRemaining());
    EXPECT_EQ(this->m_array->data() + 2, this->m_device.GetCurrentPointer());
    EXPECT_EQ("cde", this->Read(3));
}

TYPED_TEST(MemDev, ReadDeliversWhatIsThereAndNothingAtTheEnd)
{
    *this->m_array = TypeParam("abc", 3);
    EXPECT_EQ("abc", this->Read(4));
    EXPECT_EQ(3u, this->m_device.GetOffset());
    EXPECT_EQ("", this->Read(1));
    EXPECT_EQ(3u, this->m_device.GetOffset());
    EXPECT_EQ(this->m_array->data() + 3, this->m_device.GetCurrentPointer());
}

TYPED_TEST(MemDev, HugeReadDoesNotWrapAround)
{
    *this->m_array = TypeParam("abc", 3);
    EXPECT_EQ("a", this->Read(1));
    EXPECT_EQ("bc", this->Read(UINT64_MAX));
}

TYPED_TEST(MemDev, HugeWriteIsRefusedAndChangesNothing)
{
    this->Write("abc");
    EXPECT_THROW(this->m_device.write("x", UINT64_MAX), std::bad_alloc);
    EXPECT_THROW(this->m_device.write("x", UINT64_MAX - 3), std::bad_alloc);
    EXPECT_THROW(this->m_device.write("x", UINT64_MAX / 2 + 1), std::bad_alloc);
    EXPECT_EQ(3u, this->m_device.GetOffset());
    this->m_device.SeekAbsolute(1);
    EXPECT_THROW(this->m_device.write("x", UINT64_MAX), std::bad_alloc);
    EXPECT_THROW(this->m_device.write("x", UINT64_MAX - 1), std::bad_alloc);
    EXPECT_EQ(1u, this->m_device.GetOffset());
    EXPECT_EQ("abc", this->Content());
}

TYPED_TEST(MemDev, SeeksUpToTheEnd)
{
    *this->m_array = TypeParam("abc", 3);
    this->m_device.SeekRelative(1);
    EXPECT_EQ(1u, this->m_device.GetOffset());
    this->m_device.SeekRelative(2);
    EXPECT_EQ(3u, this->m_device.GetOffset());
    EXPECT_EQ("", this->Read(1));
    this->m_device.SeekAbsolute(1);
    EXPECT_EQ("bc", this->Read(9));
    this->m_device.SeekAbsolute(3);
    EXPECT_EQ(3u, this->m_device.GetOffset());
}

TYPED_TEST(MemDev, SeekBeyondTheEndTellsWhereAndLeavesTheOffset)
{
    *this->m_array = TypeParam("abc", 3);
    this->m_device.SeekRelative(2);
    EXPECT_EQ(SeekFailure("3", "2", "size", "2"), Failure([&] { this->m_device.SeekRelative(2); }));
    EXPECT_EQ(SeekFailure("3", "2", "offset", "4"), Failure([&] { this->m_device.SeekAbsolute(4); }));
    EXPECT_EQ(SeekFailure("3", "2", "size", "18446744073709551615"),
              Failure([&] { this->m_device.SeekRelative(UINT64_MAX); }));
    EXPECT_EQ(2u, this->m_device.GetOffset());
}

TYPED_TEST(MemDev, ArrayThatShrankBelowTheOffsetHasNothingLeft)
{
    this->Write("abcde");
    this->m_array->resize(3);
    EXPECT_EQ(0u, this->m_device.GetRemaining());
    EXPECT_EQ("", this->Read(1));
    EXPECT_EQ(5u, this->m_device.GetOffset());
    EXPECT_EQ(SeekFailure("3", "5", "size", "0"), Failure([&] { this->m_device.SeekRelative(0); }));
    *this->m_array = TypeParam();
    EXPECT_EQ("", this->Read(4));
    EXPECT_EQ("", this->Read(0));
    EXPECT_EQ(nullptr, this->m_device.GetCurrentPointer());
}

TYPED_TEST(MemDev, WriteBehindAShrunkArrayFillsTheGapWithZeros)
{
    this->Write("abcde");
    this->m_array->resize(3);
    this->Write("f");
    EXPECT_EQ(Hex(std::string("abc\0\0f", 6)), Hex(this->Content()));

    this->m_array->resize(2);
    EXPECT_EQ(0u, this->m_device.write(nullptr, 0));
    EXPECT_EQ(Hex(std::string("ab\0\0\0\0", 6)), Hex(this->Content()));

    this->m_array->resize(2);
    this->Write("ghij");
    EXPECT_EQ(Hex(std::string("ab\0\0\0\0ghij", 10)), Hex(this->Content()));
}

TYPED_TEST(MemDev, ArrayOutlivesTheDevice)
{
    boost::shared_ptr<TypeParam> array;
    {
        io::mem_dev_tt<TypeParam> device;
        device.write("abc", 3);
        array = device.GetArray();
    }
    EXPECT_EQ("abc", std::string(array->begin(), array->end()));
}

TYPED_TEST(MemDev, DevicesOverOneArraySeeEachOthersBytes)
{
    io::mem_dev_tt<TypeParam> reader(this->m_array);
    this->Write("abc");
    char buffer[4] = {};
    EXPECT_EQ(3u, reader.read(buffer, 3));
    EXPECT_STREQ("abc", buffer);
}

TYPED_TEST(MemStream, AddsNothingToABinaryStream)
{
    EXPECT_TRUE((std::is_base_of_v<io::binary_stream_tt, io::mem_stream_tt<TypeParam>>));
    EXPECT_EQ(sizeof(io::binary_stream_tt), sizeof(io::mem_stream_tt<TypeParam>));
}

TYPED_TEST(MemStream, BeginsWithANewArray)
{
    const io::mem_stream_tt<TypeParam> stream;
    EXPECT_TRUE(stream.GetArray()->empty());
    EXPECT_EQ(2, stream.GetArray().use_count());
    EXPECT_EQ(0u, stream.GetRemaining());
}

TYPED_TEST(MemStream, SharesAnArray)
{
    const auto array = boost::make_shared<TypeParam>("abc", 3);
    const io::mem_stream_tt<TypeParam> stream(array);
    EXPECT_EQ(array, stream.GetArray());
    EXPECT_EQ(3u, stream.GetRemaining());
}

TYPED_TEST(MemStream, HandsOutItsDevice)
{
    io::mem_stream_tt<TypeParam> stream;
    const boost::shared_ptr<io::mem_dev_tt<TypeParam>> device = stream.GetMemDevice();
    EXPECT_EQ(3, device.use_count());
    EXPECT_EQ(device->GetArray(), stream.GetArray());
    io::WriteString(stream, "ab");
    EXPECT_EQ(6u, device->GetOffset());
    device->SeekAbsolute(0);
    EXPECT_EQ("ab", io::ReadString(stream));
}

TYPED_TEST(MemStream, EndOfTheArrayIsAFailureOfTheValue)
{
    io::mem_stream_tt<TypeParam> stream(boost::make_shared<TypeParam>("\5\0\0\0ab", 6));
    EXPECT_EQ("Failed to retrieve string from the IO device: received less bytes (2) than expected (5).",
              Failure([&] { io::ReadString(stream); }));
    EXPECT_EQ("Failed to retrieve value from the binary stream: received less bytes (0) than expected (4).",
              Failure([&] { io::ReadValue<std::uint32_t>(stream); }));
}

TYPED_TEST(MemStream, DeviceOfAnotherKindCannotBeCast)
{
    const any_stream_tt<TypeParam> stream(boost::make_shared<stub_dev_t>());
    EXPECT_EQ(kNoMemDevice, Failure([&] { stream.GetArray(); }));
    EXPECT_EQ(kNoMemDevice, Failure([&] { stream.GetMemDevice(); }));
    EXPECT_EQ(kNoMemDevice, Failure([&] { stream.GetRemaining(); }));
}

TYPED_TEST(MemStream, MissingDeviceFailsInTheSameWords)
{
    const any_stream_tt<TypeParam> stream({});
    EXPECT_EQ(kNoMemDevice, Failure([&] { stream.GetArray(); }));
    EXPECT_EQ(kNoMemDevice, Failure([&] { stream.GetMemDevice(); }));
    EXPECT_EQ(kNoMemDevice, Failure([&] { stream.GetRemaining(); }));
}

TEST(MemStreamKinds, DeviceOverTheOtherArrayIsAnotherKind)
{
    const any_stream_tt<cnt::plain_array_t> stream(boost::make_shared<io::secure_mem_dev_t>());
    EXPECT_EQ(kNoMemDevice, Failure([&] { stream.GetArray(); }));
}
