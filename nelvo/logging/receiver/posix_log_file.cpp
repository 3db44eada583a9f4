#include "nelvo/logging/receiver/posix_log_file.h"

#include <cerrno>
#include <exception>
#include <sys/file.h>
#include <vector>

#include "nelvo/core/exc/errno_exc.h"
#include "nelvo/core/exc/file_locked_exc.h"
#include "nelvo/core/exc/rethrow.h"
#include "nelvo/logging/receiver/zip_writer.h"
#include "nelvo/posix/posix_file.h"

namespace posix
{
namespace
{

constexpr stream_size_t kCopyBufferSize = 1'048'576;

// A copy that fails leaves the position where it stopped, and the next text goes there, over old text.
// Kept: PosixLogFile.NextTextAfterAFailedCopyIsWrittenOverOldText
void CopyToArchive(posix_file_t& file, util::zip_writer_t& writer)
{
    file.SeekFromBegin(0);
    std::vector<char> buffer(kCopyBufferSize);
    for (stream_size_t count = 0; (count = file.ReadBytes(buffer.data(), kCopyBufferSize)) > 0;)
        writer.write(buffer.data(), static_cast<unsigned>(count));
}

void Unlock(const posix_file_t& file)
{
    if (::flock(file.GetDescriptor(), LOCK_UN) == 0)
        return;
    const int error = errno;
    throw errno_exc_t("flock() call has failed.", error);
}

} // namespace

posix_log_file_t::posix_log_file_t(const std::string& name) : m_file(posix_file_t::CreateOrOpen(name, false))
{
    m_path = name;
    if (::flock(m_file->GetDescriptor(), LOCK_EX | LOCK_NB) == 0)
    {
        m_file->SeekFromEnd(0);
        return;
    }
    // The file is closed before errno is read, so a close that fails speaks for the lock.
    // Kept: PosixLogFileCalls.ErrnoOfAFailedLockIsReadAfterTheClose
    m_file.reset();
    const int error = errno;
    if (error == EWOULDBLOCK)
        throw exc::file_locked_exc_t(name);
    throw errno_exc_t("Failed to lock file [%1].", name, error);
}

void posix_log_file_t::write(const std::string& text)
{
    m_file->WriteText(text);
    if (m_flush)
        m_file->Flush();
}

std::string posix_log_file_t::get_path() const { return m_file->GetPath().narrow(); }

std::uint64_t posix_log_file_t::get_size() const { return static_cast<std::uint64_t>(m_file->GetSize()); }

void posix_log_file_t::compress_to(util::zip_writer_t& writer)
try
{
    CopyToArchive(*m_file, writer);
    // The archive may hold back its end until it is completed. If it cannot be, the text cut here is lost.
    // Kept: PosixLogFile.TextIsLostIfTheArchiveFailsOnlyAtItsEnd
    m_file->set_size(0);
    m_file->SeekFromBegin(0);
}
catch (std::exception& e)
{
    exc::RethrowWithContext(false, util::Format("Cannot compress log file. Log: [%1].", get_path()), e);
}

posix_log_file_t::~posix_log_file_t()
{
    try
    {
        Unlock(*m_file);
    }
    catch (std::exception&)
    {
        // Dropped as promised. Closing the file unlocks it too, unless a child process has inherited it.
    }
}

} // namespace posix
