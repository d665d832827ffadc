#include "common/SettingsDocument.h"
#include "platform/DateFormat.h"
#include "platform/Files.h"
#include "platform/KeyedArchive.h"
#include "service/bus/Commands.h"
#include "support/TemporaryFolder.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/stat.h>

#include <chrono>
#include <string>
#include <vector>

namespace quorbel {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using testing::TemporaryFolder;

struct CommandsTest : ::testing::Test {
    [[nodiscard]] std::string content(const std::string &name) const {
        return readFile(folder.path() / name).value_or("(no file)");
    }
    std::string update(Dictionary events) {
        return commands.carryOut({{"command", "update"}, {"Events", std::move(events)}});
    }
    std::string save(Dictionary settingsToSave) {
        return commands.carryOut({{"command", "save"}, {"Settings", std::move(settingsToSave)}});
    }

    TemporaryFolder folder;
    LogStore store{folder.path()};
    SettingsFile settings{folder.path() / kSettingsFileName};
    MailSender mail;
    Commands commands{store, settings, mail};
};

TEST_F(CommandsTest, StoreOddFiltersAndNameThem) {
    const Dictionary name{{"Name", "lab"}, {"IP", "lab-sw1"}, {"Mask", "32"}};
    const Dictionary mask{{"Name", "all"}, {"IP", "10.0.0.5"}, {"Mask", "0"}};
    const Dictionary odd{{"includeFiltersArray", Array{name}},
                         {"excludeFiltersArray", Array{mask}}};
    EXPECT_EQ(
        save(odd),
        "The settings are stored. The include filter \"lab\" can never match: \"lab-sw1\" "
        "is not an address; The exclude filter \"all\" matches any host: its mask is 0, so the "
        "address \"10.0.0.5\" is ignored");
    EXPECT_EQ(*settings.current(), odd);
    EXPECT_EQ(save({{"includeFiltersArray", Array{Dictionary{{"IP", "0.0.0.0"}}}}}), "OK");
}

TEST_F(CommandsTest, ReplyWithOneLineToAnything) {
    struct Case {
        Dictionary command;
        std::string reply;
    };
    const Case cases[] = {
        {{}, "The command has no name"},
        {{{"command", 1}}, "The command has no name"},
        {{{"command", Null()}}, "The command has no name"},
        {{{"command", ""}}, "There is no such command"},
        {{{"command", "Save"}}, "There is no such command"},
        {{{"command", "save"}}, "The settings to save are not a dictionary"},
        {{{"command", "save"}, {"Settings", Array()}}, "The settings to save are not a dictionary"},
        {{{"command", "update"}}, "The events to remove are not a dictionary"},
        {{{"command", "update"}, {"Events", "x"}}, "The events to remove are not a dictionary"},
        {{{"command", "update"}, {"Events", Dictionary{{"k\n", 1}}}},
         "The number of events to remove is not a number"},
        {{{"command", "update"}, {"Events", Dictionary{{"k\n", "-1"}}}},
         "The number of events to remove is not a number"},
        {{{"command", "update"}, {"Events", Dictionary{{"k\n", "1 "}}}},
         "The number of events to remove is not a number"},
        {{{"command", "update"}, {"Events", Dictionary{{"k\n", "99999999999999999999"}}}},
         "The number of events to remove is not a number"},
        {{{"command", "update"}, {"Events", Dictionary()}}, "OK"},
        {{{"command", "update"}, {"Events", Dictionary{{"", "1"}, {"\n", "1"}, {"x", "1"}}}}, "OK"},
        {{{"command", "restore"}}, "The events to put back are not an array"},
        {{{"command", "restore"}, {"Events", Dictionary()}},
         "The events to put back are not an array"},
        {{{"command", "restore"}, {"Events", Array()}, {"Listed", "x"}},
         "The events to put back are not an array"},
        {{{"command", "restore"}, {"Events", Array()}}, "OK"},
        {{{"command", "restore"}, {"Events", Array{"x\n", Array(), 1}}, {"Listed", Array{1}}},
         "3 of 3 events could not be put back: 3 cannot stand in a log file"},
        {{{"command", "email"}}, "There are no recipients"},
        {{{"command", "email"}, {"Recipients", "a@b"}}, "There are no recipients"},
        {{{"command", "email"}, {"Recipients", Array{"a@b", "c d@e"}}},
         "No mail server is set; \"c d@e\" is not a valid e-mail address"},
        {{{"command", "email"}, {"Recipients", Array{"c d@e"}}},
         "\"c d@e\" is not a valid e-mail address"},
        {{{"command", "email"}, {"Recipients", Array{"a@b"}}}, "No mail server is set"},
    };
    for (const Case &c : cases) {
        EXPECT_EQ(commands.carryOut(c.command), c.reply);
    }
    EXPECT_TRUE(listFolder(folder.path()).empty());
}

TEST_F(CommandsTest, SaveStoresTheDocument) {
    const Dictionary document{{"dateFormat", "yyyy-MM-dd HH:mm"},
                              {"hostsDisplay", true},
                              {"unknown", Array{Null(), 1.5, Data{"\1\2"}, Dictionary()}}};
    EXPECT_EQ(save(document), "OK");
    EXPECT_EQ(decodeSettings(readFile(folder.path() / "Quorbel.ini")), document);
    EXPECT_EQ(*settings.current(), document);
    struct stat status {};
    ASSERT_EQ(stat((folder.path() / "Quorbel.ini").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0640U);
    EXPECT_EQ(save({}), "OK");
    EXPECT_EQ(decodeSettings(readFile(folder.path() / "Quorbel.ini")), Dictionary());
    EXPECT_THAT(listFolder(folder.path()), ElementsAre("Quorbel.ini"));
}

TEST_F(CommandsTest, SaveSetsADamagedDocumentAside) {
    folder.write("Quorbel.ini", "damaged");
    ::testing::internal::CaptureStderr();
    settings.load();
    EXPECT_EQ(save({{"a", 1}}), "OK");
    EXPECT_THAT(::testing::internal::GetCapturedStderr(),
                ::testing::AllOf(HasSubstr("Quorbel.ini is damaged"), HasSubstr("was renamed to")));
    const auto names = listFolder(folder.path());
    ASSERT_EQ(names.size(), 2U);
    EXPECT_EQ(names[0], "Quorbel.ini");
    EXPECT_THAT(names[1], HasSubstr("Quorbel.ini.damaged-"));
    EXPECT_EQ(content(names[1]), "damaged");
}

TEST_F(CommandsTest, SaveSaysWhatIsWrong) {
    std::filesystem::remove_all(folder.path());
    EXPECT_EQ(save({{"a", 1}}), "The settings could not be stored: No such file or directory");
    EXPECT_TRUE(settings.current()->empty());
}

TEST_F(CommandsTest, LoadPutsTheStoredDocumentInForce) {
    settings.load();
    EXPECT_TRUE(settings.current()->empty());
    folder.write("Quorbel.ini", writeKeyedArchive(Dictionary{{"dateFormat", "HH:mm"}}));
    settings.load();
    EXPECT_EQ(settingText(*settings.current(), "dateFormat"), "HH:mm");
}

TEST_F(CommandsTest, LoadKeepsTheSettingsInForceWhenTheDocumentIsDamaged) {
    ASSERT_EQ(save({{"a", 1}}), "OK");
    folder.write("Quorbel.ini", "damaged");
    ::testing::internal::CaptureStderr();
    settings.load();
    EXPECT_THAT(::testing::internal::GetCapturedStderr(), HasSubstr("Quorbel.ini is damaged"));
    EXPECT_EQ(*settings.current(), (Dictionary{{"a", 1}}));
    std::filesystem::remove(folder.path() / "Quorbel.ini");
    settings.load();
    EXPECT_TRUE(settings.current()->empty());
}

TEST_F(CommandsTest, UpdateRemovesAsManyAsWanted) {
    const std::string a = "1700000000,User.Notice,h,a\r\n";
    const std::string b = "1700000000,User.Notice,h,b, with a comma\r\n";
    folder.write("2023-11-14.log", a + b + a + b + a);
    folder.write("2023-11-15.log", a);
    EXPECT_EQ(update({{"1700000000,User.Notice,h,a\n", "2"},
                      {"1700000000,User.Notice,h,b, with a comma\n", "1"}}),
              "OK");
    EXPECT_EQ(content("2023-11-14.log"), b + a);
    EXPECT_EQ(content("2023-11-15.log"), a);
    EXPECT_EQ(update({{"1700000000,User.Notice,h,a\n", "9"}}), "OK");
    EXPECT_EQ(content("2023-11-14.log"), b);
    EXPECT_EQ(content("2023-11-15.log"), "(no file)");
}

TEST_F(CommandsTest, UpdateLeavesFilesWithoutAMatchAlone) {
    const auto file = folder.write("2023-11-14.log", "1700000000,User.Notice,h,a\r\n");
    const auto other = folder.write("x.txt", "1700000001,User.Notice,h,a\r\n");
    struct stat before {};
    struct stat after {};
    ASSERT_EQ(stat(file.c_str(), &before), 0);
    EXPECT_EQ(update({{"1700000001,User.Notice,h,a\n", "1"},
                      {"1700000000,User.Notice,h,A\n", "1"},
                      {"1700000000,User.Notice,h\n", "1"},
                      {"1700000000,User.Notice,h,a ", "1"}}),
              "OK");
    ASSERT_EQ(stat(file.c_str(), &after), 0);
    EXPECT_EQ(before.st_ino, after.st_ino);
    EXPECT_EQ(content("x.txt"), "1700000001,User.Notice,h,a\r\n");
}

TEST_F(CommandsTest, UpdateReadsLinesAsTheFrontEndDoes) {
    const std::string longMessage(1023 - 17, 'm');
    folder.write("x.log",
                 "1,User.Notice,,second, third\n"     // the host is "second"
                 "\r\n"                               //
                 "2,User.Notice,h,kept\rignored\r\n"  //
                 "3,User.Notice,h, " +
                     longMessage +
                     "4,U,h,rest of a long line\r\n"  //
                     "5,User.Notice,h,last");
    EXPECT_EQ(update({{"1,User.Notice,second, third\n", "1"}, {"2,User.Notice,h,kept\n", "1"}}),
              "OK");
    EXPECT_EQ(content("x.log"), "\r\n3,User.Notice,h, " + longMessage +
                                    "4,U,h,rest of a long line\r\n5,User.Notice,h,last");
    // The second piece of the long line goes, and its line end stays.
    EXPECT_EQ(update({{"4,U,h,rest of a long line\n", "1"}}), "OK");
    EXPECT_EQ(content("x.log"), "\r\n3,User.Notice,h, " + longMessage + "\r\n5,User.Notice,h,last");
    EXPECT_EQ(update({{"3,User.Notice,h, " + longMessage + "\n", "1"}}), "OK");
    EXPECT_EQ(content("x.log"), "\r\n\r\n5,User.Notice,h,last");
}

TEST_F(CommandsTest, UpdateTakesTimesThatTheDateFormatCannotGiveBack) {
    ASSERT_EQ(save({{"dateFormat", "yyyy-MM-dd HH:mm"}}), "OK");
    // 22:13:20, and the minute's begin.
    folder.write("2023-11-14.log",
                 "1700000000,User.Notice,h,a\r\n"
                 "1700000001,User.Notice,h,a\r\n"
                 "1700000000,User.Notice,h,b\r\n"
                 "1700000040,User.Notice,h,a\r\n");
    EXPECT_EQ(update({{"1699999980,User.Notice,h,a\n", "1"}}), "OK");
    EXPECT_EQ(content("2023-11-14.log"),
              "1700000001,User.Notice,h,a\r\n"
              "1700000000,User.Notice,h,b\r\n"
              "1700000040,User.Notice,h,a\r\n");
    EXPECT_EQ(update({{"1699999980,User.Notice,h,a\n", "5"}}), "OK");
    EXPECT_EQ(content("2023-11-14.log"),
              "1700000000,User.Notice,h,b\r\n"
              "1700000040,User.Notice,h,a\r\n");
}

// What is on the screen was rendered before the settings were saved.
TEST_F(CommandsTest, UpdateTakesTimesInTheFormatBeforeAsWell) {
    const std::string lines = "1700000000,User.Notice,h,a\r\n1700000040,User.Notice,h,b\r\n";
    const Dictionary minutes{{"dateFormat", "yyyy-MM-dd HH:mm"}, {"other", 1}};
    const Dictionary days{{"dateFormat", "yyyy-MM-dd"}};
    folder.write("Quorbel.ini", writeKeyedArchive(minutes));
    settings.load();
    folder.write("2023-11-14.log", lines);
    // Its begin of the day is that of no format in force so far.
    EXPECT_EQ(update({{"1699920000,User.Notice,h,a\n", "1"}}), "OK");
    EXPECT_EQ(content("2023-11-14.log"), lines);
    ASSERT_EQ(save(days), "OK");
    ASSERT_EQ(save({{"dateFormat", "yyyy-MM-dd"}, {"other", 2}}), "OK");
    EXPECT_EQ(
        update({{"1699999980,User.Notice,h,a\n", "1"}, {"1699920000,User.Notice,h,b\n", "1"}}),
        "OK");
    EXPECT_EQ(content("2023-11-14.log"), "(no file)");
}

// A date shown without its seconds has lost them for every format in which it is shown later.
TEST_F(CommandsTest, UpdateTakesTimesInTheFormatsBeforeThatAsWell) {
    const auto removesByMinute = [this] {
        folder.write("2023-11-14.log", "1700000000,User.Notice,h,a\r\n");
        EXPECT_EQ(update({{"1699999980,User.Notice,h,a\n", "1"}}), "OK");
        return content("2023-11-14.log") == "(no file)";
    };
    ASSERT_EQ(save({{"dateFormat", "yyyy-MM-dd HH:mm"}}), "OK");
    for (int number = 0; number < 7; ++number) {
        ASSERT_EQ(save({{"dateFormat", "HH:mm:ss d.M.yyyy" +
                                           std::string(static_cast<std::size_t>(number), ' ')}}),
                  "OK");
        EXPECT_TRUE(removesByMinute()) << number;
    }
    // An eighth one after it takes its place; the same ones again do not.
    ASSERT_EQ(save({{"dateFormat", "HH:mm:ss d.M.yyyy"}}), "OK");
    EXPECT_TRUE(removesByMinute());
    ASSERT_EQ(save({{"dateFormat", "yyyy/MM/dd HH:mm:ss"}}), "OK");
    EXPECT_FALSE(removesByMinute());
}

TEST_F(CommandsTest, UpdatePrefersTheLineThatMatchesToTheLetter) {
    ASSERT_EQ(save({{"dateFormat", "yyyy-MM-dd HH:mm"}}), "OK");
    folder.write("2023-11-14.log", "1700000000,User.Notice,h,a\r\n");
    folder.write("2023-11-15.log",
                 "1699999980,User.Notice,h,a\r\n"
                 "1700000005,User.Notice,h,a\r\n");
    EXPECT_EQ(update({{"1699999980,User.Notice,h,a\n", "1"}}), "OK");
    EXPECT_EQ(content("2023-11-14.log"), "1700000000,User.Notice,h,a\r\n");
    EXPECT_EQ(content("2023-11-15.log"), "1700000005,User.Notice,h,a\r\n");
    // Exact for one key, as shown for another.
    EXPECT_EQ(
        update({{"1699999980,User.Notice,h,a\n", "1"}, {"1700000000,User.Notice,h,a\n", "1"}}),
        "OK");
    EXPECT_EQ(content("2023-11-14.log"), "(no file)");
    EXPECT_EQ(content("2023-11-15.log"), "(no file)");
}

TEST_F(CommandsTest, UpdateTakesZeroForTimesThatCannotBeReadBack) {
    const std::string unusable = "jjj";
    ASSERT_FALSE(DateFormat(unusable).roundTrip(1700000000));
    ASSERT_EQ(save({{"dateFormat", unusable}}), "OK");
    folder.write("2023-11-14.log",
                 "1700000000,User.Notice,h,a\r\n"
                 "no number,User.Notice,h,a\r\n"
                 "1700000000,User.Notice,h,b\r\n");
    EXPECT_EQ(update({{"0,User.Notice,h,a\n", "2"}}), "OK");
    EXPECT_EQ(content("2023-11-14.log"), "1700000000,User.Notice,h,b\r\n");
}

TEST_F(CommandsTest, UpdateSaysWhatCouldNotBeDone) {
    folder.write("2023-11-14.log", "1700000000,User.Notice,h,a\r\n");
    std::filesystem::create_directory(folder.path() / "folder.log");
    EXPECT_EQ(update({{"1700000000,User.Notice,h,a\n", "1"}}),
              "folder.log could not be read: Invalid argument");
    EXPECT_EQ(content("2023-11-14.log"), "(no file)");
}

TEST_F(CommandsTest, UpdateSaysThatTheFolderIsNotThere) {
    std::filesystem::remove_all(folder.path());
    EXPECT_EQ(update({{"1700000000,User.Notice,h,a\n", "1"}}),
              "The folder of the log files could not be listed: No such file or directory");
}

TEST_F(CommandsTest, UpdateGivesUpWhenTheServiceEnds) {
    const std::string line = "1700000000,User.Notice,h,a\r\n";
    folder.write("2023-11-14.log", line + line);
    commands.stop();
    EXPECT_EQ(update({{"1700000000,User.Notice,h,a\n", "1"}}),
              "The service is stopping; not all of the events were removed");
    EXPECT_EQ(content("2023-11-14.log"), line + line);
}

TEST_F(CommandsTest, UpdateTakesManyEventsAtOnce) {
    constexpr int kMany = 100'000;
    std::string lines;
    Dictionary events;
    for (int i = 0; i < kMany; ++i) {
        const std::string line = "1700000000,User.Notice,h,number " + std::to_string(i);
        lines += line + "\r\n";
        if (i % 2 == 0) {
            events.append(line + "\n", "1");
        }
    }
    folder.write("2023-11-14.log", lines);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(update(std::move(events)), "OK");
    // Not by the length of both multiplied.
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
    const std::string left = content("2023-11-14.log");
    EXPECT_EQ(std::ranges::count(left, '\n'), kMany / 2);
    EXPECT_EQ(left.find("number 0\r"), std::string::npos);
    EXPECT_NE(left.find("number 99999\r"), std::string::npos);
}

TEST_F(CommandsTest, RestorePutsBackWhatUpdateRemoved) {
    const std::string lines =
        "1700000000,User.Notice,h,a\r\n1700000001,User.Notice,h,b\r\n1700000002,User.Notice,h,"
        "a\r\n";
    const Dictionary restore{{"command", "restore"},
                             {"Events", Array{"1700000001,User.Notice,h,b\n"}},
                             {"Listed", Array{}}};
    folder.write("2023-11-14.log", lines);
    // What was not removed is not put there twice, nor is it for a command that comes twice.
    EXPECT_EQ(commands.carryOut(restore), "OK");
    EXPECT_EQ(content("2023-11-14.log"), lines);
    EXPECT_EQ(update({{"1700000001,User.Notice,h,b\n", "1"}}), "OK");
    EXPECT_NE(content("2023-11-14.log"), lines);
    EXPECT_EQ(commands.carryOut(restore), "OK");
    EXPECT_EQ(commands.carryOut(restore), "OK");
    EXPECT_EQ(content("2023-11-14.log"), lines);
}

TEST_F(CommandsTest, RestoreGivesUpWhenTheServiceEnds) {
    commands.stop();
    EXPECT_EQ(commands.carryOut(
                  {{"command", "restore"}, {"Events", Array{"1700000000,User.Notice,h,a\n"}}}),
              "1 of 1 events could not be put back: the service is stopping");
    EXPECT_TRUE(listFolder(folder.path()).empty());
}

UniqueFd memoryFile(std::string_view bytes, int seals) {
    UniqueFd file(memfd_create("command", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    EXPECT_EQ(write(file.get(), bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    EXPECT_EQ(fcntl(file.get(), F_ADD_SEALS, seals), 0);
    return file;
}

TEST_F(CommandsTest, AnUpdateInAFileDoesWhatItsDictionaryDoes) {
    const std::string log =
        "1700000000,User.Notice,h,a\r\n1700000000,User.Notice,h,a\r\n"
        "1700000001,User.Notice,h,Gr\xC3\xBC\xC3\x9F\r\n1700000002,User.Notice,h,c\r\n";
    const Dictionary cases[] = {
        {},
        {{"1700000000,User.Notice,h,a\n", "1"}},
        {{"1700000000,User.Notice,h,a\n", "2"}, {"1700000002,User.Notice,h,c\n", "1"}},
        {{"1700000001,User.Notice,h,Gr\xC3\xBC\xC3\x9F\n", "1"}, {"absent\n", "7"}},
        {{"1700000000,User.Notice,h,a\n", "1"}, {"1700000000,User.Notice,h,a", "1"}},
        {{"1700000000,User.Notice,h,a\n", "1"}, {"1700000002,User.Notice,h,c\n", "no number"}},
        {{"1700000000,User.Notice,h,a\n", 1}},
        {{"1700000000,User.Notice,h,a\n", "0"}},
        {{"$null", "1"}, {"1700000002,User.Notice,h,c\n", "1"}},
    };
    for (const Dictionary &events : cases) {
        folder.write("2023-11-14.log", log);
        const std::string reply = update(events);
        const std::string left = content("2023-11-14.log");
        folder.write("2023-11-14.log", log);
        const std::string archive =
            writeKeyedArchive(Dictionary{{"command", "update"}, {"Events", events}});
        EXPECT_EQ(commands.carryOut(memoryFile(archive, F_SEAL_WRITE | F_SEAL_SHRINK)), reply);
        EXPECT_EQ(content("2023-11-14.log"), left);
    }
}

/// As in any dictionary that is read, the first of them counts.
TEST_F(CommandsTest, OfEqualLinesInAFileTheFirstCounts) {
    const std::string line = "1700000000,User.Notice,h,a\r\n";
    folder.write("2023-11-14.log", line + line + line);
    std::string archive = writeKeyedArchive(
        Dictionary{{"command", "update"},
                   {"Events", Dictionary{{"1700000000,User.Notice,h,a\n", "1"},
                                         {"1700000000,User.Notice,h,b\n", "2"}}}});
    archive[archive.find("h,b\n") + 2] = 'a';
    EXPECT_EQ(commands.carryOut(memoryFile(archive, F_SEAL_WRITE | F_SEAL_SHRINK)), "OK");
    EXPECT_EQ(content("2023-11-14.log"), line + line);
}

TEST_F(CommandsTest, CommandFilesMustBeSealedArchives) {
    constexpr int kSealed = F_SEAL_WRITE | F_SEAL_SHRINK;
    const std::string archive =
        writeKeyedArchive(Dictionary{{"command", "save"}, {"Settings", Dictionary{{"a", 1}}}});
    EXPECT_EQ(commands.carryOut(memoryFile(archive, kSealed)), "OK");
    EXPECT_EQ(*settings.current(), (Dictionary{{"a", 1}}));
    EXPECT_EQ(commands.carryOut(memoryFile(archive, kSealed | F_SEAL_GROW | F_SEAL_SEAL)), "OK");
    for (const int seals : {0, F_SEAL_WRITE, F_SEAL_SHRINK, F_SEAL_FUTURE_WRITE | F_SEAL_SHRINK}) {
        EXPECT_EQ(commands.carryOut(memoryFile(archive, seals)),
                  "The command cannot be read: The file is not sealed");
    }
    EXPECT_EQ(commands.carryOut(UniqueFd(open("/dev/zero", O_RDONLY | O_CLOEXEC))),
              "The command cannot be read: The file is not sealed");
    EXPECT_EQ(commands.carryOut(UniqueFd()), "The command cannot be read: The file is not sealed");
    EXPECT_EQ(commands.carryOut(memoryFile("", kSealed)),
              "The command cannot be read: The file is empty");
    EXPECT_THAT(commands.carryOut(memoryFile("no archive", kSealed)),
                ::testing::StartsWith("The command cannot be read: "));
    EXPECT_EQ(commands.carryOut(memoryFile(writeKeyedArchive(Array{1, 2}), kSealed)),
              "The command is not a dictionary");
    const UniqueFd large(memfd_create("command", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    ASSERT_EQ(ftruncate(large.get(), (off_t{1} << 30U) + 1), 0);
    ASSERT_EQ(fcntl(large.get(), F_ADD_SEALS, kSealed), 0);
    EXPECT_EQ(commands.carryOut(large), "The command cannot be read: The file is too large");
}

}  // namespace
}  // namespace quorbel
