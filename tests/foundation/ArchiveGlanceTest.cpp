// What is told at a glance has to be what unarchiving tells, whatever the bytes are.

#include "foundation/ArchiveGlance.h"

#include "PropertyListTesting.h"

#include "foundation/NSKeyedArchiver.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <random>

namespace tallyforge::testing {
namespace {

Bytes ArchiveOf(const Dictionary& dictionary) {
    return NSKeyedArchiver::archivedDataWithRootObject(PropertyList::dictionary(dictionary));
}

Dictionary SmallTheme() {
    Dictionary theme;
    theme.setObjectForKey(PropertyList::string("Sunset"), "themename");
    theme.setObjectForKey(PropertyList::string("#FF0000"), "badgebgcol");
    theme.setObjectForKey(PropertyList::floatNumber(1.5F), "badgesize");
    theme.setObjectForKey(PropertyList::doubleNumber(1.5), "newdotsize");
    theme.setObjectForKey(PropertyList::integer(-3), "badgepos");
    theme.setObjectForKey(PropertyList::boolean(true), "convertbadgeroman");
    return theme;
}

/// The name that unarchiving finds; nothing where there is no dictionary, an empty one without a name.
std::optional<std::string> Unarchived(const Bytes& bytes) {
    const Result<PropertyList> root = NSKeyedUnarchiver::unarchiveObjectWithData(bytes);
    const Dictionary* theme = root ? root->asDictionary() : nullptr;
    if (!theme) return std::nullopt;
    const PropertyList* name = theme->objectForKey("themename");
    return name && name->isString() ? *name->asString() : std::string();
}

/// Where the glance tells something, it is that. True when it tells something.
bool ExpectTruth(const Bytes& bytes) {
    const ArchiveGlance glance = GlanceAtArchivedDictionary(bytes, "themename");
    if (!glance.isDictionary) return false;
    const auto unarchived = Unarchived(bytes);
    EXPECT_TRUE(unarchived.has_value());
    if (unarchived) {
        EXPECT_EQ(glance.text.value_or(""), *unarchived);
    }
    return true;
}

TEST(ArchiveGlance, OurArchivesAreToldAtAGlance) {
    const ArchiveGlance glance = GlanceAtArchivedDictionary(ArchiveOf(SmallTheme()), "themename");
    EXPECT_TRUE(glance.isDictionary);
    EXPECT_EQ(glance.text, "Sunset");
    EXPECT_EQ(GlanceAtArchivedDictionary(ArchiveOf(SmallTheme()), "badgebgcol").text, "#FF0000");
    EXPECT_EQ(GlanceAtArchivedDictionary(ArchiveOf(SmallTheme()), "badgesize").text, std::nullopt);
    EXPECT_EQ(GlanceAtArchivedDictionary(ArchiveOf(SmallTheme()), "missing").text, std::nullopt);
    EXPECT_TRUE(ExpectTruth(NSKeyedArchiver::archivedDataWithRootObject(
        PropertyList::dictionary(SmallTheme()), ArchivedDictionaryClass::NSDictionary)));
    EXPECT_TRUE(ExpectTruth(ArchiveOf({})));
    Dictionary theme = SmallTheme();
    for (const char* name : {"Été", "夕焼け 🌅", "", "a name of more than fifteen characters"}) {
        theme.setObjectForKey(PropertyList::string(name), "themename");
        EXPECT_TRUE(ExpectTruth(ArchiveOf(theme))) << name;
    }
    for (int i = 0; i < 90; ++i)
        theme.setObjectForKey(PropertyList::floatNumber(static_cast<float>(i)), "key" + std::to_string(i));
    EXPECT_TRUE(ExpectTruth(ArchiveOf(theme)));
}

TEST(ArchiveGlance, WhatItDoesNotKnowIsLeftToTheUnarchiver) {
    Dictionary theme = SmallTheme();
    theme.setObjectForKey(PropertyList::array({}), "list");
    EXPECT_FALSE(ExpectTruth(ArchiveOf(theme)));
    EXPECT_FALSE(ExpectTruth(NSKeyedArchiver::archivedDataWithRootObject(PropertyList::string("text"))));
    EXPECT_FALSE(ExpectTruth(NSKeyedArchiver::archivedDataWithRootObject(PropertyList::array({}))));
    EXPECT_FALSE(ExpectTruth({}));
    EXPECT_FALSE(ExpectTruth(BinaryPropertyList::Serialize(PropertyList::dictionary(SmallTheme()))));
    theme = SmallTheme();
    theme.setObjectForKey(PropertyList::string(std::string(20'000, 'x')), "long");
    EXPECT_FALSE(ExpectTruth(ArchiveOf(theme)));
}

// Every byte of an archive in turn, in several ways: where the glance still tells something, it is true.
TEST(ArchiveGlance, OfAnArchiveWithAWrongByteNothingUntrueIsTold) {
    const Bytes whole = ArchiveOf(SmallTheme());
    size_t told = 0, refused = 0;
    for (size_t i = 0; i < whole.size(); ++i) {
        for (const int change : {1, 2, 3, 4, 8, 16, 32, 64, 128, 255, 0x51 ^ 0x80, 0x10 ^ 0xA0}) {
            Bytes bytes = whole;
            bytes[i] = static_cast<uint8_t>(bytes[i] ^ change);
            ++(ExpectTruth(bytes) ? told : refused);
        }
    }
    EXPECT_GT(told, 1'000U);
    EXPECT_GT(refused, 1'000U);
    for (size_t size = 0; size < whole.size(); ++size)
        EXPECT_FALSE(ExpectTruth(Bytes(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(size)))) << size;
}

TEST(ArchiveGlance, OfAnArchiveWithManyWrongBytesNothingUntrueIsTold) {
    std::mt19937 random(7);
    const Bytes whole = ArchiveOf(SmallTheme());
    size_t told = 0;
    for (int round = 0; round < 20'000; ++round) {
        Bytes bytes = whole;
        for (unsigned changes = random() % 4 + 2; changes > 0; --changes)
            bytes[random() % bytes.size()] =
                static_cast<uint8_t>(random() % 4 ? whole[random() % whole.size()] : random());
        told += ExpectTruth(bytes);
    }
    EXPECT_GT(told, 100U);
}

TEST(ArchiveGlance, OfForeignArchivesNothingUntrueIsTold) {
    const std::filesystem::path folder = std::filesystem::path(TALLYFORGE_FIXTURES) / "keyed-archives";
    if (!std::filesystem::exists(folder)) GTEST_SKIP() << "no archives in " << folder;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        SCOPED_TRACE(entry.path());
        if (entry.is_regular_file()) ExpectTruth(FileBytes(entry.path()));
    }
}

} // namespace
} // namespace tallyforge::testing
