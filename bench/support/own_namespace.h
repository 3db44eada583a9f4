#pragma once

// A mount namespace in which whole programs are measured. Its /etc is a copy of the machine's, with an agent
// file and a machine id; its /sys holds nothing but a firmware table with an id. Both stand on tmpfs, and so
// does the working folder, where the tool keeps its log. It ends with the process; needs root.

#include <string>

class own_namespace_t
{
public:
    static constexpr char kAgentFileId[] = "{9fd5a6c4-2c1e-4f3a-8a70-9f0d3b6a5e21}";
    static constexpr char kFirmwareId[] = "{00112233-4455-6677-8899-aabbccddeeff}";

    // Throws std::exception if it cannot be made.
    own_namespace_t();
    ~own_namespace_t();

    own_namespace_t(const own_namespace_t&) = delete;
    own_namespace_t& operator=(const own_namespace_t&) = delete;

    // From here on, the firmware is asked for the id.
    void RemoveAgentFile();

private:
    void MakeEtc() const;
    void MakeSys() const;
    void Replace(const std::string& folder) const;

    std::string m_folder = "/dev/shm/nelvo-bench-XXXXXX";
};
