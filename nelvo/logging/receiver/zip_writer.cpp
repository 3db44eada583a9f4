#include "nelvo/logging/receiver/zip_writer.h"

#include <algorithm>
#include <cerrno>
#include <exception>
#include <limits>

#include <zlib.h>

#include "nelvo/core/exc/errno_exc.h"
#include "nelvo/core/exc/rethrow.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/logging/log_exception.h"

namespace util
{
namespace
{

// Less than zlib's own buffer, which it copies a piece of this size to. What is larger it reads where it
// stands, and, after a failure, reads there once more when the archive is completed: then it may be long
// gone.
constexpr unsigned kPiece = 4096;

gzFile Open(const std::string& name, int level)
try
{
    const std::string mode = "wb" + std::to_string(level);
    const gzFile gz = ::gzopen(name.c_str(), mode.c_str());
    const int error = errno;
    if (gz == nullptr)
        throw posix::errno_exc_t(error);
    return gz;
}
catch (std::exception& e)
{
    exc::RethrowWithContext(false, Format("Failed to open GZ archive [%1].", name), e);
}

} // namespace

zip_writer_t::zip_writer_t(const std::string& name, int level) : m_name(name), m_gz(Open(name, level)) {}

zip_writer_t::~zip_writer_t()
{
    try
    {
        Close();
    }
    catch (std::exception& e)
    {
        logging::log_exception(e, "Cannot close GZ archive [%1].", m_name);
    }
}

// What zlib refuses for its size goes there whole.
void zip_writer_t::write(const void* bytes, unsigned length)
try
{
    if (length > static_cast<unsigned>(std::numeric_limits<int>::max()))
        Add(bytes, length);
    else
        AddInPieces(static_cast<const char*>(bytes), length);
}
catch (std::exception& e)
{
    exc::RethrowWithContext(false, Format("Cannot add data to the GZ archive [%1].", m_name), e);
}

// No bytes are a piece too: zlib is asked about them, and may answer with an earlier failure.
void zip_writer_t::AddInPieces(const char* bytes, unsigned length)
{
    unsigned done = 0;
    do
    {
        const unsigned piece = std::min(kPiece, length - done);
        Add(bytes + done, piece);
        done += piece;
    } while (done != length);
}

// A refusal that zlib does not put down to the system loses the data, and nobody is told.
// Kept: ZipWriter.RefusalWithoutSystemErrorLosesTheData
void zip_writer_t::Add(const void* bytes, unsigned length)
{
    if (::gzwrite(m_gz, bytes, length) != 0)
        return;
    const int error = errno;
    int code = Z_OK;
    ::gzerror(m_gz, &code);
    if (code == Z_ERRNO)
        throw posix::errno_exc_t(error);
}

void zip_writer_t::Close()
{
    const int code = ::gzclose(m_gz);
    if (code != Z_OK)
        throw exc::runtime_exc_t("Error code: %1", code);
}

} // namespace util
