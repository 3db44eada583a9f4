#pragma once

// One gz archive (RFC 1952), written from start to end by zlib.

#include <string>

struct gzFile_s; // zlib's

namespace util
{

class zip_writer_t
{
public:
    // Creates the archive, or empties one that is there. Levels are zlib's, 0 to 9. Throws
    // posix::errno_exc_t with the context "Failed to open GZ archive [<name>].".
    zip_writer_t(const std::string& name, int level);

    // Completes the archive. A failure is logged, in two messages: "Cannot close GZ archive [<name>]." and
    // "Error code: <zlib's>".
    ~zip_writer_t();

    zip_writer_t(const zip_writer_t&) = delete;
    zip_writer_t& operator=(const zip_writer_t&) = delete;

    // Adds data, of which much may stay in memory until the archive is completed; the caller's bytes are not
    // needed any more, whatever comes of it. Throws posix::errno_exc_t with the context "Cannot add data to
    // the GZ archive [<name>]." if the system fails, or has failed in an earlier write. Data that zlib
    // refuses for a reason of its own, such as 2^31 bytes and more at once, is lost without a word.
    void write(const void* bytes, unsigned length);

private:
    void Add(const void* bytes, unsigned length);
    void AddInPieces(const char* bytes, unsigned length);
    void Close();

    std::string m_name;
    gzFile_s* m_gz;
};

} // namespace util
