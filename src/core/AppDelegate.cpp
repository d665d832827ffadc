#include "core/AppDelegate.h"

#include "common/SettingsDocument.h"
#include "platform/Files.h"

#include <syslog.h>

#include <utility>

namespace quorbel {

AppDelegate::AppDelegate()
    : m_sender([](const std::string &reply) {
          syslog(LOG_INFO, "Received response: %s", reply.c_str());
      }) {}

void AppDelegate::setAlertSettings(AlertSettings settings) {
    const MutexLock lock(m_alertLock);
    static_cast<AlertSettings &>(state) = std::move(settings);
}

std::optional<std::string> AppDelegate::readSettings() {
    return readFile(libraryFolder() / kSettingsFileName);
}

void AppDelegate::saveSettings(Dictionary settings) {
    setPipe({{"command", "save"}, {"Settings", std::move(settings)}},
            [this, number = lastSave.begin()](const std::optional<std::string> &reply) {
                lastSave.end(number, reply);
            });
}

void AppDelegate::setPipe(Dictionary command, CommandSender::AnswerHandler onAnswer) {
    m_sender.send(std::move(command), std::move(onAnswer));
}

void AppDelegate::setPipe(LineCommand command, CommandSender::AnswerHandler onAnswer) {
    m_sender.send(std::move(command), std::move(onAnswer));
}

void AppDelegate::forward(void (MainWindowLink::*command)()) {
    if (m_window != nullptr) {
        m_window->makeVisible();
        (m_window->*command)();
    }
}

void AppDelegate::Home() {
    forward(&MainWindowLink::Home);
}
void AppDelegate::Scan() {
    forward(&MainWindowLink::Scan);
}
void AppDelegate::Reports() {
    forward(&MainWindowLink::Reports);
}
void AppDelegate::Tools() {
    forward(&MainWindowLink::Tools);
}
void AppDelegate::About() {
    forward(&MainWindowLink::About);
}

}  // namespace quorbel
