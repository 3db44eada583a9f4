#pragma once

#include <sys/stat.h>

// The mode bits that new files and folders are without, for as long as the object lives.
class file_mask_t
{
public:
    explicit file_mask_t(mode_t mask) : m_before(::umask(mask)) {}
    ~file_mask_t() { ::umask(m_before); }
    file_mask_t(const file_mask_t&) = delete;
    file_mask_t& operator=(const file_mask_t&) = delete;

private:
    mode_t m_before;
};
