// The pipe by which the tool asks the firmware, and nothing else: opened, read to its end and closed.

#include <cstddef>
#include <cstdio>

int main()
{
    // NOLINTNEXTLINE(cert-env33-c): what is measured
    FILE* const pipe = ::popen("dmidecode 2> /dev/null | grep -i uuid", "r");
    if (pipe == nullptr)
        return 1;
    char buffer[4096];
    std::size_t size = 0;
    while (const std::size_t count = std::fread(buffer, 1, sizeof(buffer), pipe))
        size += count;
    ::pclose(pipe);
    return size != 0 ? 0 : 1;
}
