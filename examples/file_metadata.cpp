// Keeps times, owner and permissions of a file in a record, and gives them to another file:
//
//   file_metadata save FILE RECORD
//   file_metadata restore RECORD FILE
//
// Only root can give a file to another owner; anybody can restore what is his own. What stands in a record,
// "record_dump file-meta RECORD" shows.

#include <exception>
#include <iostream>
#include <string>

#include <boost/make_shared.hpp>

#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/fs/file_info.h"
#include "nelvo/fs/file_meta.h"
#include "nelvo/io/mem_stream.h"
#include "nelvo/posix/posix_file.h"

namespace
{

void Print(const std::string& what, const util::FileMeta& meta)
{
    std::cout << what << ": modified " << meta.modified.ToString(datetime::CDateTime::kIsoFormat)
              << " UTC, mode " << meta.mode.value_or(0) << std::endl;
}

void Save(const std::string& path, const std::string& record)
{
    const util::FileMeta meta = util::ReadFileInfo(path).meta;
    io::plain_mem_stream_t stream;
    util::SerializeFileMeta(meta, stream);

    const auto bytes = stream.GetArray();
    const posix_file_ptr_t file = posix::posix_file_t::CreateOrOpen(record);
    file->set_size(0);
    file->WriteBytes(static_cast<stream_size_t>(bytes->size()), bytes->data());
    Print("Saved", meta);
}

void Restore(const std::string& record, const std::string& path)
{
    std::string bytes;
    posix::posix_file_t::OpenRead(record)->ReadAllText(bytes);
    io::plain_mem_stream_t stream(boost::make_shared<cnt::plain_array_t>(bytes.data(), bytes.size()));

    const util::FileMeta meta(stream);
    if (stream.GetRemaining() != 0)
        throw exc::runtime_exc_t("There is more than a record in [%1].", record);
    util::ApplyFileMeta(meta, path);
    Print("Restored", meta);
}

} // namespace

int main(int argc, char* argv[])
{
    try
    {
        const std::string what = argc == 4 ? argv[1] : "";
        if (what == "save")
            Save(argv[2], argv[3]);
        else if (what == "restore")
            Restore(argv[2], argv[3]);
        else
            throw exc::runtime_exc_t("Usage: file_metadata save FILE RECORD | restore RECORD FILE");
    }
    catch (std::exception& e)
    {
        std::cerr << e.what() << std::endl;
        return 1;
    }
    return 0;
}
