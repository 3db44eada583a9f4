// Stored records of files: the whole one, its metadata, its attributes.

#include "nelvo/fs/file_info.h"

#include "fuzz/stream.h"

namespace
{

// The constructors that read do as the functions do.
template <class Record>
void TryConstructor(const fuzz::array_ptr_t& bytes, const Record& record, bool is_read,
                    void (*write)(const Record& record, io::io_dev_t& stream))
{
    io::plain_mem_stream_t stream(bytes);
    fuzz::Require(is_read == fuzz::Reads(
                                 [&]
                                 {
                                     const Record made(stream);
                                     fuzz::Require(*fuzz::Stored(made, write) ==
                                                   *fuzz::Stored(record, write));
                                 }));
}

template <class Record>
void TryRecord(const fuzz::array_ptr_t& bytes, void (*read)(Record& record, io::io_dev_t& stream),
               void (*write)(const Record& record, io::io_dev_t& stream))
{
    Record record;
    const bool is_read = fuzz::TryStored(record, bytes, fuzz::IntoAnother(read), write);
    TryConstructor(bytes, record, is_read, write);
}

void TryAttributes(const fuzz::array_ptr_t& bytes)
{
    CFileAttributes attributes;
    const bool is_read = fuzz::TryStored(attributes, bytes, fuzz::form_t::kCanonical);
    fuzz::Require(is_read == (bytes->size() >= sizeof(attributes.GetAttributes())));
    io::plain_mem_stream_t stream(bytes);
    std::uint32_t again = 0;
    fuzz::Reads([&] { again = CFileAttributes::FromStream(stream).GetAttributes(); });
    fuzz::Require(again == attributes.GetAttributes());
}

} // namespace

void fuzz::Try(const std::uint8_t* data, std::size_t size)
{
    const array_ptr_t bytes = Array(data, size);
    TryRecord(bytes, util::DeserializeFileInfo, util::SerializeFileInfo);
    TryRecord(bytes, util::DeserializeFileMeta, util::SerializeFileMeta);
    TryAttributes(bytes);
}
