#include "Fuzz.h"
#include "common/LogReader.h"
#include "platform/Text.h"
#include "service/message/MessageParser.h"
#include "service/message/RecordWriter.h"
#include "service/message/WrittenText.h"

#include <string>

namespace quorbel {

namespace {

/// Each line is one record as readers take it, and together they hold the message.
void requireRecords(std::string_view written, std::size_t lines, const ReceivedEvent &event) {
    std::string message;
    std::size_t count = 0;
    std::string host;
    LogReader::readBytes(written, [&](const LogLine &line) {
        require(line.date == std::to_string(event.seconds), "the date is ours");
        require(line.priority == event.priority.text(), "the priority is the message's");
        require(count == 0 || line.host == host, "all are of one host");
        host = line.host;
        message += line.message;
        ++count;
        return true;
    });
    require(count == lines, "as many records are read as were written");
    require(message == testing::writtenText(event.message), "the text is all there");
    require(written.ends_with("\r\n") && isUtf8(written), "readers can take it");
}

}  // namespace

/// No message and no host forges, loses or merges a record.
void tryInput(std::string_view input) {
    FuzzInput choices(input);
    const std::string_view host = choices.line();
    MessageParser parser;
    RecordWriter writer;
    const auto parsed = parser.parse(choices.rest());
    if (!parsed) {
        return;
    }
    const ReceivedEvent event{1'700'000'000, parsed->priority, host, parsed->text};
    std::string lines;
    const auto written = writer.append(event, lines);
    requireRecords(lines, written.lines, event);
    std::string again;
    writer.append(event, again);
    require(lines == again, "the second one of its kind is written alike");
}

}  // namespace quorbel
