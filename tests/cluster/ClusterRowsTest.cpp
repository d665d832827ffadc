#include "cluster/ClusterRows.h"
#include "cluster/Gzip.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <random>
#include <string>

namespace quorbel {
namespace {

std::string bytesOf(std::uint64_t number, const LogLine &event) {
    ClusterRows rows("c");
    rows.add(number, event);
    return std::string(rows.bytes());
}

LogLine lineOf(std::string_view date, std::string_view priority, std::string_view message) {
    LogLine line;
    line.date = date;
    line.priority = priority;
    line.host = "h";
    line.message = message;
    return line;
}

TEST(ClusterRowsTest, EachColumnInTheFormat) {
    const std::string expected = std::string("\x04\x03\x02\x01", 4) +  // 0x01020304 seconds
                                 "\x03" + "\x06Local7" + "\x0cLocal7.Error" + "\x01h" + "\x02hi" +
                                 "\x01" + "c" + std::string("\x02\x01\0\0\0\0\0\x80", 8);
    EXPECT_EQ(bytesOf(0x8000000000000102U, lineOf("16909060", "Local7.Error", "hi")), expected);
}

TEST(ClusterRowsTest, ALongTextHasALengthOfSeveralBytes) {
    const std::string message(300, 'x');
    const std::string bytes = bytesOf(0, lineOf("0", "User.Debug", message));
    EXPECT_NE(bytes.find("\xac\x02" + message), std::string::npos);
}

TEST(ClusterRowsTest, DatesThatNoColumnHolds) {
    struct {
        const char *date;
        std::string bytes;
    } const cases[] = {
        {"-5", std::string(4, '\0')},
        {"noon", std::string(4, '\0')},
        {"4294967295", "\xff\xff\xff\xff"},
        {"4294967296", "\xff\xff\xff\xff"},
        {"99999999999999999999", std::string(4, '\0')},
    };
    for (const auto &[date, bytes] : cases) {
        EXPECT_EQ(bytesOf(0, lineOf(date, "User.Debug", "m")).substr(0, 4), bytes) << date;
    }
}

TEST(ClusterRowsTest, APriorityWithoutSeverityOrPoint) {
    const std::string bytes = bytesOf(0, lineOf("0", "Odd", "m"));
    EXPECT_EQ(bytes.substr(4, 9), "\x08\x03Odd\x03Odd");
}

TEST(ClusterRowsTest, ClearedRowsBeginAnew) {
    ClusterRows rows("c");
    rows.add(1, lineOf("0", "User.Debug", "first"));
    rows.clear();
    EXPECT_EQ(rows.count(), 0U);
    rows.add(2, lineOf("0", "User.Debug", "second"));
    EXPECT_EQ(rows.count(), 1U);
    EXPECT_EQ(rows.bytes(), bytesOf(2, lineOf("0", "User.Debug", "second")));
}

std::string unpacked(const std::string &packed, std::size_t size) {
    std::string bytes(size, '\0');
    z_stream stream{};
    inflateInit2(&stream, MAX_WBITS + 16);
    stream.next_in = const_cast<Bytef *>(reinterpret_cast<const Bytef *>(packed.data()));
    stream.avail_in = static_cast<uInt>(packed.size());
    stream.next_out = reinterpret_cast<Bytef *>(bytes.data());
    stream.avail_out = static_cast<uInt>(bytes.size());
    const bool isWhole = inflate(&stream, Z_FINISH) == Z_STREAM_END;
    inflateEnd(&stream);
    return isWhole ? bytes : "?";
}

std::string readAll(GzipReader &reader, std::size_t piece) {
    std::string bytes;
    std::string buffer(piece, '\0');
    while (const std::size_t count = reader.read(buffer.data(), buffer.size())) {
        bytes.append(buffer, 0, count);
    }
    return bytes;
}

TEST(GzipTest, ComesBackAsItWas) {
    std::mt19937 random;
    for (const std::size_t size : {0U, 1U, 1000U, 3'000'000U}) {
        std::string noise(size, '\0');
        for (char &byte : noise) {
            byte = static_cast<char>(random());
        }
        for (const std::string &bytes : {noise, std::string(size, 'x')}) {
            GzipReader reader(bytes);
            const std::string once = readAll(reader, 7000);
            EXPECT_TRUE(unpacked(once, size) == bytes) << size;
            reader.rewind();
            EXPECT_TRUE(readAll(reader, 100) == once) << size;
        }
    }
}

}  // namespace
}  // namespace quorbel
