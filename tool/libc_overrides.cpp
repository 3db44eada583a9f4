// Three functions of the C library as this program has them. The executable defines and exports them, so
// every library in the process that calls them gets these.
//
// Nothing may rename or hide them: fortified headers define wrappers of their own, 64-bit offsets make
// pread64 and pwrite64 of the two names, and from an archive nobody would pull them in.

#include <unistd.h>

#if defined(_FORTIFY_SOURCE) || defined(_FILE_OFFSET_BITS)
#error "compile this file without _FORTIFY_SOURCE and _FILE_OFFSET_BITS"
#endif

#pragma GCC visibility push(default)

// Flushing costs nothing here, because nothing reaches the disk by it. It cannot fail either.
// Kept: LibcOverrides.FsyncDoesNothingAndCannotFail
extern "C" int fsync(int) { return 0; }

// Moves the position, which the system's function leaves alone. A seek that fails is ignored, and the bytes
// come from where the position is.
// Kept: LibcOverrides.PreadMovesThePosition
extern "C" ssize_t pread(int descriptor, void* buffer, size_t size, off_t offset)
{
    ::lseek(descriptor, offset, SEEK_SET);
    return ::read(descriptor, buffer, size);
}

// Moves the position as well, and writes where it is when the seek fails.
// Kept: LibcOverrides.PwriteMovesThePosition
extern "C" ssize_t pwrite(int descriptor, const void* buffer, size_t size, off_t offset)
{
    ::lseek(descriptor, offset, SEEK_SET);
    return ::write(descriptor, buffer, size);
}

#pragma GCC visibility pop
