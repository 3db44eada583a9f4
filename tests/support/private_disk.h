#pragma once

// An empty disk in memory, mounted on a folder for this process and its children alone, until the object
// ends.

#include <string>

class private_disk_t
{
public:
    // The size, in bytes, counts in whole pages; a file takes as many as its data does, and a folder or a
    // link none. Fails the test if the disk cannot be mounted: that takes root, or user namespaces that all
    // users may make, and then no other thread.
    private_disk_t(const std::string& folder, std::size_t size);
    ~private_disk_t();
    private_disk_t(const private_disk_t&) = delete;
    private_disk_t& operator=(const private_disk_t&) = delete;

    const std::string& path() const { return m_folder; }
    std::string operator/(const std::string& name) const { return m_folder + "/" + name; }

    // Fills the disk with a file, all but so many pages of 4096 bytes.
    void Fill(std::size_t free_pages) const;

private:
    std::string m_folder;
};
