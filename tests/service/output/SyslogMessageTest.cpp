#include "service/message/MessageParser.h"
#include "service/message/RecordWriter.h"
#include "service/output/SyslogMessage.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>

namespace quorbel {
namespace {

struct Case {
    std::string name;
    std::string line;
    std::string message;
};
std::ostream &operator<<(std::ostream &out, const Case &one) {
    return out << one.name;
}

struct SyslogMessageTest : ::testing::TestWithParam<Case> {};

TEST_P(SyslogMessageTest, isAsItWasStored) {
    SyslogMessage message;
    std::string text;
    message.append(splitLogLine(GetParam().line).value(), text);
    EXPECT_EQ(text, GetParam().message);
    message.appendCounted(splitLogLine(GetParam().line).value(), text);
    EXPECT_EQ(text, GetParam().message + std::to_string(GetParam().message.size()) + " " +
                        GetParam().message);
}

const std::string kHead = "1700000000,Local7.Debug,fw1.example,";
const std::string kSent = "<191>1 2023-11-14T22:13:20Z fw1.example ";

INSTANTIATE_TEST_SUITE_P(
    Cases, SyslogMessageTest,
    ::testing::Values(
        Case{"plain", kHead + "link down", kSent + "- - - - link down"},
        Case{"tag", kHead + "sshd: accepted", kSent + "sshd - - - accepted"},
        Case{"tagAndId", kHead + "sshd[42]: accepted", kSent + "sshd 42 - - accepted"},
        Case{"notATagWithBlank", kHead + "link up: eth0", kSent + "- - - - link up: eth0"},
        Case{"notATagWithoutText", kHead + "sshd[42]: ", kSent + "- - - - sshd[42]: "},
        Case{"openBracket", kHead + "sshd[42: x", kSent + "- - - - sshd[42: x"},
        Case{"emptyId", kHead + "sshd[]: x", kSent + "- - - - sshd[]: x"},
        Case{"nilName", kHead + "-: x", kSent + "- - - - -: x"},
        Case{"nilId", kHead + "sshd[-]: x", kSent + "- - - - sshd[-]: x"},
        Case{"longName", kHead + std::string(49, 'n') + ": x",
             kSent + "- - - - " + std::string(49, 'n') + ": x"},
        Case{"notAscii",
             kHead + "Stra\xC3\x9F"
                     "e: x",
             kSent + "- - - - Stra\xC3\x9F"
                     "e: x"},
        Case{"commas", kHead + "a,b,c", kSent + "- - - - a,b,c"},
        Case{"lowest", "0,Kern.Emergency,h,x", "<0>1 1970-01-01T00:00:00Z h - - - - x"},
        Case{"foreignPriority", "1,Nobody.Knows,h,x", "<13>1 1970-01-01T00:00:01Z h - - - - x"},
        Case{"foreignTime", "soon,User.Notice,h,x", "<13>1 - h - - - - x"},
        Case{"farTime", "999999999999999,User.Notice,h,x", "<13>1 - h - - - - x"},
        Case{"foreignHost", "1,User.Notice,a b\x01,x",
             "<13>1 1970-01-01T00:00:01Z a_b_ - - - - x"}),
    [](const auto &tested) { return tested.param.name; });

/// Whoever receives it stores the same line.
TEST_P(SyslogMessageTest, isReadAsTheSame) {
    const LogLine line = splitLogLine(GetParam().line).value();
    SyslogMessage message;
    std::string text;
    message.append(line, text);
    MessageParser parser;
    const auto parsed = parser.parse(text);
    ASSERT_TRUE(parsed);
    EXPECT_TRUE(parsed->wellFormed);
    EXPECT_EQ(parsed->text, line.message);
}

}  // namespace
}  // namespace quorbel
