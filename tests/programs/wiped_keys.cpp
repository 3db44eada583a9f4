// Uses keys in each way in which they are copied, and then looks for what is left of them in all its memory.
// Writes how many pieces of keys it finds. With arguments, it leaves a plain copy of a key first, to be
// found.

#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include <boost/make_shared.hpp>

#include "nelvo/crypto/key.h"
#include "nelvo/crypto/repair_record.h"
#include "nelvo/io/mem_stream.h"
#include "tests/support/made_secret.h"

using namespace crypto;

namespace
{

secure_array_ptr_t Secret(std::size_t size)
{
    auto secret = boost::make_shared<secure_array_t>(size);
    MakeSecret(secret->data(), size);
    return secret;
}

template <class Record>
void WriteAndRead(const Record& record)
{
    io::secure_mem_stream_t stream;
    record.Serialize(stream);
    record.Serialize(stream);
    stream.GetMemDevice()->SeekAbsolute(0);
    Record::DeSerialize(stream);
}

[[gnu::noinline]] void UseKeys(std::size_t size)
{
    CKey key(enPrivateKey, *Secret(size));
    key.Clone()->CopyData()->resize(2 * size);
    WriteAndRead(key);
    WriteAndRead(CRestoreKeyRepairRec(nullptr, Secret(size)));
    const secure_array_t form = CAesKeyIVBlob(Secret(size), Secret(size)).ToBlob();
    CKey(enAESIVKey, form).ToAesKeyIVBlob();
    key.Wipe();
}

[[gnu::noinline]] void LeaveAPlainCopy()
{
    const auto secret = Secret(100);
    static std::string copy;
    copy.assign(secret->data(), secret->size());
}

// The parts of memory that can be written to.
std::vector<std::pair<std::uintptr_t, std::uintptr_t>> WritableMemory()
{
    std::vector<std::pair<std::uintptr_t, std::uintptr_t>> parts;
    std::FILE* const maps = std::fopen("/proc/self/maps", "r");
    if (maps == nullptr)
        return parts;
    char line[4096];
    while (std::fgets(line, sizeof(line), maps) != nullptr)
    {
        std::uintptr_t begin = 0;
        std::uintptr_t end = 0;
        char access[5] = {};
        if (std::sscanf(line, "%" SCNxPTR "-%" SCNxPTR " %4s", &begin, &end, access) == 3 &&
            std::strncmp(access, "rw", 2) == 0)
            parts.emplace_back(begin, end);
    }
    std::fclose(maps);
    return parts;
}

} // namespace

int main(int argc, char**)
{
    for (const unsigned size : {32U, 1190U, 100000U})
        UseKeys(size);
    if (argc > 1)
        LeaveAPlainCopy();

    const auto parts = WritableMemory();
    if (parts.empty())
        return 1;
    std::size_t found = 0;
    for (const auto& [begin, end] : parts)
        found += CountSecrets(reinterpret_cast<const char*>(begin), end - begin);
    std::printf("%zu\n", found);
}
