// Exceptions in a flat buffer.

#include "fuzz/stream.h"
#include "nelvo/core/cnt/buf_reader.h"
#include "nelvo/core/cnt/buf_writer.h"
#include "nelvo/core/exc/errno_exc.h"
#include "nelvo/core/exc/file_locked_exc.h"
#include "nelvo/core/exc/runtime_exc.h"

namespace
{

fuzz::array_ptr_t Written(const exc::exc_base_t& exception)
{
    static cnt::CBufWriter writer; // its mebibyte is made once
    writer.Rewind();
    exception.WriteTo(writer);
    return boost::make_shared<cnt::plain_array_t>(writer.GetBuffer()->data(), writer.GetPosition());
}

// The text without prefixes, as it stands in the bytes.
std::string ReadPlainText(CBufReader& reader)
{
    std::string text;
    const std::int32_t count = reader.ReadInt32();
    for (std::int32_t line = 0; line < count; ++line)
    {
        text += (line == 0 ? "" : "\n") + reader.ReadString();
        reader.ReadBool();
    }
    return text;
}

// The trace, as it stands behind that. The first of two properties of a name counts.
exc_trace_t ReadTrace(CBufReader& reader)
{
    exc_trace_t trace;
    for (std::int32_t count = reader.ReadInt32(); count > 0; --count)
    {
        const std::string key = reader.ReadString();
        trace.properties.insert({key, reader.ReadString()});
    }
    for (std::int32_t count = reader.ReadInt32(); count > 0; --count)
    {
        const std::int32_t code = reader.ReadInt32();
        const std::string info = reader.ReadString();
        if (code >= 1 && code <= 6)
            trace.events.push_back({code, info});
    }
    return trace;
}

// What was read stands in the bytes, and what is asked of it fits together.
void RequireWhole(const exc::exc_base_t& exception, const fuzz::array_ptr_t& bytes)
{
    CBufReader reader(bytes);
    fuzz::Require(exception.GetPlainText() == ReadPlainText(reader));
    const exc_trace_t trace = ReadTrace(reader);
    fuzz::Require(exception.GetTrace().properties == trace.properties);
    fuzz::Require(exception.GetTrace().events == trace.events);

    const std::string text = exception.GetFullText();
    const std::string trace_text = trace.ToText();
    fuzz::Require(text.rfind(exception.what(), 0) == 0);
    fuzz::Require(trace_text.empty() || text.rfind("\n" + trace_text) == text.size() - trace_text.size() - 1);
    fuzz::Require(exception.Clone()->GetPlainText() == exception.GetPlainText());
}

// One that is read is written, and read again, as the same bytes. One that is not stays as it was. True if it
// is read.
template <class Exception>
bool TryException(Exception exception, const fuzz::array_ptr_t& bytes)
{
    const fuzz::array_ptr_t before = Written(exception);
    Exception again(exception);
    CBufReader reader(bytes);
    const bool is_read = fuzz::Reads([&] { exception.ReadFrom(reader); });
    const fuzz::array_ptr_t written = Written(exception);
    CBufReader written_reader(written);
    again.ReadFrom(written_reader);
    fuzz::Require(written_reader.GetPosition() == written->size() && *Written(again) == *written);
    if (is_read)
        RequireWhole(exception, bytes);
    else
        fuzz::Require(*written == *before);
    return is_read;
}

void TryNumberAndFile(const fuzz::array_ptr_t& bytes)
{
    posix::errno_exc_t with_number(2);
    exc::file_locked_exc_t with_file("/a");
    for (exc::exc_base_t* exception :
         {static_cast<exc::exc_base_t*>(&with_number), static_cast<exc::exc_base_t*>(&with_file)})
    {
        CBufReader reader(bytes);
        fuzz::Reads([&] { exception->ReadFrom(reader); });
    }
    fuzz::Require(with_number.GetErrorCode() == 2 && with_file.GetFile() == "/a");
}

} // namespace

void fuzz::Try(const std::uint8_t* data, std::size_t size)
{
    const array_ptr_t bytes = Array(data, size);
    const bool is_read = TryException(exc::exc_base_t("before"), bytes);
    // It reads the same and a number behind it.
    Require(TryException(exc::runtime_exc_t("before", exc::error_code_t{1}), bytes) <= is_read);
    TryException(posix::errno_exc_t("before", 2), bytes);
    TryNumberAndFile(bytes);
    CBufReader reader(bytes);
    Require(Reads([&] { exc::exc_base_t{reader}; }) == is_read);
}
