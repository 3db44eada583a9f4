// Looks at memory when it goes back to the heap, and lets it run out: this program is linked with a free and
// a calloc of its own.

#include "nelvo/io/mem_stream.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <malloc.h>
#include <new>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/io/binary_value.h"
#include "tests/support/made_secret.h"
#include "tests/support/stub_dev.h"
#include "tests/support/unwritten_memory.h"

namespace
{

constexpr std::string_view kBytes = kSecret<'s', 9>;

int g_blocks_with_secret = 0;
std::size_t g_most_memory = SIZE_MAX;

bool HoldsSecret(void* block)
{
    if (block == nullptr)
        return false;
    const std::size_t size = ::malloc_usable_size(block);
    TakeAsWritten(block, size);
    return ::memmem(block, size, kBytes.data(), kBytes.size()) != nullptr;
}

// How many blocks went back to the heap with the secret in them.
template <class Call>
int BlocksLeftBy(Call call)
{
    g_blocks_with_secret = 0;
    call();
    return g_blocks_with_secret;
}

template <class Array>
void GrowAroundTheSecret()
{
    io::mem_stream_tt<Array> stream;
    io::WriteString(stream, kBytes);
    for (std::uint64_t i = 0; i != 100; ++i)
        io::WriteValue(stream, i);
}

// Delivers a length of a few pages and a byte, then the secret as their end, and throws.
class breaking_dev_t : public io::io_dev_t
{
public:
    std::uint64_t write(const void*, std::uint64_t) override { return 0; }
    std::uint64_t read(void* buffer, std::uint64_t count) override
    {
        if (count == 4)
        {
            std::memcpy(buffer, "\1\0\1\0", 4);
            return 4;
        }
        kBytes.copy(static_cast<char*>(buffer) + count - kBytes.size(), kBytes.size());
        throw std::runtime_error("no line");
    }
};

} // namespace

// The linker puts what wraps in the place of the calls of these functions.
extern "C" void FreeTheBlock(void* block) __asm__("__real_free");
extern "C" void LookAndFree(void* block) __asm__("__wrap_free");
extern "C" void* TakeABlock(std::size_t count, std::size_t size) __asm__("__real_calloc");
extern "C" void* TakeUpToTheLimit(std::size_t count, std::size_t size) __asm__("__wrap_calloc");
extern "C" void* GrowABlock(void* block, std::size_t size) __asm__("__real_realloc");
extern "C" void* GrowUpToTheLimit(void* block, std::size_t size) __asm__("__wrap_realloc");

void LookAndFree(void* block)
{
    if (HoldsSecret(block))
    {
        ++g_blocks_with_secret;
        ::explicit_bzero(block, ::malloc_usable_size(block)); // so that nobody finds it again
    }
    FreeTheBlock(block);
}

void* TakeUpToTheLimit(std::size_t count, std::size_t size)
{
    return count * size > g_most_memory ? nullptr : TakeABlock(count, size);
}

void* GrowUpToTheLimit(void* block, std::size_t size)
{
    if (size > g_most_memory)
        return nullptr;
    if (!HoldsSecret(block))
        return GrowABlock(block, size);
    void* const grown = TakeABlock(size, 1);
    if (grown != nullptr)
    {
        std::memcpy(grown, block, std::min(::malloc_usable_size(block), size));
        LookAndFree(block);
    }
    return grown;
}

TEST(MemStreamMemory, PlainOneLeavesItsBytesInTheHeap)
{
    EXPECT_LT(0, BlocksLeftBy(GrowAroundTheSecret<cnt::plain_array_t>));
}

TEST(MemStreamMemory, SecureOneLeavesNoCopyWhenItGrowsOrEnds)
{
    EXPECT_EQ(0, BlocksLeftBy(GrowAroundTheSecret<cnt::secure_array_t>));
}

TEST(MemStreamMemory, SecureArrayThatIsReadLeavesNoCopy)
{
    const auto read = [](std::size_t size)
    {
        io::secure_mem_stream_t stream;
        cnt::secure_array_t bytes(size);
        std::memcpy(bytes.data(), kBytes.data(), kBytes.size());
        io::WriteArray(stream, bytes);
        stream.GetMemDevice()->SeekAbsolute(0);
        EXPECT_EQ(bytes, io::ReadArray<cnt::secure_array_t>(stream));
    };
    EXPECT_EQ(0, BlocksLeftBy([&] { read(20); }));
    EXPECT_EQ(0, BlocksLeftBy([&] { read(70000); }));
}

TEST(MemStreamMemory, SecureArrayThatEndsTooEarlyLeavesNoCopy)
{
    const auto read = [](const std::string& length)
    {
        io::secure_mem_stream_t stream;
        stream.write(length.data(), length.size());
        stream.write(kBytes.data(), kBytes.size());
        stream.GetMemDevice()->SeekAbsolute(0);
        EXPECT_THROW(io::ReadArray<cnt::secure_array_t>(stream), exc::runtime_exc_t);
    };
    EXPECT_EQ(0, BlocksLeftBy([&] { read(std::string("\x20\0\0\0", 4)); }));
    EXPECT_EQ(0, BlocksLeftBy([&] { read(std::string("\0\0\1\0", 4)); }));
}

TEST(MemStreamMemory, SecureArrayOfADeviceThatThrowsLeavesNoCopy)
{
    breaking_dev_t device;
    EXPECT_EQ(0, BlocksLeftBy(
                     [&] { EXPECT_THROW(io::ReadArray<cnt::secure_array_t>(device), std::runtime_error); }));
}

TEST(MemStreamMemory, LengthBeyondTheMemoryFailsBeforeItsBytesAreRead)
{
    g_most_memory = 4294967295;
    stub_dev_t device(std::string("\xff\xff\xff\xff", 4));
    EXPECT_THROW(io::ReadString(device), std::bad_alloc);
    EXPECT_EQ(std::vector<std::string>({"read 4"}), device.calls());
}

TEST(MemStreamMemory, WriteWithoutMemoryChangesNothing)
{
    io::plain_mem_stream_t stream;
    io::WriteString(stream, "ab");
    g_most_memory = 0;
    EXPECT_THROW(io::WriteString(stream, "cd"), std::bad_alloc);
    EXPECT_EQ(6u, stream.GetArray()->size());
    EXPECT_EQ(6u, stream.GetMemDevice()->GetOffset());
}
