// Says how many contexts of the library there are: without a file, in a run of the tool that is denied,
// without memory, when threads ask for one at the same time, and when a path is touched. At the exit it uses
// the one that it keeps, and asks for another.

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <new>
#include <string>
#include <thread>
#include <vector>

#include <boost/make_shared.hpp>
#include <unistd.h>

#include "nelvo/context/common_lib_ctx.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/core/guid.h"
#include "nelvo/core/util/str.h"
#include "nelvo/fs/file_utils.h"
#include "nelvo/io/mem_stream.h"
#include "nelvo/logging/channels.h"
#include "nelvo/logging/progress_scope.h"
#include "tool/agent_id.h"

namespace
{

std::atomic<std::size_t> g_first_size{0};
std::size_t g_context_size = 0;
std::atomic<std::size_t> g_contexts{0};
std::atomic<std::size_t> g_built{0}; // those that are gone too

// How many of the thread's allocations are left up to the one that fails; 0 if none does.
thread_local int t_left = 0;

// A context is known by the size of its memory, which is the first that is taken for it.
std::size_t SizeOfAContext()
{
    g_first_size = 0;
    boost::make_shared<CCommonLibCtx>();
    return g_first_size;
}

void Say(const std::string& text)
{
    const char* const counts[] = {": none is there", ": one is there", ": two are there"};
    std::puts((text + (g_contexts < 3 ? counts[g_contexts] : ": more are there")).c_str());
}

void UseWhatHasNoPath()
{
    const progress_scope_t scope(logging::channels::default_log, "Work");
    logging::channels::cli.info("Id: %1", Guid::Generate().ToString());
    io::mem_stream_tt<cnt::plain_array_t> stream;
    stream.write("text", 4);
    io::CCoutMultiplexor().send_text("text", 0);
}

std::string DeniedRun()
try
{
    const char* const arguments[] = {"nelvoagentid", nullptr};
    RunAgentIdTool(1, arguments);
    return "no failure";
}
catch (std::exception& e)
{
    return e.what();
}

// The first allocation is that of the holder, the others are the context's and its services'.
int FailuresWithoutMemory()
{
    int failures = 0;
    for (int allocation = 1; allocation <= 4; ++allocation)
    {
        t_left = allocation;
        try
        {
            GetCommonLibCtx();
        }
        catch (const std::bad_alloc&)
        {
            ++failures;
        }
    }
    return failures;
}

std::vector<boost::shared_ptr<CCommonLibCtx>> AskAtOnce(std::size_t count)
{
    std::vector<boost::shared_ptr<CCommonLibCtx>> contexts(count);
    std::vector<std::thread> threads;
    threads.reserve(count);
    std::atomic<std::size_t> ready{0};
    for (auto& context : contexts)
        threads.emplace_back(
            [&]
            {
                for (++ready; ready != count;)
                    std::this_thread::yield();
                context = GetCommonLibCtx();
            });
    for (auto& thread : threads)
        thread.join();
    return contexts;
}

class refusing_permissions_t : public security::IFilesAccessPermissions
{
public:
    void CheckAccess(const util::str_t&) override { throw exc::runtime_exc_t("refused"); }
};

bool Refuses(CCommonLibCtx& context)
try
{
    context.CheckAccess("/");
    return false;
}
catch (std::exception& e)
{
    return std::string(e.what()) == "refused";
}

// Built before the context, and so destroyed after the release.
struct asks_at_exit_t
{
    ~asks_at_exit_t()
    {
        Say(kept.use_count() == 1 && Refuses(*kept) ? "exit, kept by one, and refuses" : "exit, odd");
        const auto another = GetCommonLibCtx();
        Say(another != kept && !Refuses(*another) ? "exit, another" : "exit, odd");
    }
    boost::shared_ptr<CCommonLibCtx> kept;
};

asks_at_exit_t g_asks_at_exit;

} // namespace

void* operator new(std::size_t size)
{
    if (t_left != 0 && --t_left == 0)
        throw std::bad_alloc();
    std::size_t none = 0;
    g_first_size.compare_exchange_strong(none, size);
    if (size == g_context_size)
    {
        ++g_contexts;
        ++g_built;
    }
    void* const memory = std::malloc(size != 0 ? size : 1);
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}

void operator delete(void* memory) noexcept { std::free(memory); }

void operator delete(void* memory, std::size_t size) noexcept
{
    if (size == g_context_size)
        --g_contexts;
    std::free(memory);
}

// Nobody is root here.
extern "C" uid_t geteuid() noexcept { return 1; }

int main() // NOLINT(bugprone-exception-escape): ends the program, which fails its test
{
    g_context_size = SizeOfAContext();
    UseWhatHasNoPath();
    Say("log, values, streams and listeners");
    Say(DeniedRun());
    Say("without memory, " + std::to_string(FailuresWithoutMemory()) + " failures");
    g_built = 0;
    const auto contexts = AskAtOnce(64);
    const bool same = contexts == decltype(contexts)(contexts.size(), GetCommonLibCtx());
    Say(same && g_built == 1 ? "64 threads, one builds what all have" : "64 threads, odd");
    util::ExistsByStat("/");
    Say("a path");
    g_asks_at_exit.kept = GetCommonLibCtx();
    g_asks_at_exit.kept->SetFilesAccessPermissions(boost::make_shared<refusing_permissions_t>());
}
