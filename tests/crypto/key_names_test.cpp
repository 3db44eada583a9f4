#include "nelvo/crypto/key_names.h"

#include <gtest/gtest.h>

using crypto::KeyAlgorithmToString;
using crypto::KeyRoleToString;
using crypto::KeyTypeToString;

TEST(KeyNames, TypesHaveTheirNumbers)
{
    EXPECT_EQ(0u, crypto::enPrivateKey);
    EXPECT_EQ(1u, crypto::enPublicKey);
    EXPECT_EQ(2u, crypto::enAESIVKey);
    EXPECT_EQ(101u, crypto::enUnknownKey);
}

TEST(KeyNames, TypeGivesItsName)
{
    EXPECT_EQ("enPrivateKey", KeyTypeToString(0));
    EXPECT_EQ("enPublicKey", KeyTypeToString(1));
    EXPECT_EQ("enAESIVKey", KeyTypeToString(2));
    EXPECT_EQ("enUnknownKey", KeyTypeToString(101));
}

TEST(KeyNames, UnknownKeyTypeIsASignedNumber)
{
    EXPECT_EQ("3", KeyTypeToString(3));
    EXPECT_EQ("7", KeyTypeToString(7));
    EXPECT_EQ("100", KeyTypeToString(100));
    EXPECT_EQ("2147483647", KeyTypeToString(0x7FFFFFFF));
    EXPECT_EQ("-2147483648", KeyTypeToString(0x80000000));
    EXPECT_EQ("-1", KeyTypeToString(0xFFFFFFFF));
}

TEST(KeyNames, AlgorithmGivesItsText)
{
    EXPECT_EQ("AES256CBC", KeyAlgorithmToString(0));
    EXPECT_EQ("RSA", KeyAlgorithmToString(1));
    EXPECT_EQ("Unknown Algorithm", KeyAlgorithmToString(2));
    EXPECT_EQ("Unknown Algorithm", KeyAlgorithmToString(0xFFFFFFFF));
}

TEST(KeyNames, RoleGivesItsText)
{
    EXPECT_EQ("session", KeyRoleToString(1));
    EXPECT_EQ("storage", KeyRoleToString(2));
    EXPECT_EQ("meta", KeyRoleToString(3));
    EXPECT_EQ("enterprise", KeyRoleToString(4));
    EXPECT_EQ("user", KeyRoleToString(5));
    EXPECT_EQ("archive", KeyRoleToString(6));
}

TEST(KeyNames, RoleWithoutANameIsANumber)
{
    EXPECT_EQ("unknown ('0')", KeyRoleToString(0));
    EXPECT_EQ("unknown ('7')", KeyRoleToString(7));
    EXPECT_EQ("unknown ('4294967295')", KeyRoleToString(0xFFFFFFFF));
}
