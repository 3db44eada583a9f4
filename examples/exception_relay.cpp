// An exception that is thrown in one process and caught in another one, which gets it by a pipe:
//
//   exception_relay
//
// Message lines and trace come through, and the code of an exc::runtime_exc_t; the number of a failed system
// call does not (docs/formats.md). The buffer has no type tags, so that a flag in front tells which of the
// two forms follows.

#include <cerrno>
#include <cstdio>
#include <exception>
#include <functional>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

#include <boost/make_shared.hpp>

#include "nelvo/core/cnt/buf_reader.h"
#include "nelvo/core/cnt/buf_writer.h"
#include "nelvo/core/exc/errno_exc.h"
#include "nelvo/core/exc/rethrow.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/fs/file_utils.h"

namespace
{

struct closer_t
{
    void operator()(std::FILE* file) const { static_cast<void>(std::fclose(file)); }
};
using pipe_end_t = std::unique_ptr<std::FILE, closer_t>;

// Whether the pipe took it.
bool Send(const exc::exc_base_t& failure, std::FILE* pipe)
{
    cnt::CBufWriter writer;
    writer.WriteBool(dynamic_cast<const exc::runtime_exc_t*>(&failure) != nullptr);
    failure.WriteTo(writer);
    const std::size_t size = writer.GetPosition();
    return std::fwrite(writer.GetBuffer()->data(), 1, size, pipe) == size && std::fflush(pipe) == 0;
}

boost::shared_ptr<exc::exc_base_t> Restore(const CBufReader::buffer_ptr_t& buffer)
{
    CBufReader reader(buffer);
    boost::shared_ptr<exc::exc_base_t> failure;
    if (reader.ReadBool())
        failure = boost::make_shared<exc::runtime_exc_t>();
    else
        failure = boost::make_shared<exc::exc_base_t>();
    failure->ReadFrom(reader);
    return failure;
}

[[noreturn]] void Work(const std::function<void()>& work, std::FILE* pipe)
{
    bool is_told = true;
    try
    {
        work();
    }
    catch (exc::exc_base_t& e)
    {
        is_told = Send(e, pipe);
    }
    catch (std::exception& e)
    {
        is_told = Send(exc::exc_base_t(e.what()), pipe);
    }
    ::_exit(is_told ? 0 : 1);
}

boost::shared_ptr<cnt::plain_array_t> ReadToEnd(std::FILE* pipe)
{
    auto bytes = boost::make_shared<cnt::plain_array_t>();
    char piece[4096];
    while (const std::size_t size = std::fread(piece, 1, sizeof(piece), pipe))
        bytes->append(piece, size);
    return bytes;
}

[[noreturn]] void ThrowErrno(const std::string& message, int error)
{
    throw posix::errno_exc_t(message, error);
}

// Does the work in a child, and throws here what it throws there. The pipe is read before the child is waited
// for: it may hold more than a pipe does.
void RunInAChild(const std::function<void()>& work)
{
    int ends[2] = {};
    if (::pipe(ends) == -1)
        ThrowErrno("Failed to make a pipe.", errno);
    const pipe_end_t in(::fdopen(ends[0], "r"));
    pipe_end_t out(::fdopen(ends[1], "w"));
    const pid_t child = ::fork();
    if (child == -1)
        ThrowErrno("Failed to start a process.", errno);
    if (child == 0)
        Work(work, out.get());
    out.reset();

    const auto sent = ReadToEnd(in.get());
    int status = 0;
    ::waitpid(child, &status, 0);
    if (!sent->empty())
        Restore(sent)->Rethrow();
    if (status != 0)
        throw exc::runtime_exc_t("The child ended without a word, with the wait status %1.", status);
}

void OpenMissingVolume()
{
    try
    {
        util::GetDeviceId("/dev/null/volume");
    }
    catch (exc::exc_base_t& e)
    {
        exc_trace_t trace;
        trace.properties["volume"] = "sda1";
        trace.events.emplace_back(1, "nothing was copied");
        exc::RethrowWithContext(false, "Failed to copy a volume.", e, trace);
    }
}

void Relay(const std::string& title, const std::function<void()>& work)
{
    std::cout << title << std::endl;
    try
    {
        RunInAChild(work);
        std::cout << "No failure" << std::endl;
    }
    catch (exc::runtime_exc_t& e)
    {
        std::cout << e.GetFullText() << "\nIts code is " << e.GetErrorCode() << std::endl;
    }
    catch (exc::exc_base_t& e)
    {
        std::cout << e.GetFullText() << std::endl;
    }
}

} // namespace

int main()
{
    try
    {
        Relay("== with context and trace", OpenMissingVolume);
        Relay("== with a code", [] { throw exc::runtime_exc_t("Out of range.", exc::error_code_t{34}); });
        Relay("== of the standard library", [] { throw std::out_of_range("No such index."); });
        Relay("== none", [] {});
        Relay("== an end without a word", [] { ::_exit(3); });
    }
    catch (std::exception& e)
    {
        std::cerr << e.what() << std::endl;
        return 1;
    }
    return 0;
}
