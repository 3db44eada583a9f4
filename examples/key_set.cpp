// Writes a key set with new keys into a file, and lists what such a file holds, but for the bytes of keys:
//
//   key_set write FILE HINT
//   key_set list FILE
//
// Key bytes stand in secure arrays from beginning to end, which wipe the memory that they give back; so do
// streams over such arrays.

#include <exception>
#include <iostream>
#include <string>

#include <boost/make_shared.hpp>

#include "nelvo/core/date_time.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/core/guid.h"
#include "nelvo/core/util/wide.h"
#include "nelvo/crypto/key_set.h"
#include "nelvo/io/mem_stream.h"
#include "nelvo/posix/posix_file.h"

using namespace crypto;

namespace
{

constexpr std::uint32_t kAes256Cbc = 0;
constexpr std::uint32_t kStorageRole = 2;
constexpr std::uint64_t kUnitsPerSecond = 10000000;

secure_array_ptr_t RandomBytes(std::size_t size)
{
    auto bytes = boost::make_shared<secure_array_t>(size);
    posix::posix_file_t::OpenRead("/dev/urandom")->ReadBytes(bytes->data(), static_cast<stream_size_t>(size));
    return bytes;
}

CKeySetId::ptr_t NewId()
{
    CKeySetId::blob_t bytes;
    Guid::Generate().CopyTo(bytes);
    return CKeySetId::FromBlob(bytes);
}

void Write(const std::string& path, const std::string& hint)
{
    const CAesKeyIVBlob key(RandomBytes(32), RandomBytes(16));
    const auto units =
        static_cast<std::uint64_t>(datetime::CDateTime::NowUtc().GetSeconds()) * kUnitsPerSecond;
    const SKeySetTime now{static_cast<std::uint32_t>(units), static_cast<std::uint32_t>(units >> 32)};
    CKeySet set(NewId(), kAes256Cbc, util::Utf8ToWide(hint), kStorageRole, {}, {}, now);
    set.AddKey(boost::make_shared<CKey>(enAESIVKey, key.ToBlob()));

    io::secure_mem_stream_t stream;
    set.Serialize(stream);
    const posix_file_ptr_t file = posix::posix_file_t::CreateOrOpen(path);
    posix::posix_file_t::SetPermissions(path.c_str(), 0600); // before there is anything to read
    file->set_size(0);
    file->WriteBytes(static_cast<stream_size_t>(stream.GetArray()->size()), stream.GetArray()->data());
}

CKeySet::ptr_t Read(const std::string& path)
{
    const posix_file_ptr_t file = posix::posix_file_t::OpenRead(path);
    const stream_size_t size = file->GetSize();
    const auto bytes = boost::make_shared<secure_array_t>(static_cast<std::size_t>(size));
    if (file->ReadBytes(bytes->data(), size) != size)
        throw exc::runtime_exc_t("File [%1] got shorter.", path);
    io::secure_mem_stream_t stream(bytes);
    return CKeySet::DeSerialize(stream);
}

void List(const CKeySet& set)
{
    const SKeySetTime time = set.GetCreationTime();
    const std::uint64_t units = std::uint64_t{time.high} << 32 | time.low;
    const datetime::CDateTime made(static_cast<std::int64_t>(units / kUnitsPerSecond), true);
    std::cout << set.ToString() << "\nHint: " << util::WideToUtf8(set.GetHint())
              << "\nAlgorithm: " << set.GetAlgorithmName()
              << "\nMade: " << made.ToString(datetime::CDateTime::kIsoFormat) << " UTC\n";
    for (const auto& key : set.GetKeys())
        std::cout << "Key: " << KeyTypeToString(key->GetType()) << ", " << key->GetData().size()
                  << " bytes\n";
    std::cout << std::flush;
}

} // namespace

int main(int argc, char* argv[])
{
    try
    {
        const std::string what = argc > 1 ? argv[1] : "";
        if (what == "write" && argc == 4)
            Write(argv[2], argv[3]);
        else if (what == "list" && argc == 3)
            List(*Read(argv[2]));
        else
            throw exc::runtime_exc_t("Usage: key_set write FILE HINT | list FILE");
    }
    catch (std::exception& e)
    {
        std::cerr << e.what() << std::endl;
        return 1;
    }
    return 0;
}
