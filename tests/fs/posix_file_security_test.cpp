#include "nelvo/fs/posix_file_security.h"

#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "nelvo/core/exc/errno_exc.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "tests/support/file_status.h"
#include "tests/support/golden.h"
#include "tests/support/temp_folder.h"
#include "tests/support/thrown.h"

using posix::posix_file_security;
using posix::posix_file_security_ptr_t;

namespace
{

cnt::plain_array_t Buffer(const std::string& bytes) { return {bytes.data(), bytes.size()}; }

std::string Stored(const posix_file_security& security)
{
    cnt::plain_array_t buffer(5);
    security.Serialize(buffer);
    return {buffer.begin(), buffer.end()};
}

posix_file_security_ptr_t Read(const std::string& bytes)
{
    return posix_file_security::Deserialize(Buffer(bytes));
}

std::string Refusal(const std::string& bytes)
{
    return Thrown<exc::runtime_exc_t>([&] { Read(bytes); });
}

posix_file_security Security(std::uint32_t uid, std::uint32_t gid, std::uint32_t mode)
{
    posix_file_security security;
    security.uid = uid;
    security.gid = gid;
    security.mode = mode;
    return security;
}

const std::string kDeserialize = "\nposix_file_security failed to deserialize.";

// A file, and links to it, to nothing and to themselves.
class PosixFileSecurity : public testing::Test
{
protected:
    PosixFileSecurity()
    {
        WriteFile(m_file, "text");
        EXPECT_EQ(0, ::chmod(m_file.c_str(), 0640));
        EXPECT_EQ(0, ::symlink("file", m_link.c_str()));
        EXPECT_EQ(0, ::symlink("none", m_dangling.c_str()));
    }

    unsigned ModeOfFile() const { return ModeOf(m_file); }

    temp_folder_t m_folder;
    const std::string m_file = m_folder / "file";
    const std::string m_link = m_folder / "link";
    const std::string m_dangling = m_folder / "dangling";
};

} // namespace

// The stored form

TEST(PosixFileSecurityForm, IsThreeLettersAndThreeNumbersOf64Bits)
{
    EXPECT_EQ(Hex(Golden("posix_file_security")), Hex(Stored(Security(1000, 100, 04750))));
}

TEST(PosixFileSecurityForm, RecordIsThreeNumbersOf32BitsInTheirOrder)
{
    const posix_file_security security{1, 2, 3};
    EXPECT_EQ(1u, security.uid);
    EXPECT_EQ(2u, security.gid);
    EXPECT_EQ(3u, security.mode);
    EXPECT_EQ(12u, sizeof(security));
}

TEST(PosixFileSecurityForm, NewRecordIsAllZero)
{
    EXPECT_EQ("4e 49 58 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00",
              Hex(Stored(posix_file_security())));
}

TEST(PosixFileSecurityForm, UpperHalvesAreZeroWhateverTheValue)
{
    EXPECT_EQ("4e 49 58 ff ff ff ff 00 00 00 00 fe ff ff ff 00 00 00 00 fd ff ff ff 00 00 00 00",
              Hex(Stored(Security(0xFFFFFFFF, 0xFFFFFFFE, 0xFFFFFFFD))));
}

TEST(PosixFileSecurityForm, IsReadAsItWasWritten)
{
    const posix_file_security_ptr_t security = Read(Golden("posix_file_security"));
    EXPECT_EQ(1000u, security->uid);
    EXPECT_EQ(100u, security->gid);
    EXPECT_EQ(04750u, security->mode);
    EXPECT_EQ(1, security.use_count());
}

TEST(PosixFileSecurityForm, ValuesAbove32BitsAreCut)
{
    const posix_file_security_ptr_t security =
        Read(Unhex("4e 49 58 00 00 00 00 01 00 00 00 05 00 00 00 ff ff ff ff 06 00 00 80 00 00 00 80"));
    EXPECT_EQ(0u, security->uid);
    EXPECT_EQ(5u, security->gid);
    EXPECT_EQ(0x80000006u, security->mode);
}

TEST(PosixFileSecurityForm, OtherSizesAreRefused)
{
    const std::string bytes = Golden("posix_file_security");
    for (const std::string& prefix : Prefixes(bytes))
        EXPECT_EQ("Invalid security buffer size: " + std::to_string(prefix.size()) + " != 27" + kDeserialize,
                  Refusal(prefix));
    EXPECT_EQ("Invalid security buffer size: 28 != 27" + kDeserialize, Refusal(bytes + "x"));
    EXPECT_EQ("Invalid security buffer size: 54 != 27" + kDeserialize, Refusal(bytes + bytes));
}

TEST(PosixFileSecurityForm, EachLetterOfTheHeaderCounts)
{
    const std::string fields(24, '\0');
    EXPECT_EQ("Invalid security buffer data, header: n I X." + kDeserialize, Refusal("nIX" + fields));
    EXPECT_EQ("Invalid security buffer data, header: N i X." + kDeserialize, Refusal("NiX" + fields));
    EXPECT_EQ("Invalid security buffer data, header: N I x." + kDeserialize, Refusal("NIx" + fields));
    EXPECT_EQ("Invalid security buffer data, header: \xff \n %." + kDeserialize, Refusal("\xff\n%" + fields));
}

TEST(PosixFileSecurityForm, AZeroByteInTheHeaderStandsInTheMessage)
{
    try
    {
        Read(std::string("N\0X", 3) + std::string(24, '\0'));
        ADD_FAILURE() << "nothing was thrown";
    }
    catch (const exc::runtime_exc_t& e)
    {
        const std::string text("Invalid security buffer data, header: N \0 X.", 44);
        EXPECT_EQ(text + kDeserialize, e.GetPlainText());
    }
}

TEST(PosixFileSecurityForm, BitFlipsAreRefusedInTheHeaderAlone)
{
    const std::string bytes = Golden("posix_file_security");
    const std::vector<std::string> flips = BitFlips(bytes);
    for (std::size_t bit = 0; bit < flips.size(); ++bit)
    {
        if (bit < 24)
            EXPECT_NE("", Refusal(flips[bit])) << bit;
        else if ((bit / 8 - 3) % 8 < 4)
            EXPECT_EQ(Hex(flips[bit]), Hex(Stored(*Read(flips[bit])))) << bit;
        else
            EXPECT_EQ(Hex(bytes), Hex(Stored(*Read(flips[bit])))) << bit;
    }
}

// Files

TEST_F(PosixFileSecurity, IsThatOfTheFile)
{
    ASSERT_EQ(0, ::chmod(m_file.c_str(), 04751));
    const posix_file_security_ptr_t security = posix_file_security::ReadFromFile(m_file);
    const struct stat info = StatusOf(m_file);
    EXPECT_EQ(info.st_uid, security->uid);
    EXPECT_EQ(info.st_gid, security->gid);
    EXPECT_EQ(04751u, security->mode);
}

TEST_F(PosixFileSecurity, ReadingFollowsALink)
{
    EXPECT_EQ(0640u, posix_file_security::ReadFromFile(m_link)->mode);
}

TEST_F(PosixFileSecurity, FailureToReadAFileHasNoFullStop)
{
    EXPECT_EQ("No such file or directory\nstat64(" + m_dangling +
                  ") has failed.\nposix_file_security failed to get file security, path: " + m_dangling,
              Thrown<posix::errno_exc_t>([&] { posix_file_security::ReadFromFile(m_dangling); }));
}

TEST_F(PosixFileSecurity, IsAppliedToAFile)
{
    Security(::geteuid(), ::getegid(), 01604).ApplyToFile(m_file);
    EXPECT_EQ(01604u, ModeOfFile());
    Security(::geteuid(), ::getegid(), 0).ApplyToFile(m_file);
    EXPECT_EQ(0u, ModeOfFile());
}

TEST_F(PosixFileSecurity, OfAFileFitsAnother)
{
    posix_file_security::ReadFromFile(m_folder.path())->ApplyToFile(m_file);
    EXPECT_EQ(ModeOf(m_folder.path()), ModeOfFile());
    EXPECT_EQ(StatusOf(m_folder.path()).st_uid, StatusOf(m_file).st_uid);
    EXPECT_EQ(StatusOf(m_folder.path()).st_gid, StatusOf(m_file).st_gid);
}

// Another owner than one's own takes root; everybody else gives the own.
TEST_F(PosixFileSecurity, ApplyGivesPermissionsToTheTargetAndTheOwnerToTheLink)
{
    const bool is_root = ::geteuid() == 0;
    const uid_t uid = is_root ? 1234 : ::geteuid();
    const gid_t gid = is_root ? 5678 : ::getegid();
    Security(uid, gid, 0604).ApplyToFile(m_link);
    EXPECT_EQ(0604u, ModeOfFile());
    EXPECT_EQ(uid, LinkStatusOf(m_link).st_uid);
    EXPECT_EQ(gid, LinkStatusOf(m_link).st_gid);
    EXPECT_EQ(::geteuid(), StatusOf(m_file).st_uid);
}

TEST_F(PosixFileSecurity, ApplyLosesTheSetUserIdBitOfAProgram)
{
    ASSERT_EQ(0, ::chmod(m_file.c_str(), 04755));
    posix_file_security::ReadFromFile(m_file)->ApplyToFile(m_file);
    EXPECT_EQ(0755u, ModeOfFile());
}

TEST_F(PosixFileSecurity, FailureToApplyNamesThePath)
{
    EXPECT_EQ("No such file or directory\nchmod(" + m_dangling +
                  ") has failed.\nposix_file_security failed to apply security for file: " + m_dangling + ".",
              Thrown<posix::errno_exc_t>([&] { posix_file_security().ApplyToFile(m_dangling); }));
}
