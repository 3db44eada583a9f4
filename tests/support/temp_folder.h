#pragma once

// A folder of a test's own, removed with all that is in it: on tmpfs, if one is there that programs can be
// started from.

#include <string>

class temp_folder_t
{
public:
    temp_folder_t();
    ~temp_folder_t();
    temp_folder_t(const temp_folder_t&) = delete;
    temp_folder_t& operator=(const temp_folder_t&) = delete;

    const std::string& path() const { return m_path; }
    std::string operator/(const std::string& name) const { return m_path + "/" + name; }

private:
    std::string m_path;
};

// The whole content of a file; fails the test if it cannot be read.
std::string ReadFile(const std::string& path);

// Makes the file's content this text; fails the test if it cannot be written.
void WriteFile(const std::string& path, const std::string& text);
