// Files, paths and what describes them, while memory runs out.

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>
#include <sys/stat.h>
#include <utility>

#include <gtest/gtest.h>

#include "nelvo/core/exc/errno_exc.h"
#include "nelvo/core/util/wide.h"
#include "nelvo/fs/file_aging.h"
#include "nelvo/fs/file_info.h"
#include "nelvo/fs/file_security.h"
#include "nelvo/fs/file_utils.h"
#include "nelvo/fs/free_space.h"
#include "nelvo/fs/path_utils.h"
#include "nelvo/posix/posix_file.h"
#include "tests/faults/allocation_sweep.h"
#include "tests/faults/swept_log.h"
#include "tests/support/temp_folder.h"

namespace fs = std::filesystem;

using posix::posix_file_t;

namespace
{

const std::string kText = "the quick brown fox jumps over it";

class FilesWithoutMemory : public testing::Test
{
protected:
    FilesWithoutMemory() { Renew(); }

    // What is in the folder then, "a=text b/ l", is the result; the next run finds a file and a link to it.
    void Sweep(const std::string& expected, const std::function<void()>& act)
    {
        SweepAllocations({act,
                          [this]
                          {
                              std::string names = Names();
                              Renew();
                              return names;
                          },
                          expected});
    }

    // The result is what the call gives.
    template <class Call>
    void SweepText(const std::string& expected, Call call)
    {
        decltype(call()) text{};
        SweepAllocations(
            {[&] { text = call(); }, [&] { return Narrow(std::exchange(text, {})); }, expected, ""});
    }

    static std::string Narrow(const std::string& text) { return text; }
    static std::string Narrow(const std::wstring& text) { return util::WideToUtf8(text); }
    static std::string Narrow(bool value) { return value ? "true" : ""; }
    static std::wstring Wide(const std::string& text) { return util::Utf8ToWide(text); }

    const temp_folder_t m_folder;
    const std::string m_home = m_folder / "a folder whose name is not short";
    const std::string m_file = m_home + "/file";
    const std::string m_link = m_home + "/link";
    const std::string m_new = m_home + "/new";

private:
    void Renew() const
    {
        fs::remove_all(m_home);
        fs::create_directory(m_home);
        WriteFile(m_file, "text");
        fs::create_symlink(m_file, m_link);
    }

    std::string Names() const
    {
        std::string names;
        for (const char* const name : {"file", "file.1", "file.2", "link", "new", "new/deep", "tmp"})
        {
            const std::string path = m_home + "/" + name;
            if (fs::is_symlink(path))
                names += std::string(name) + " ";
            else if (fs::is_directory(path))
                names += std::string(name) + "/ ";
            else if (fs::exists(path))
                names += std::string(name) + "=" + ReadFile(path) + " ";
        }
        return names;
    }
};

} // namespace

TEST_F(FilesWithoutMemory, FileIsOpenedAndWrittenOrThrows)
{
    Sweep("file=text link new=the quick brown fox jumps over it ",
          [this] { posix_file_t::CreateOrOpen(m_new)->WriteText(kText); });
    Sweep("file=the quick brown fox jumps over it link ",
          [this] { posix_file_t::OpenReadWrite(Wide(m_file))->WriteText(kText); });
}

TEST_F(FilesWithoutMemory, FileIsReadOrThrows)
{
    SweepText("text",
              [this]
              {
                  std::string text;
                  posix_file_t::OpenRead(m_link)->ReadAllText(text);
                  return text;
              });
}

TEST_F(FilesWithoutMemory, PreallocationNeverMakesOpeningFailByItself)
{
    swept_log_t log;
    const std::string done = "       | [1,048,576] bytes were preallocated for the file [" + m_new + "].\n";
    SweepAllocations({[this] { posix_file_t::CreateWithPrealloc(m_new, 1048576); },
                      [&]
                      {
                          const bool is_there = fs::remove(m_new);
                          const std::string lines = log.Taken();
                          const bool is_warned =
                              lines.find("WARN|Unable to preallocate") != std::string::npos;
                          EXPECT_TRUE(lines.empty() || lines == done || is_warned) << lines;
                          return is_there ? "opened" : "not opened";
                      },
                      "opened"});
}

TEST_F(FilesWithoutMemory, FileThatIsMissingIsToldOrThrowsBadAlloc)
{
    SweepText("No such file or directory\nPOSIX: Failed to open file [" + m_new + "].",
              [this]() -> std::string
              {
                  try
                  {
                      posix_file_t::OpenRead(m_new);
                  }
                  catch (const posix::errno_exc_t& e)
                  {
                      return e.what();
                  }
                  return "opened";
              });
}

TEST_F(FilesWithoutMemory, LinkIsReadOrThrows)
{
    SweepText(m_file, [this] { return posix_file_t::ReadSymlink(m_link); });
    SweepText(m_file, [link = Wide(m_link)] { return posix_file_t::ReadSymlink(link); });
    SweepText(m_file, [this] { return CPathUtils::ReadLink(m_link); });
    SweepText(m_file, [this] { return CPathUtils::GetRealPath(m_link); });
}

TEST_F(FilesWithoutMemory, PathIsLookedAtOrThrows)
{
    SweepText("true", [this] { return util::FileExists(m_link); });
    SweepText("true", [file = Wide(m_file)] { return util::ExistsByStat(file); });
    SweepText("true", [this] { return util::ExistsByLstat(m_link); });
    SweepText("true", [this] { return util::fs_short_stat(m_link).is_symlink; });
    SweepText("true", [this] { return util::IsSameDevice(m_file, m_link); });
    SweepText("true", [this] { return CPathUtils::IsLink(m_link); });
    SweepText("true", [this] { return CPathUtils::Exists(m_link); });
    SweepText("true", [this] { return util::GetFreeSpace(m_home) != 0; });
    SweepText("/usr/bin/env", [] { return CPathUtils::FindCommand("env"); });
    SweepText(fs::current_path().string(), [] { return CPathUtils::GetCurrentDir(); });
}

TEST_F(FilesWithoutMemory, NameIsMadeOrThrows)
{
    SweepText("/var/log/nelvo/agentid/agentid.2.log",
              [] { return util::AgedFileName("/var/log/nelvo/agentid/agentid.log", ".log", 2); });
    SweepText("the quick_brown_fox jumps over it",
              [] { return util::ReplaceBadFileNameChars("the quick*brown:fox jumps over it"); });
}

TEST_F(FilesWithoutMemory, TooLittleSpaceIsToldOrThrowsBadAlloc)
{
    SweepText("true",
              [this]
              {
                  try
                  {
                      util::CheckFreeSpace(m_home, UINT64_MAX);
                  }
                  catch (const exc::exc_base_t& e)
                  {
                      return e.GetPlainText().find("Insufficient disk space. Folder: [" + m_home + "]") == 0;
                  }
                  return false;
              });
}

TEST_F(FilesWithoutMemory, FolderIsCreatedOrThrows)
{
    Sweep("file=text link new/ new/deep/ ", [this] { util::CreateParentFolders(m_new + "/deep/x"); });
    Sweep("file=text link new/ ", [this] { util::CreateDirectory(m_new); });
    Sweep("file=text link new/ new/deep/ ", [this] { CPathUtils::CreateDir(m_new + "/deep", true, 755); });
}

TEST_F(FilesWithoutMemory, FolderForTemporaryFilesIsThereOrThrows)
{
    ::setenv("HOME", m_home.c_str(), 1);
    Sweep("file=text link tmp/ ", [] { util::GetHomeTempDir(); });
    SweepText(m_home + "/tmp/", [] { return util::GetHomeTempDir(); });
}

TEST_F(FilesWithoutMemory, FileIsMovedOrThrows)
{
    Sweep("link new=text ", [this] { util::RenameFile(m_file, m_new); });
    Sweep("link new=text ", [this] { CPathUtils::Rename(m_file, m_new); });
    Sweep("file.1=text link ", [this] { util::RenameFile(m_file, m_file + ".1"); });
}

TEST_F(FilesWithoutMemory, FileIsCopiedOrThrows)
{
    Sweep("file=text link new=text ", [this] { util::CopyFile(m_file, m_new, false); });
    Sweep("file=text link new=text ",
          [from = Wide(m_file), to = Wide(m_new)] { util::CopyFile(from, to, true); });
    Sweep("file=text link new/ new/deep=text ", [this] { CPathUtils::Copy(m_file, m_new + "/deep"); });
}

TEST_F(FilesWithoutMemory, LinkIsMadeOrThrows)
{
    Sweep("file=text link new ", [this] { util::CreateSymlink(m_new, m_file); });
    Sweep("file=text link new ", [this] { CPathUtils::CreateSymLink(m_file, m_new); });
    Sweep("file=text link new=text ", [this] { CPathUtils::CreateHardLink(m_file, m_new); });
}

TEST_F(FilesWithoutMemory, FileIsRemovedOrThrows)
{
    Sweep("link ", [this] { util::RemoveFile(m_file); });
    Sweep("link ", [this] { CPathUtils::Delete(m_file); });
    Sweep("file=text ", [this] { util::RemoveSymlink(m_link); });
}

TEST_F(FilesWithoutMemory, CopiesAgeOrItThrows)
{
    Sweep("file.2=text link ",
          [this]
          {
              util::AgeFile(2, m_file, ".log");
              util::AgeFile(2, m_file, ".log");
          });
}

TEST_F(FilesWithoutMemory, FileIsDescribedOrThrows)
{
    SweepText("file",
              [this]
              {
                  const util::FileInfo info = util::GetFileInfo(m_file, false);
                  return info.size == 4 ? info.name.value() : "";
              });
}

TEST_F(FilesWithoutMemory, DescriptionIsAppliedOrThrows)
{
    util::FileMeta meta = util::ReadFileInfo(m_file).meta;
    meta.mode = 600;
    SweepAllocations({[&] { util::ApplyFileMeta(meta, m_file); },
                      [this]
                      {
                          const unsigned mode = posix_file_t::GetPermissions(m_file.c_str());
                          ::chmod(m_file.c_str(), 0644);
                          return std::to_string(mode);
                      },
                      "384"});
}

// What fails is a warning at most, and leaves the buffer empty.
TEST_F(FilesWithoutMemory, SecurityIsReadOrTheBufferIsEmpty)
{
    swept_log_t log;
    cnt::plain_array_t buffer;
    bool was_empty = false;
    const auto result = [&]
    {
        const std::string lines = log.Taken();
        const std::size_t size = std::exchange(buffer, {}).size();
        was_empty = was_empty || size == 0;
        EXPECT_TRUE(size == 27 || size == 0) << size;
        return size == 27 || was_empty ? "read" : lines;
    };
    SweepAllocations({[&] { [&]() noexcept { util::GetFileSecurity(m_file, buffer); }(); }, result, "read"});
    EXPECT_TRUE(was_empty);
}

TEST_F(FilesWithoutMemory, SecurityIsAppliedOrItIsAWarning)
{
    swept_log_t log;
    cnt::plain_array_t buffer;
    ::chmod(m_file.c_str(), 0640);
    util::GetFileSecurity(m_file, buffer);
    bool was_left = false;
    SweepAllocations({[&] { [&]() noexcept { util::SetFileSecurity(m_file, buffer); }(); },
                      [&]
                      {
                          was_left = was_left || posix_file_t::GetPermissions(m_file.c_str()) == 0600;
                          ::chmod(m_file.c_str(), 0600);
                          log.Taken();
                          return "";
                      },
                      ""});
    EXPECT_TRUE(was_left);
}
