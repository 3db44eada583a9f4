#include "tests/fs/record_checks.h"

#include <algorithm>
#include <cstring>
#include <map>

#include <gtest/gtest.h>

#include "nelvo/core/exc/exc_base.h"
#include "tests/support/golden.h"

namespace
{

constexpr auto kFrame = field_kind_t::kFrame;
constexpr auto kBoolean = field_kind_t::kBoolean;
constexpr auto kValue = field_kind_t::kValue;
constexpr auto kText = field_kind_t::kText;

stored_fields_t Within(stored_fields_t fields, const std::string& record)
{
    for (stored_field_t& field : fields)
        field.records += record;
    return fields;
}

void Append(stored_fields_t& fields, const stored_fields_t& more)
{
    fields.insert(fields.end(), more.begin(), more.end());
}

std::string Context(const std::map<char, std::string>& lines, const std::string& records)
{
    std::string context;
    for (const char record : records)
        context += "\n" + lines.at(record);
    return context;
}

std::string Joined(const std::vector<std::string>& fields)
{
    std::string bytes;
    for (const std::string& field : fields)
        bytes += field;
    return bytes;
}

// Fields of the same sizes with other values.
std::vector<std::string> OtherValues(std::vector<std::string> stored, const stored_fields_t& fields)
{
    for (std::size_t i = 0; i < stored.size(); ++i)
    {
        if (fields[i].kind == kBoolean)
            stored[i][0] = static_cast<char>(stored[i][0] ^ 1);
        else if (fields[i].kind != kFrame)
            std::transform(stored[i].begin(), stored[i].end(), stored[i].begin(),
                           [](char byte) { return static_cast<char>(~byte); });
    }
    return stored;
}

// Whether a record has the field's new value after a read that failed at the field of index cut.
bool IsTaken(const stored_fields_t& fields, std::size_t index, std::size_t cut)
{
    const auto in_acl = [](const stored_field_t& field) { return field.records[0] == 'A'; };
    const auto begin = fields.begin() + static_cast<std::ptrdiff_t>(cut);
    if (in_acl(fields[index]))
        return std::none_of(begin, fields.end(), in_acl);
    if (fields[index].kind == kText)
        return false;
    return fields[index].kind == kBoolean ? index + 1 < cut : index < cut;
}

std::string Bytes(std::uint32_t value)
{
    std::string bytes(sizeof(value), '\0');
    std::memcpy(bytes.data(), &value, sizeof(value));
    return bytes;
}

// What comes before the length is given.
void ExpectWrongLengthToFail(const std::string& before, const stored_fields_t& fields, std::size_t text,
                             const transfer_t& read)
{
    const auto failure = [&](std::uint32_t length)
    { return FailureToRead(before + Bytes(length) + "xy", read); };
    for (const std::uint32_t length : {0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu})
        EXPECT_EQ(ShortText(2, length) + ReadingContext(fields[text].records), failure(length)) << text;
    if (text + 1 == fields.size())
        return;
    // The next field begins where the text ends.
    const std::string context = ReadingContext(fields[text + 1].records);
    EXPECT_EQ(ShortValue(2, 4) + context, failure(0)) << text;
    EXPECT_EQ(ShortValue(1, 4) + context, failure(1)) << text;
}

} // namespace

stored_fields_t AclFields()
{
    return {{"A", kFrame}, {"A", kFrame}, {"A", kFrame}, {"A", kText},
            {"A", kFrame}, {"A", kFrame}, {"A", kText}};
}

stored_fields_t MetaFields()
{
    stored_fields_t fields = {{"M", kFrame}, {"TM", kValue}};
    for (int date = 0; date < 3; ++date)
        Append(fields, {{"DM", kBoolean}, {"DM", kValue}});
    for (int value = 0; value < 3; ++value)
        Append(fields, {{"M", kFrame}, {"M", kValue}});
    Append(fields, Within(AclFields(), "M"));
    return fields;
}

stored_fields_t InfoFields()
{
    stored_fields_t fields = {{"I", kFrame}, {"I", kValue}, {"I", kFrame}, {"I", kValue}};
    Append(fields, {{"I", kFrame}, {"I", kFrame}, {"I", kText}});
    Append(fields, {{"I", kFrame}, {"I", kValue}});
    Append(fields, Within(MetaFields(), "I"));
    Append(fields, {{"I", kFrame}, {"I", kText}});
    return fields;
}

std::string ReadingContext(const std::string& records)
{
    static const std::map<char, std::string> kLines = {
        {'T', "CFileAttributes::DeSerialize: Can't deserialize data."},
        {'D', "CDateTime::DeSerialize: Can't deserialize data."},
        {'A', "Failed to unserialize ACL data into stream."},
        {'M', "Failed to deserialize file metadata."},
        {'I', "Failed to deserialize file info."}};
    return Context(kLines, records);
}

std::string WritingContext(const std::string& records)
{
    static const std::map<char, std::string> kLines = {
        {'T', "CFileAttributes::Serialize: Can't serialize data."},
        {'D', "CDateTime::Serialize: Can't serialize data."},
        {'A', "Failed to serialize ACL data into stream."},
        {'M', "Failed to serialize file metadata."},
        {'I', "Failed to serialize file info."}};
    return Context(kLines, records);
}

void ExpectEachPrefixToFail(const std::string& golden, const stored_fields_t& fields, const transfer_t& read)
{
    const std::vector<std::string> stored = GoldenFields(golden);
    ASSERT_EQ(stored.size(), fields.size());
    std::string before;
    for (std::size_t i = 0; i < stored.size(); ++i)
    {
        const std::size_t size = stored[i].size();
        for (const std::string& prefix : Prefixes(stored[i]))
        {
            const std::string cause =
                fields[i].kind == kText ? ShortText(prefix.size(), size) : ShortValue(prefix.size(), size);
            EXPECT_EQ(cause + ReadingContext(fields[i].records), FailureToRead(before + prefix, read))
                << golden << ", field " << i;
        }
        before += stored[i];
    }
}

void ExpectEachFullDeviceToFail(const std::string& golden, const stored_fields_t& fields,
                                const transfer_t& write)
{
    const std::vector<std::string> stored = GoldenFields(golden);
    ASSERT_EQ(stored.size(), fields.size());
    std::size_t before = 0;
    for (std::size_t i = 0; i < stored.size(); ++i)
    {
        const std::size_t size = stored[i].size();
        for (std::size_t taken = 0; fields[i].kind != kText && taken < size; ++taken)
            EXPECT_EQ(ShortWrite(taken, size) + WritingContext(fields[i].records),
                      FailureToWrite(before + taken, write))
                << golden << ", field " << i;
        before += size;
    }
}

void ExpectWrongLengthsToFail(const std::string& golden, const stored_fields_t& fields,
                              const transfer_t& read)
{
    const std::vector<std::string> stored = GoldenFields(golden);
    std::string before;
    for (std::size_t i = 1; i < stored.size(); ++i)
    {
        if (fields[i].kind == kText)
            ExpectWrongLengthToFail(before, fields, i, read);
        before += stored[i - 1];
    }
}

void ExpectFailedReadsToLeave(const std::string& golden, const stored_fields_t& fields,
                              const failing_read_t& read)
{
    const std::vector<std::string> stored = GoldenFields(golden);
    const std::vector<std::string> old = OtherValues(stored, fields);
    std::string before;
    for (std::size_t cut = 0; cut < stored.size(); ++cut)
    {
        std::string expected;
        for (std::size_t i = 0; i < stored.size(); ++i)
            expected += IsTaken(fields, i, cut) ? stored[i] : old[i];
        for (const std::string& prefix : Prefixes(stored[cut]))
        {
            record_stream_t stream(before + prefix);
            EXPECT_EQ(Hex(expected), Hex(read(Joined(old), stream)))
                << golden << ", cut at " << prefix.size() << " of field " << cut;
        }
        before += stored[cut];
    }
}

void ExpectEachBitFlipToBeReadOrRefused(const std::string& golden, const transfer_t& read)
{
    for (const std::string& flip : BitFlips(Golden(golden)))
    {
        record_stream_t stream(flip);
        try
        {
            read(stream);
        }
        catch (const std::exception& e)
        {
            EXPECT_NE(nullptr, dynamic_cast<const exc::exc_base_t*>(&e)) << Hex(flip) << e.what();
        }
    }
}
