// Exceptions in a flat buffer.

#include "fuzz/stream.h"
#include "nelvo/core/cnt/buf_reader.h"
#include "nelvo/core/cnt/buf_writer.h"
#include "nelvo/core/exc/runtime_exc.h"

namespace
{

template <class Exception>
fuzz::array_ptr_t Written(const Exception& exception)
{
    static cnt::CBufWriter writer; // its mebibyte is made once
    writer.Rewind();
    exception.WriteTo(writer);
    return boost::make_shared<cnt::plain_array_t>(writer.GetBuffer()->data(), writer.GetPosition());
}

// One that is read is written, and read again, as the same bytes. One that is not stays as it was.
template <class Exception>
void TryException(const fuzz::array_ptr_t& bytes)
{
    Exception exception("before");
    const fuzz::array_ptr_t before = Written(exception);
    CBufReader reader(bytes);
    const bool is_read = fuzz::Reads([&] { exception.ReadFrom(reader); });
    const fuzz::array_ptr_t written = Written(exception);
    CBufReader written_reader(written);
    Exception again("again");
    again.ReadFrom(written_reader);
    fuzz::Require(written_reader.GetPosition() == written->size() && *Written(again) == *written);
    fuzz::Require(is_read || *written == *before);
    fuzz::Require(exception.what() != nullptr);
}

} // namespace

void fuzz::Try(const std::uint8_t* data, std::size_t size)
{
    const array_ptr_t bytes = Array(data, size);
    TryException<exc::exc_base_t>(bytes);
    TryException<exc::runtime_exc_t>(bytes);
}
