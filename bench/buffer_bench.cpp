// What do values cost on their way through a flat buffer, next to plain memcpy of the same bytes?

#include "nelvo/core/cnt/buf_reader.h"
#include "nelvo/core/cnt/buf_writer.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "bench/support/figure.h"
#include "bench/support/growth_figure.h"

namespace
{

constexpr int kRecords = 1000;
constexpr std::string_view kText = "a text of 24 characters.";
constexpr std::size_t kRecordSize = 1 + 4 + 8 + 4 + 24;

// Puts values behind each other into memory that is large enough.
class plain_writer_t
{
public:
    explicit plain_writer_t(char* place) : m_place(place) {}

    template <class Value>
    void Write(const Value& value)
    {
        Write(&value, sizeof(value));
    }

    void Write(const void* data, std::size_t size)
    {
        std::memcpy(m_place, data, size);
        m_place += size;
    }

private:
    char* m_place;
};

void WriteRecords(cnt::CBufWriter& writer, int count)
{
    for (int i = 0; i != count; ++i)
    {
        writer.WriteBool(true);
        writer.WriteInt32(i);
        writer.WriteInt64(std::int64_t{i});
        writer.WriteString(kText);
    }
}

void AppendRecords(std::string& text, int count)
{
    const auto append = [&text](const auto& value)
    { text.append(reinterpret_cast<const char*>(&value), sizeof(value)); };
    for (int i = 0; i != count; ++i)
    {
        append(true);
        append(i);
        append(std::int64_t{i});
        append(static_cast<std::uint32_t>(kText.size()));
        text += kText;
    }
}

void WritePlainRecords(plain_writer_t writer, int count)
{
    for (int i = 0; i != count; ++i)
    {
        writer.Write(true);
        writer.Write(i);
        writer.Write(std::int64_t{i});
        writer.Write(static_cast<std::uint32_t>(kText.size()));
        writer.Write(kText.data(), kText.size());
    }
}

void AddRecordsWritten()
{
    static cnt::CBufWriter writer;
    static std::vector<char> plain(kRecords * kRecordSize);
    static std::string text;
    figure_t("flat buffer, 1,000 records written")
        .Ours(
            []
            {
                writer.Rewind();
                WriteRecords(writer, kRecords);
                return writer.GetPosition();
            })
        .Against("std::string", 1.5,
                 []
                 {
                     text.clear();
                     AppendRecords(text, kRecords);
                     return text.size();
                 })
        .Against("memcpy",
                 []
                 {
                     WritePlainRecords(plain_writer_t(plain.data()), kRecords);
                     benchmark::ClobberMemory();
                     return plain.data();
                 });
}

std::uint64_t SumOfRecords(CBufReader& reader, int count)
{
    std::uint64_t sum = 0;
    for (int i = 0; i != count; ++i)
    {
        sum += reader.ReadBool() ? 1U : 0U;
        sum += reader.ReadUint32();
        sum += reader.ReadUint64();
        sum += reader.ReadString().size();
    }
    return sum;
}

template <class Value>
Value TakeValue(const char*& place)
{
    Value value;
    std::memcpy(&value, place, sizeof(value));
    place += sizeof(value);
    return value;
}

// Checks nothing.
std::uint64_t SumOfPlainRecords(const char* place)
{
    std::uint64_t sum = 0;
    for (int i = 0; i != kRecords; ++i)
    {
        sum += TakeValue<bool>(place) ? 1U : 0U;
        sum += TakeValue<std::uint32_t>(place);
        sum += TakeValue<std::uint64_t>(place);
        const auto size = TakeValue<std::uint32_t>(place);
        sum += std::string(place, size).size();
        place += size;
    }
    return sum;
}

CBufReader::buffer_ptr_t BufferOfRecords(int count)
{
    cnt::CBufWriter writer;
    WriteRecords(writer, count);
    return writer.GetBuffer();
}

void AddRecordsRead()
{
    static const CBufReader::buffer_ptr_t buffer = BufferOfRecords(kRecords);
    figure_t("flat buffer, 1,000 records read")
        .Ours(
            []
            {
                CBufReader reader(buffer);
                return SumOfRecords(reader, kRecords);
            })
        .Against("memcpy", 2, [] { return SumOfPlainRecords(buffer->data()); });
}

void AddBlob()
{
    constexpr std::size_t kSize = 1048576 - 4;
    static const std::string blob(kSize, 'x');
    // Both from the heap as it is now, so that source and target lie to each other alike: it matters how.
    static cnt::CBufWriter writer(kSize + 4);
    static std::vector<char> plain(kSize + 4);
    figure_t("flat buffer, blob of 1 MiB written")
        .Ours(
            []
            {
                writer.Rewind();
                writer.WriteBlob(blob.size(), blob.data());
                return writer.GetPosition();
            })
        .Against("memcpy", 1.2,
                 []
                 {
                     std::memcpy(plain.data() + 4, blob.data(), blob.size());
                     benchmark::ClobberMemory();
                     return plain.data();
                 });
}

void AddGrowth()
{
    constexpr std::size_t kMostRecords = 8000;
    AddGrowthFigure("records of a flat buffer written", kMostRecords,
                    [](std::size_t size)
                    {
                        const auto writer = std::make_shared<cnt::CBufWriter>();
                        return [writer, count = static_cast<int>(size)]
                        {
                            writer->Rewind();
                            WriteRecords(*writer, count);
                            return writer->GetPosition();
                        };
                    });
    AddGrowthFigure("records of a flat buffer read", kMostRecords,
                    [](std::size_t size)
                    {
                        const int count = static_cast<int>(size);
                        return [count, buffer = BufferOfRecords(count)]
                        {
                            CBufReader reader(buffer);
                            return SumOfRecords(reader, count);
                        };
                    });
}

} // namespace

void AddFigures()
{
    AddRecordsWritten();
    AddRecordsRead();
    AddBlob();
    AddGrowth();
}
