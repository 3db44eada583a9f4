#include "nelvo/fs/file_flags.h"

#include <cerrno>
#include <linux/fs.h>
#include <sys/ioctl.h>

#include "nelvo/core/exc/errno_exc.h"
#include "nelvo/logging/channels.h"
#include "nelvo/posix/posix_file.h"

namespace util
{

namespace
{

void SwitchFlag(const posix_file_ptr_t& file, std::uint32_t flag, bool on)
{
    ChangeFileFlags(file, on ? flag : 0, on ? 0 : flag);
}

template <class Change>
void Try(const Change& change, const char* failure)
{
    try
    {
        change();
    }
    catch (const std::exception& e)
    {
        logging::channels::default_log.warning_exc(e, failure);
    }
}

const char* ImmutableFailure(bool on)
{
    return on ? "Unable to set IMMUTABLE file attribute" : "Unable to remove IMMUTABLE file attribute";
}

const char* NoCowFailure(bool on)
{
    return on ? "Unable to set NOCOW file attribute" : "Unable to remove NOCOW file attribute";
}

} // namespace

int ChangeFileFlags(const posix_file_ptr_t& file, std::uint32_t set, std::uint32_t clear)
{
    std::uint32_t flags = 0;
    if (::ioctl(file->GetDescriptor(), FS_IOC_GETFLAGS, &flags) == -1)
    {
        const int error = errno;
        throw posix::errno_exc_t("POSIX: Failed to get file flags. File: [%1].", file->GetPath().narrow(),
                                 error);
    }
    flags = (flags & ~clear) | set;
    const int result = ::ioctl(file->GetDescriptor(), FS_IOC_SETFLAGS, &flags);
    if (result == -1)
    {
        const int error = errno;
        throw posix::errno_exc_t("POSIX: Failed to set file flags. File: [%1].", file->GetPath().narrow(),
                                 error);
    }
    return result;
}

void SetImmutable(const posix_file_ptr_t& file, bool on) { SwitchFlag(file, FS_IMMUTABLE_FL, on); }

void SetImmutable(const str_t& path, bool on) { SetImmutable(posix::posix_file_t::OpenRead(path), on); }

void SetNoCow(const posix_file_ptr_t& file, bool on) { SwitchFlag(file, FS_NOCOW_FL, on); }

void SetNoCow(const str_t& path, bool on) { SetNoCow(posix::posix_file_t::OpenRead(path), on); }

void TrySetImmutable(const posix_file_ptr_t& file, bool on)
{
    Try([&] { SetImmutable(file, on); }, ImmutableFailure(on));
}

void TrySetImmutable(const str_t& path, bool on)
{
    Try([&] { SetImmutable(path, on); }, ImmutableFailure(on));
}

void TrySetNoCow(const posix_file_ptr_t& file, bool on)
{
    Try([&] { SetNoCow(file, on); }, NoCowFailure(on));
}

void TrySetNoCow(const str_t& path, bool on)
{
    Try([&] { SetNoCow(path, on); }, NoCowFailure(on));
}

} // namespace util
