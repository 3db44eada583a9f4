#pragma once

// Who may open or change which path: one object answers for the whole process, before each operation on a
// path (security::CheckPathAccess). A program that restricts itself puts an object of its own there.

namespace util
{
class str_t;
}

namespace security
{

class IFilesAccessPermissions
{
public:
    // Returns if the path may be touched, and throws if not; what it throws reaches the caller of the
    // operation, which has done nothing yet. Called from any thread, but never from two at once. It must
    // neither log nor touch a path by this library.
    //
    // The first of the virtual operations, before the destructor.
    virtual void CheckAccess(const util::str_t& path) = 0;

    virtual ~IFilesAccessPermissions() = default;
};

// Allows everything.
class CUnrestrictedFilesAccessPermissions : public IFilesAccessPermissions
{
public:
    void CheckAccess(const util::str_t&) override {}
};

} // namespace security
