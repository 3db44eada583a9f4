#include "nelvo/fs/file_security.h"

#include <sys/stat.h>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "nelvo/logging/log.h"
#include "tests/support/file_status.h"
#include "tests/support/golden.h"
#include "tests/support/lines_receiver.h"
#include "tests/support/temp_folder.h"

namespace
{

class FileSecurity : public testing::Test
{
protected:
    FileSecurity() { logging::GetProcessLog()->set_receiver(m_log); }
    ~FileSecurity() override { logging::GetProcessLog()->set_receiver({}); }

    std::string File(const std::string& name, mode_t mode) const
    {
        std::string path = m_folder / name;
        WriteFile(path, "");
        EXPECT_EQ(0, ::chmod(path.c_str(), mode));
        return path;
    }

    std::string Logged() const { return WithoutHeads(m_log->text()); }

    temp_folder_t m_folder;
    boost::shared_ptr<lines_receiver_t> m_log = boost::make_shared<lines_receiver_t>();
};

} // namespace

TEST_F(FileSecurity, OfOneFileIsGivenToAnother)
{
    cnt::plain_array_t buffer(1000);
    util::GetFileSecurity(File("a", 0604), buffer);
    EXPECT_EQ(27u, buffer.size());
    const std::string b = File("b", 0777);
    util::SetFileSecurity(b, buffer);
    EXPECT_EQ(0604u, ModeOf(b));
    EXPECT_EQ("", Logged());
}

TEST_F(FileSecurity, FailureToGetItIsAWarningAndTheBufferIsEmpty)
{
    const std::string path = m_folder / "none";
    cnt::plain_array_t buffer(27);
    util::GetFileSecurity(path, buffer);
    EXPECT_TRUE(buffer.empty());
    EXPECT_EQ("       | WARN|Failed to get file security: " + path +
                  "\n       | >>  |No such file or directory\n"
                  "       | >>  |stat64(" +
                  path +
                  ") has failed.\n"
                  "       | >>  |posix_file_security failed to get file security, path: " +
                  path + "\n",
              Logged());
}

TEST_F(FileSecurity, BadBufferIsAWarningAndTheFileStays)
{
    const std::string path = File("a", 0604);
    util::SetFileSecurity(path, {});
    EXPECT_EQ("       | WARN|Failed to set file security: " + path +
                  "\n"
                  "       | >>  |Invalid security buffer size: 0 != 27\n"
                  "       | >>  |posix_file_security failed to deserialize.\n",
              Logged());
    EXPECT_EQ(0604u, ModeOf(path));
}

TEST_F(FileSecurity, FailureToSetItIsAWarning)
{
    const std::string bytes = Golden("posix_file_security");
    const std::string path = m_folder / "none";
    util::SetFileSecurity(path, {bytes.data(), bytes.size()});
    EXPECT_EQ("       | WARN|Failed to set file security: " + path +
                  "\n       | >>  |No such file or directory\n"
                  "       | >>  |chmod(" +
                  path +
                  ") has failed.\n"
                  "       | >>  |posix_file_security failed to apply security for file: " +
                  path + ".\n",
              Logged());
}
