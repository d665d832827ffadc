#include "platform/Files.h"
#include "platform/KeyedArchive.h"
#include "platform/RawList.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace quorbel {
namespace {

using testing::bigEndian;
using testing::head;
using testing::numberAt;

/// The object as it is, or an ASCII text as UTF-16.
std::string widened(const std::string &object) {
    const auto marker = static_cast<unsigned char>(object.front());
    if (marker >> 4U != 0x5) {
        return object;
    }
    std::size_t length = marker & 0xFU;
    std::size_t begin = 1;
    if (length == 0xF) {
        const std::size_t size = std::size_t{1} << (static_cast<unsigned char>(object[1]) & 0xFU);
        length = numberAt(object, 2, size);
        begin = 2 + size;
    }
    std::string wide = head(0x6, length);
    for (const char character : object.substr(begin, length)) {
        wide += bigEndian(static_cast<unsigned char>(character), 2);
    }
    return wide;
}

/// The archive as writers make it that know no narrow text.
std::string wideArchive(const std::string &archive) {
    std::vector<std::string> objects = testing::objectsOf(archive);
    for (std::string &object : objects) {
        object = widened(object);
    }
    const std::size_t trailer = archive.size() - 32;
    return testing::rawList(objects, numberAt(archive, trailer + 16, 8),
                            numberAt(archive, trailer + 7, 1));
}

/// Whether another reader, which takes keys of any width, finds the same in both.
bool areTheSameToOthers(const std::string &one, const std::string &other) {
    const testing::TemporaryFolder folder;
    folder.write("one", one);
    folder.write("other", other);
    const std::string command =
        "cd " + folder.path().string() +
        " && python3 -c 'import plistlib, sys; a, b = (plistlib.load(open(name, \"rb\")) "
        "for name in (\"one\", \"other\")); sys.exit(a != b or \"$objects\" not in a)'";
    return std::system(command.c_str()) == 0;  // NOLINT(cert-env33-c): as a stranger reads it
}

TEST(KeyedArchiveWideTest, TextsOfAnyWidthAreTheSame) {
    const std::filesystem::path folder = std::filesystem::path(QUORBEL_TEST_DATA) / "keyed";
    int count = 0;
    for (const std::string &name : listFolder(folder)) {
        if (!hasExtension(name, "bin")) {
            continue;
        }
        SCOPED_TRACE(name);
        const std::string narrow = readFile(folder / name).value();
        const std::string wide = wideArchive(narrow);
        ASSERT_NE(wide, narrow);
        EXPECT_TRUE(areTheSameToOthers(wide, narrow));
        const auto read = readKeyedArchive(wide);
        const auto expected = readKeyedArchive(narrow);
        ASSERT_TRUE(std::holds_alternative<Value>(read)) << std::get<ArchiveError>(read).reason;
        EXPECT_TRUE(std::get<Value>(read) == std::get<Value>(expected));
        ++count;
    }
    EXPECT_GT(count, 5);
}

TEST(KeyedArchiveWideTest, AWideNameOfTheSameLengthIsAnotherOne) {
    const std::string archive = writeKeyedArchive(Array{"x"});
    for (const char *other : {"$objectz", "$objects2", "\xC4\xA4objects"}) {
        std::vector<std::string> objects = testing::objectsOf(archive);
        for (std::string &object : objects) {
            if (object == "\x58$objects") {
                object = std::string(other).starts_with('$')
                             ? widened(head(0x5, std::string(other).size()) + other)
                             // Its second byte is that of the dollar.
                             : "\x68\x01" + widened("\x58$objects").substr(2);
            }
        }
        const std::size_t trailer = archive.size() - 32;
        const std::string changed = testing::rawList(objects, numberAt(archive, trailer + 16, 8),
                                                     numberAt(archive, trailer + 7, 1));
        EXPECT_TRUE(std::holds_alternative<ArchiveError>(readKeyedArchive(changed))) << other;
    }
}

}  // namespace
}  // namespace quorbel
