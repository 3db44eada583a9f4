// Stands between the tool and the C library and makes one of the tool's calls fail. The faults are those that
// an injected system call error would distort, because the call itself has to happen all the same, or that
// are no system call's. Which one is told by the variable FAULT, and calls count from the first geteuid:
//
//   alloc:0:17:once     the 17th allocation by malloc, calloc or realloc finds no memory
//   alloc:0:17:on       nor does any later one
//   close:5:2:once      the second close closes, and then reports error 5; fclose and pclose likewise
//   write:short:3:once  the third write takes only the first half of its bytes; read likewise
//   write:5:3:once      the third write fails with error 5 before any byte; read likewise
//   count               nothing fails; the calls are listed in /out/calls, one a line
//
// The first call that fails is marked in /out/injected. Programs that the tool starts have neither this
// library nor the variable.

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

// The C library's own names for its allocator.
// NOLINTBEGIN(clang-diagnostic-reserved-identifier)
extern "C" void* __libc_malloc(std::size_t size) noexcept;
extern "C" void* __libc_calloc(std::size_t count, std::size_t size) noexcept;
extern "C" void* __libc_realloc(void* memory, std::size_t size) noexcept;
// NOLINTEND(clang-diagnostic-reserved-identifier)

namespace
{

constexpr int kShort = -1;
constexpr int kHighDescriptor = 900; // out of the way of the tool's own

char g_call[16];
int g_error = 0;
long g_when = 0;
bool g_from_then_on = false;

bool g_counting = false;
int g_list = -1;
bool g_begun = false;
long g_calls = 0;

template <typename function_t>
function_t* Real(const char* name)
{
    function_t* function = nullptr;
    void* const symbol = ::dlsym(RTLD_NEXT, name);
    std::memcpy(&function, &symbol, sizeof(function));
    return function;
}

// Neither allocates nor calls what stands in this file.
void List(const char* call, int descriptor)
{
    char line[512];
    char link[32];
    char path[384] = "";
    if (descriptor >= 0)
    {
        std::snprintf(link, sizeof(link), "/proc/self/fd/%d", descriptor);
        const ssize_t size = ::readlink(link, path, sizeof(path) - 1);
        path[size > 0 ? size : 0] = '\0';
    }
    const int size = std::snprintf(line, sizeof(line), "%s %s\n", call, path);
    ::syscall(SYS_write, g_list, line, static_cast<std::size_t>(size));
}

void Mark()
{
    const long file = ::syscall(SYS_openat, AT_FDCWD, "/out/injected", O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
    ::syscall(SYS_write, file, "INJECTED\n", std::size_t{9});
    ::syscall(SYS_close, file);
}

// True if this call is one that fails.
bool Fails(const char* call, int descriptor)
{
    if (!g_begun)
        return false;
    const int error = errno;
    if (g_counting)
        List(call, descriptor);
    const bool is_one = std::strcmp(call, g_call) == 0 && ++g_calls >= g_when;
    if (is_one && g_calls == g_when)
        Mark();
    errno = error;
    return is_one && (g_from_then_on || g_calls == g_when);
}

bool NoMemory()
{
    if (!Fails("alloc", -1))
        return false;
    errno = ENOMEM;
    return true;
}

// What a call that closes a stream gives back.
int Closed(const char* call, int (*real)(FILE*), FILE* file)
{
    const bool fails = Fails(call, ::fileno(file));
    const int result = real(file);
    if (!fails)
        return result;
    errno = g_error;
    return EOF;
}

// Half of the bytes, and no call is left without any.
std::size_t Shortened(std::size_t size) { return (size + 1) / 2; }

__attribute__((constructor)) void ReadFault()
{
    const char* const fault = std::getenv("FAULT");
    if (fault == nullptr)
        return;
    g_counting = std::strcmp(fault, "count") == 0;
    char error[16] = "";
    char repeat[16] = "";
    if (!g_counting && std::sscanf(fault, "%15[^:]:%15[^:]:%ld:%15s", g_call, error, &g_when, repeat) != 4)
        std::abort();
    g_error = std::strcmp(error, "short") == 0 ? kShort : std::atoi(error);
    g_from_then_on = std::strcmp(repeat, "on") == 0;
    ::unsetenv("FAULT");
    ::unsetenv("LD_PRELOAD");
}

} // namespace

extern "C" uid_t geteuid() noexcept
{
    if (g_counting && g_list == -1)
    {
        const int list = ::open("/out/calls", O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
        g_list = ::fcntl(list, F_DUPFD_CLOEXEC, kHighDescriptor);
        ::syscall(SYS_close, list);
    }
    g_begun = true;
    return static_cast<uid_t>(::syscall(SYS_geteuid));
}

extern "C" void* malloc(std::size_t size) noexcept { return NoMemory() ? nullptr : __libc_malloc(size); }

extern "C" void* calloc(std::size_t count, std::size_t size) noexcept
{
    return NoMemory() ? nullptr : __libc_calloc(count, size);
}

extern "C" void* realloc(void* memory, std::size_t size) noexcept
{
    return NoMemory() ? nullptr : __libc_realloc(memory, size);
}

extern "C" int close(int descriptor)
{
    const bool fails = Fails("close", descriptor);
    const int result = static_cast<int>(::syscall(SYS_close, descriptor));
    if (!fails)
        return result;
    errno = g_error;
    return -1;
}

extern "C" int fclose(FILE* file)
{
    static const auto real = Real<int(FILE*)>("fclose");
    return Closed("fclose", real, file);
}

extern "C" int pclose(FILE* file)
{
    static const auto real = Real<int(FILE*)>("pclose");
    return Closed("pclose", real, file);
}

extern "C" ssize_t read(int descriptor, void* bytes, std::size_t size)
{
    const bool fails = Fails("read", descriptor);
    if (fails && g_error != kShort)
    {
        errno = g_error;
        return -1;
    }
    return ::syscall(SYS_read, descriptor, bytes, fails ? Shortened(size) : size);
}

extern "C" ssize_t write(int descriptor, const void* bytes, std::size_t size)
{
    const bool fails = Fails("write", descriptor);
    if (fails && g_error != kShort)
    {
        errno = g_error;
        return -1;
    }
    return ::syscall(SYS_write, descriptor, bytes, fails ? Shortened(size) : size);
}
