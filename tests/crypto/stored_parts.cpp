#include "tests/crypto/stored_parts.h"

#include <algorithm>
#include <cstring>

#include <gtest/gtest.h>

#include "nelvo/core/exc/exc_base.h"
#include "tests/crypto/block_limit.h"
#include "tests/support/golden.h"

namespace
{

constexpr auto kValue = part_kind_t::kValue;
constexpr auto kText = part_kind_t::kText;
constexpr auto kZeros = part_kind_t::kZeros;
constexpr auto kSizeOfId = part_kind_t::kSizeOfId;

constexpr std::size_t kMostBlock = std::size_t{16} << 20U;

// What reading says if the record ends behind so many bytes of that part.
std::string CutOutcome(const wiped_list_t& stored, const stored_parts_t& parts, std::size_t part,
                       std::size_t received)
{
    if (part == parts.size())
        return {};
    const std::size_t size = stored[part].size();
    switch (parts[part].kind)
    {
    case kValue: return "fails: " + ShortValue(received, size) + parts[part].reading;
    case kText: return "fails: " + ShortText(received, size) + parts[part].reading;
    case kZeros: return CutOutcome(stored, parts, part + 1, 0);
    case kSizeOfId:
        if (received != 0)
            return CutOutcome(stored, parts, part + 1, 0);
        return "fails: Serialized size of the SRawKeySetId is unexpected (0). Expected size: '16'." +
               parts[part].reading;
    }
    return "not a kind";
}

// The same for writing to a device without room for more.
std::string FullOutcome(const wiped_list_t& stored, const stored_parts_t& parts, std::size_t part,
                        std::size_t taken)
{
    if (part == parts.size())
        return "written";
    if (parts[part].kind == kValue)
        return ShortWrite(taken, stored[part].size()) + parts[part].writing;
    return FullOutcome(stored, parts, part + 1, 0);
}

std::string WriteOutcome(std::size_t room, const transfer_t& write)
{
    try
    {
        full_dev_t device(room);
        write(device);
        return "written";
    }
    catch (const std::exception& e)
    {
        return e.what();
    }
}

// With zeros behind the cut, and the size of an id as it is always written.
wiped_bytes_t Padded(const wiped_list_t& stored, const stored_parts_t& parts, std::string_view cut)
{
    wiped_bytes_t whole;
    for (std::size_t i = 0; i != parts.size(); ++i)
    {
        const std::size_t begin = whole.size();
        whole += stored[i];
        for (std::size_t at = begin; at != whole.size() && parts[i].kind == kZeros; ++at)
            if (at >= cut.size())
                whole[at] = '\0';
    }
    return whole;
}

wiped_bytes_t Joined(const wiped_list_t& fields)
{
    wiped_bytes_t bytes;
    for (const wiped_bytes_t& field : fields)
        bytes += field;
    return bytes;
}

wiped_list_t WithoutSecrets(wiped_list_t fields)
{
    for (wiped_bytes_t& field : fields)
        if (CountSecrets(field.data(), field.size()) != 0)
            field.assign(field.size(), '\0');
    return fields;
}

void ExpectToBeReadOrRefused(const wiped_bytes_t& bytes, const copy_t& copy)
{
    record_stream_t from(bytes);
    record_stream_t to;
    try
    {
        copy(from, to);
    }
    catch (const std::bad_alloc&)
    {
    }
    catch (const std::exception& e)
    {
        EXPECT_NE(nullptr, dynamic_cast<const exc::exc_base_t*>(&e)) << Hex(bytes) << e.what();
    }
}

} // namespace

stored_part_t PlainPart() { return {kValue, "", ""}; }

stored_parts_t KeyParts()
{
    const std::string reading = "\n--tr:Failed to de-serialize encryption key from memory stream.";
    return {{kValue, reading, ""}, {kValue, reading, ""}, {kZeros, "", ""}};
}

stored_parts_t KeySetIdParts()
{
    return {{kSizeOfId, "\n--tr:Failed to deserialize keyset.", ""}, {kZeros, "", ""}};
}

stored_parts_t RepairRecordParts()
{
    const std::string reading = "\n--tr:Failed to de-serialize keyset repair record from memory stream.";
    const std::string writing = "\n--tr:Failed to serialize keyset repair record from memory stream.";
    return {{kValue, reading, writing}, {kZeros, "", ""}, {kValue, reading, writing}, {kZeros, "", ""}};
}

stored_parts_t Joined(const std::vector<stored_parts_t>& parts)
{
    stored_parts_t joined;
    for (const stored_parts_t& more : parts)
        joined.insert(joined.end(), more.begin(), more.end());
    return joined;
}

std::string Outcome(std::string_view bytes, const copy_t& copy)
{
    record_stream_t from(bytes);
    record_stream_t to;
    try
    {
        copy(from, to);
        return Hex(to.view());
    }
    catch (const std::exception& e)
    {
        return std::string("fails: ") + e.what();
    }
}

void ExpectCopyToBeTheSame(const std::string& golden, const copy_t& copy)
{
    const wiped_bytes_t stored = SecretGolden(golden);
    record_stream_t from(stored);
    record_stream_t to;
    copy(from, to);
    EXPECT_EQ(0u, from.GetRemaining());
    EXPECT_EQ(Hex(stored), Hex(to.view()));
}

void ExpectEachCut(const std::string& golden, const stored_parts_t& parts, const copy_t& copy)
{
    const wiped_list_t stored = SecretFields(golden);
    ASSERT_EQ(stored.size(), parts.size());
    wiped_bytes_t before;
    for (std::size_t i = 0; i != parts.size(); ++i)
    {
        for (std::size_t size = 0; size != stored[i].size(); ++size)
        {
            const wiped_bytes_t cut = before + stored[i].substr(0, size);
            const std::string failure = CutOutcome(stored, parts, i, size);
            EXPECT_EQ(failure.empty() ? Hex(Padded(stored, parts, cut)) : failure, Outcome(cut, copy))
                << golden << ", part " << i << ", " << size << " bytes of it";
        }
        before += stored[i];
    }
}

void ExpectEachShortWrite(const std::string& golden, const stored_parts_t& parts, const transfer_t& write)
{
    const wiped_list_t stored = SecretFields(golden);
    ASSERT_EQ(stored.size(), parts.size());
    std::size_t before = 0;
    for (std::size_t i = 0; i != parts.size(); ++i)
    {
        for (std::size_t taken = 0; taken != stored[i].size(); ++taken)
            EXPECT_EQ(FullOutcome(stored, parts, i, taken), WriteOutcome(before + taken, write))
                << golden << ", part " << i << ", " << taken << " bytes of it";
        before += stored[i].size();
    }
}

void ExpectEachBitFlipToBeReadOrRefused(const std::string& golden, const copy_t& copy,
                                        const std::vector<std::size_t>& sizes_of_texts)
{
    const block_limit_t limit(kMostBlock);
    const wiped_list_t stored = SecretFields(golden);
    for (std::size_t part = 0; part != stored.size(); ++part)
    {
        const bool is_size = std::count(sizes_of_texts.begin(), sizes_of_texts.end(), part) != 0;
        for (std::size_t bit = 0; bit != stored[part].size() * 8; ++bit)
        {
            wiped_list_t fields = is_size ? WithoutSecrets(stored) : stored;
            char& byte = fields[part][bit / 8];
            byte = static_cast<char>(byte ^ (1 << bit % 8));
            ExpectToBeReadOrRefused(Joined(fields), copy);
        }
    }
}

wiped_bytes_t WithNumber(const std::string& golden, std::size_t part, std::uint32_t number)
{
    wiped_list_t stored = SecretFields(golden);
    std::memcpy(stored.at(part).data(), &number, sizeof(number));
    return Joined(stored);
}

crypto::secure_array_t Secure(std::string_view bytes)
{
    return crypto::secure_array_t(bytes.data(), bytes.size());
}

crypto::secure_array_ptr_t SharedSecure(std::string_view bytes)
{
    return boost::make_shared<crypto::secure_array_t>(bytes.data(), bytes.size());
}

std::string_view Text(const crypto::secure_array_t& bytes) { return {bytes.data(), bytes.size()}; }
