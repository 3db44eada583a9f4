#include "tests/support/path_spy.h"

#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <dirent.h>
#include <dlfcn.h>
#include <exception>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "nelvo/context/common_lib_ctx.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/core/util/str.h"

namespace
{

constexpr std::size_t kNoAsk = SIZE_MAX;

class spy_t : public security::IFilesAccessPermissions
{
public:
    spy_t(std::string folder, std::size_t refused_ask)
        : m_folder(std::move(folder)), m_refused_ask(refused_ask)
    {
    }

    void CheckAccess(const util::str_t& path) override
    {
        if (!IsSpied(path.narrow()))
            return;
        m_events += "ask " + NameOf(path.narrow()) + "; ";
        if (m_asks++ == m_refused_ask)
            throw exc::runtime_exc_t("refused");
    }

    void Touch(const std::string& path)
    {
        if (IsSpied(path))
            Add("touch " + NameOf(path) + "; ");
    }

    void Add(const std::string& event)
    {
        const bool repeated = m_events.size() >= event.size() &&
                              m_events.compare(m_events.size() - event.size(), event.size(), event) == 0;
        if (!repeated)
            m_events += event;
    }

    const std::string& events() const { return m_events; }

private:
    bool IsInFolder(const std::string& path) const { return path.rfind(m_folder + "/", 0) == 0; }
    bool IsSpied(const std::string& path) const
    {
        return IsInFolder(path) || path.find("/spied") != std::string::npos;
    }
    std::string NameOf(const std::string& path) const
    {
        return IsInFolder(path) ? path.substr(m_folder.size() + 1) : path;
    }

    std::string m_folder;
    std::size_t m_refused_ask;
    std::size_t m_asks = 0;
    std::string m_events;
};

// The one that sees the calls; null while nobody spies.
spy_t* g_spy = nullptr;

void Touch(const char* path)
{
    if (g_spy != nullptr)
        g_spy->Touch(path);
}

template <class Function>
Function Next(const char* name)
{
    return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

std::string FailureOf(const spied_call_t& call, const temp_folder_t& folder)
try
{
    call(folder);
    return {};
}
catch (const std::exception& e)
{
    std::string text = e.what();
    for (std::size_t at = text.find(folder / ""); at != std::string::npos; at = text.find(folder / ""))
        text.erase(at, folder.path().size() + 1);
    return text;
}

std::vector<std::string> EndsOfAsks(const std::string& events)
{
    std::vector<std::string> ends;
    for (std::size_t ask = events.find("ask "); ask != std::string::npos; ask = events.find("ask ", ask + 1))
        ends.push_back(events.substr(0, events.find("; ", ask) + 2));
    return ends;
}

} // namespace

// NOLINTBEGIN(bugprone-macro-parentheses): types, parameters and names cannot stand in any.
#define SPY_ON(Result, name, parameters, arguments, ...)                                                     \
    extern "C" Result name parameters                                                                        \
    {                                                                                                        \
        static const auto next = Next<Result(*) parameters>(#name);                                          \
        __VA_ARGS__;                                                                                         \
        return next arguments;                                                                               \
    }
// NOLINTEND(bugprone-macro-parentheses)

// clang-format off
SPY_ON(int, stat, (const char* path, struct stat* info) noexcept, (path, info), Touch(path))
SPY_ON(int, stat64, (const char* path, struct stat64* info) noexcept, (path, info), Touch(path))
SPY_ON(int, lstat64, (const char* path, struct stat64* info) noexcept, (path, info), Touch(path))
SPY_ON(int, statvfs, (const char* path, struct statvfs* info) noexcept, (path, info), Touch(path))
SPY_ON(int, statvfs64, (const char* path, struct statvfs64* info) noexcept, (path, info), Touch(path))
SPY_ON(int, access, (const char* path, int mode) noexcept, (path, mode), Touch(path))
SPY_ON(int, chmod, (const char* path, mode_t mode) noexcept, (path, mode), Touch(path))
SPY_ON(int, lchown, (const char* path, uid_t uid, gid_t gid) noexcept, (path, uid, gid), Touch(path))
SPY_ON(int, link, (const char* from, const char* to) noexcept, (from, to), Touch(from), Touch(to))
SPY_ON(int, lutimes, (const char* path, const timeval times[2]) noexcept, (path, times), Touch(path))
SPY_ON(int, mkdir, (const char* path, mode_t mode) noexcept, (path, mode), Touch(path))
SPY_ON(DIR*, opendir, (const char* path), (path), Touch(path))
SPY_ON(int, remove, (const char* path) noexcept, (path), Touch(path))
SPY_ON(int, rename, (const char* from, const char* to) noexcept, (from, to), Touch(from), Touch(to))
SPY_ON(int, rmdir, (const char* path) noexcept, (path), Touch(path))
SPY_ON(int, symlink, (const char* text, const char* path) noexcept, (text, path), Touch(path))
SPY_ON(int, unlink, (const char* path) noexcept, (path), Touch(path))
SPY_ON(int, utimes, (const char* path, const timeval times[2]) noexcept, (path, times), Touch(path))
SPY_ON(ssize_t, readlink, (const char* path, char* text, std::size_t size) noexcept, (path, text, size),
       Touch(path))
SPY_ON(char*, realpath, (const char* path, char* resolved) noexcept, (path, resolved), Touch(path))
SPY_ON(FILE*, fopen, (const char* path, const char* mode), (path, mode), Touch(path))
SPY_ON(FILE*, fopen64, (const char* path, const char* mode), (path, mode), Touch(path))
// clang-format on

// NOLINTNEXTLINE(bugprone-macro-parentheses): a name that is declared cannot stand in any.
#define SPY_ON_OPEN(name)                                                                                    \
    extern "C" int name(const char* path, int flags, ...)                                                    \
    {                                                                                                        \
        std::va_list arguments;                                                                              \
        va_start(arguments, flags);                                                                          \
        const unsigned mode = va_arg(arguments, unsigned);                                                   \
        va_end(arguments);                                                                                   \
        static const auto next = Next<int (*)(const char*, int, ...)>(#name);                                \
        Touch(path);                                                                                         \
        return next(path, flags, mode);                                                                      \
    }

SPY_ON_OPEN(open)
SPY_ON_OPEN(open64)

// By this, Boost.Filesystem asks for the status of a path.
extern "C" long syscall(long number, ...) noexcept
{
    long values[6];
    std::va_list arguments;
    va_start(arguments, number);
    for (long& value : values)
        value = va_arg(arguments, long);
    va_end(arguments);
    static const auto next = Next<long (*)(long, ...)>("syscall");
    if (number == SYS_statx)
        Touch(reinterpret_cast<const char*>(values[1]));
    return next(number, values[0], values[1], values[2], values[3], values[4], values[5]);
}

extern "C" pid_t fork() noexcept
{
    static const auto next = Next<pid_t (*)()>("fork");
    if (g_spy == nullptr)
        return next();
    g_spy->Add("fork; ");
    errno = EAGAIN;
    return -1;
}

spied_t SpyOn(const spied_call_t& call) { return SpyOnRefused(kNoAsk, call); }

spied_t SpyOnRefused(std::size_t ask, const spied_call_t& call)
{
    const temp_folder_t folder;
    WriteFile(folder / "a", "text");
    EXPECT_EQ(0, ::symlink("a", (folder / "l").c_str()));
    const auto context = GetCommonLibCtx();
    const auto before = context->GetFilesAccessPermissions();
    const auto spy = boost::make_shared<spy_t>(folder.path(), ask);
    context->SetFilesAccessPermissions(spy);
    g_spy = spy.get();
    const std::string failure = FailureOf(call, folder);
    g_spy = nullptr;
    context->SetFilesAccessPermissions(before);
    return {spy->events(), failure};
}

void ExpectStoppedByEachRefusal(const spied_operations_t& operations, bool throws)
{
    for (const spied_operation_t& operation : operations)
    {
        EXPECT_EQ(operation.events, SpyOn(operation.call).events) << operation.name;
        const auto ends = EndsOfAsks(operation.events);
        EXPECT_FALSE(ends.empty() || ends.back() == operation.events) << operation.name;
        for (std::size_t ask = 0; ask != ends.size(); ++ask)
        {
            const spied_t spied = SpyOnRefused(ask, operation.call);
            EXPECT_EQ(ends[ask], spied.events) << operation.name;
            EXPECT_EQ(throws ? "refused" : "", spied.failure.substr(0, 7)) << operation.name;
        }
    }
}

void ExpectNobodyIsAsked(const spied_operations_t& operations)
{
    for (const spied_operation_t& operation : operations)
    {
        const spied_t spied = SpyOnRefused(0, operation.call);
        EXPECT_EQ(operation.events, spied.events) << operation.name;
        EXPECT_EQ("", spied.failure) << operation.name;
    }
}
