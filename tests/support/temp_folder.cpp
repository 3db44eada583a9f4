#include "tests/support/temp_folder.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <sys/statvfs.h>

#include <gtest/gtest.h>

namespace
{

bool CanStartProgramsFrom(const char* folder)
{
    struct statvfs info = {};
    return ::statvfs(folder, &info) == 0 && (info.f_flag & ST_NOEXEC) == 0;
}

} // namespace

temp_folder_t::temp_folder_t()
    : m_path(CanStartProgramsFrom("/dev/shm") ? "/dev/shm/nelvo-test-XXXXXX" : "/tmp/nelvo-test-XXXXXX")
{
    if (::mkdtemp(m_path.data()) == nullptr)
        ADD_FAILURE() << "no temporary folder " << m_path;
}

temp_folder_t::~temp_folder_t()
{
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

std::string ReadFile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file.is_open()) << path;
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

void WriteFile(const std::string& path, const std::string& text)
{
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << text;
    file.close();
    EXPECT_TRUE(file.good()) << path;
}
