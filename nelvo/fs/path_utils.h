#pragma once

// Path operations that test what they are given first, and tell every failure twice: what went wrong, and
// behind it which operation it was:
//
//   No such file or directory
//   CPathUtils: Failed to read link [/tmp/x].
//
// A failed system call is posix::errno_exc_t, a failed test exc::runtime_exc_t with the text told; both get
// the context line of each operation that they leave. Between a test and the call that follows it another
// process may step in. A path ends at its first zero byte for the access check and the system.
//
// GetType, IsFile, IsDir, IsLink, GetRealPath and GetInfo are defined in path_utils_info.cpp, which stands
// above file info, which stands above the rest.

#include <cstdint>
#include <string>

namespace util
{
struct FileInfo;
}

class CPathUtils
{
public:
    CPathUtils() = delete;

    // By lstat(2), so that a dangling link exists; false if it says ENOENT. An empty path is "Path is not
    // set.", here and below. Asks security::CheckPathAccess first.
    // Context: "CPathUtils: Failed to check whether [<path>] exists."
    static bool Exists(const std::string& path);

    // Context: "CPathUtils: Unable to get current working directory."
    static std::string GetCurrentDir();

    // The link's name must be free. An empty name is "Link filename is empty.", an empty target "Link target
    // path is empty.", a missing target "Target path is not exist."
    // Context: "CPathUtils: Failed to create hard link [<name>] with target [<target>]."
    static void CreateHardLink(const std::string& target, const std::string& link_name);

    // The target need not exist. util::CreateSymlink takes the two the other way round. Empty texts are
    // refused as by CreateHardLink.
    // Context: "CPathUtils: Failed to create symbolic link [<name>] with target [<target>]."
    static void CreateSymLink(const std::string& target, const std::string& link_name);

    // Never replaces what stands at the target: that is "Target path currently exist.", and a missing source
    // "Source path is not exist." Equal paths are left alone without any test.
    // Context: "CPathUtils: Failed to rename file from [<source>] to [<target>]."
    static void Rename(const std::string& source, const std::string& target);

    // Removes a file, a link or an empty folder. A missing path is no failure.
    // Context: "CPathUtils: Failed to delete file or directory [<path>]."
    static void Delete(const std::string& path);

    // The first of /usr/bin/<command>, /bin/<command> and /usr/local/bin/<command> that util::ExistsByStat
    // finds, whatever it is. Throws exc::runtime_exc_t with "Failed to find command [<command>] full path.",
    // and what util::ExistsByStat throws, without context.
    static std::string FindCommand(const std::string& command);

    // Between the parts of a path.
    static char GetSeparator() { return '/'; }

    // Creates the folder, and with parents the missing ones above it. The mode is a decimal number with the
    // octal digits, such as 755, less the umask (util::ConvertBase). A folder that the system refuses is
    // "Unable to create directory [<path>]."
    // Context: "CPathUtils: Failed to create directory (path = [<path>], parents = [<parents>], mode =
    // [<mode>])."
    //
    // What exists at the path is taken for the folder, a file too.
    // Kept: PathUtils.CreateDirTakesWhatStandsThere
    //
    // With parents, a doubled separator, a "." component or a separator at the end makes the same folder
    // twice, and the second time fails.
    // Kept: PathUtils.CreateDirWithParentsFailsBehindASeparatorAtTheEnd
    static void CreateDir(const std::string& path, bool parents, std::uint16_t mode);

    // CreateDir with mode 755, the second without parents.
    static void CreateDirParents(const std::string& path, bool parents);
    static void CreateDirPlain(const std::string& path);

    // Copies the content of a file to a path where nothing stands yet; missing folders above it are created.
    // Owner, mode and times are not copied, and failures to read or write the content are not noticed. The
    // refusals are Rename's, and "Unable to open source file: [<path>]." and "Unable to open target file:
    // [<path>]."
    // Context: "CPathUtils: Failed to copy file from [<source>] to [<target>]."
    static void Copy(const std::string& source, const std::string& target);

    // The target of a link, as it stands there.
    // Context: "CPathUtils: Failed to read link [<path>]."
    static std::string ReadLink(const std::string& path);

    // What the three below ask: util::kRegularFile, util::kDirectory or util::kSymbolicLink (file_info.h),
    // links not followed. Anything else that stands there is "Unknown type of file [<path>]."
    // Context: "CPathUtils: Failed to get type of [<path>]."
    static std::uint32_t GetType(const std::string& path);

    // They fail as GetType does, and do not say no, where nothing or something else stands.
    // Kept: PathUtils.NothingAndAFifoAreNoAnswerToWhatTheyAre
    static bool IsFile(const std::string& path);
    static bool IsDir(const std::string& path);
    static bool IsLink(const std::string& path);

    // Where a link leads in the end, as an absolute path without links; that must exist.
    // Context: "CPathUtils: Failed to read real path for [<path>]."
    //
    // A path of anything else comes back as it was given, relative or through links.
    // Kept: PathUtils.RealPathOfWhatIsNoLinkIsThePathAsGiven
    static std::string GetRealPath(const std::string& path);

    // util::GetFileInfo of what must exist, with its context alone.
    static util::FileInfo GetInfo(const std::string& path);
};
