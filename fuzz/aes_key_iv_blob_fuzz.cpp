// AES keys with their vectors.

#include "nelvo/crypto/aes_key_iv_blob.h"

#include "fuzz/stream.h"

using crypto::CAesKeyIVBlob;

void fuzz::Try(const std::uint8_t* data, std::size_t size)
{
    const auto read = [](const crypto::secure_array_t& bytes)
    { return CAesKeyIVBlob::FromBlob(boost::make_shared<crypto::secure_array_t>(bytes)); };
    boost::shared_ptr<CAesKeyIVBlob> blob;
    if (!Reads([&] { blob = read({reinterpret_cast<const char*>(data), size}); }))
        return;
    // Two arrays that there is memory for may be too much in one.
    Reads(
        [&]
        {
            const crypto::secure_array_t stored = blob->ToBlob();
            Require(read(stored)->ToBlob() == stored);
        });
}
