#pragma once

// Somebody else holds the lock on a file. One message line: "File [<path>] is locked."

#include "nelvo/core/exc/exc_base.h"

namespace exc
{

class file_locked_exc_t : public exc_base_t
{
public:
    // With the path of the file, which the line tells.
    explicit file_locked_exc_t(const std::string& file);

    // Keeps type and file. Rethrow is the base's, and throws an exc_base_t.
    // Kept: FileLockedExc.RethrowThrowsAPlainBaseObject
    boost::shared_ptr<exc_base_t> Clone() const override;

    // The path that it was made with; reading from a buffer leaves it.
    const std::string& GetFile() const { return m_file; }

private:
    std::string m_file;
};

} // namespace exc
