// Looks at all memory that a program of tests gives back to the heap, and fails the test meanwhile if a
// secret of made_secret.h stands in it. The functions below take the place of the C library's for the whole
// process: operator delete, the C++ library and the system's own calls end here. Large blocks that go back to
// the system come by first.

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring> // explicit_bzero
#include <dlfcn.h>
#include <execinfo.h>
#include <malloc.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "tests/support/made_secret.h"
#include "tests/support/unwritten_memory.h"

namespace
{

std::atomic<std::size_t> g_blocks = 0;
std::atomic<std::size_t> g_finds = 0;

// Who gives the block back.
void ShowCalls()
{
    void* calls[32];
    ::backtrace_symbols_fd(calls, ::backtrace(calls, 32), STDERR_FILENO);
}

// Memory that is found is wiped, so that it is not found again in the next block there.
void Look(void* block)
{
    thread_local bool t_is_found = false;
    const std::size_t size = ::malloc_usable_size(block);
    ++g_blocks;
    TakeAsWritten(block, size);
    if (CountSecrets(static_cast<const char*>(block), size) == 0)
        return;
    ::explicit_bzero(block, size);
    ++g_finds;
    if (t_is_found)
        return;
    t_is_found = true;
    ShowCalls();
    t_is_found = false;
}

class freed_secrets_t : public testing::EmptyTestEventListener
{
public:
    freed_secrets_t() { testing::UnitTest::GetInstance()->listeners().Append(this); }

private:
    void OnTestStart(const testing::TestInfo&) override { m_finds = g_finds; }
    void OnTestEnd(const testing::TestInfo&) override
    {
        EXPECT_EQ(m_finds, g_finds) << "secrets in memory that was given back";
    }
    void OnTestProgramEnd(const testing::UnitTest&) override
    {
        std::printf("freed blocks: %zu, with secrets: %zu\n", g_blocks.load(), g_finds.load());
    }

    std::size_t m_finds = 0;
};

[[gnu::constructor]] void Begin()
{
    void* call = nullptr;
    ::backtrace(&call, 1); // loads what it needs
    new freed_secrets_t;   // the list of listeners owns it
}

// What is found outside of any test fails the program.
[[gnu::destructor]] void End()
{
    if (g_finds != 0)
        ::_exit(EXIT_FAILURE);
}

} // namespace

extern "C" void free(void* block) noexcept
{
    if (block == nullptr)
        return;
    static const auto next = reinterpret_cast<void (*)(void*)>(::dlsym(RTLD_NEXT, "free"));
    Look(block);
    next(block);
}

// Always moves, so that what is left behind is seen.
extern "C" void* realloc(void* block, std::size_t size) noexcept
{
    if (block != nullptr && size == 0)
    {
        free(block);
        return nullptr;
    }
    void* const moved = std::malloc(size);
    if (moved == nullptr || block == nullptr)
        return moved;
    std::memcpy(moved, block, std::min(::malloc_usable_size(block), size));
    free(block);
    return moved;
}
