#pragma once

// A folder on tmpfs, removed with all that is in it at the end.
//
//   static const bench_folder_t folder;
//   const std::string path = folder / "a.log";

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

class bench_folder_t
{
public:
    bench_folder_t()
    {
        if (::mkdtemp(m_path.data()) == nullptr)
            throw std::system_error(errno, std::generic_category(), m_path);
    }

    ~bench_folder_t()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }

    bench_folder_t(const bench_folder_t&) = delete;
    bench_folder_t& operator=(const bench_folder_t&) = delete;

    std::string operator/(const std::string& name) const { return m_path + '/' + name; }

private:
    std::string m_path = "/dev/shm/nelvo-bench-XXXXXX";
};
