#include "about/AboutView.h"

#include "platform/gui/FontSize.h"
#include "ui_AboutView.h"

#include <QDesktopServices>
#include <QFontDatabase>
#include <QTextCharFormat>
#include <QTextCursor>
#include <QUrl>

#include <sys/utsname.h>

#include <utility>

namespace quorbel {

namespace {

constexpr int kWarningHeight = 110;
constexpr int kWarningPointSize = 11;
constexpr float kWarningGrey = 0.33F;

QString informationText() {
    const QString version =
        AboutView::tr("Quorbel Version: %1").arg(QStringLiteral(QUORBEL_VERSION));
    return version + QStringLiteral("\n\n") +
           AboutView::tr(
               "LIMITED WARRANTY\n"
               "---------------------\n"
               "THIS PROGRAM AND THE WRITTEN MATERIALS THAT COME WITH IT ARE PROVIDED "
               "\"AS IS\", WITHOUT WARRANTY OF ANY KIND, EXPRESS OR IMPLIED, INCLUDING "
               "THE WARRANTIES OF MERCHANTABILITY AND OF FITNESS FOR A PARTICULAR "
               "PURPOSE. YOU BEAR THE ENTIRE RISK OF ITS USE. NOBODY WHO TOOK PART IN "
               "MAKING, TESTING OR DELIVERING IT IS LIABLE FOR ANY DAMAGE THAT ARISES "
               "FROM USING IT OR FROM BEING UNABLE TO USE IT, LOST PROFIT, LOST DATA AND "
               "INTERRUPTED BUSINESS INCLUDED, EVEN IF THE POSSIBILITY OF SUCH DAMAGE "
               "WAS KNOWN.");
}

QString warningText() {
    return AboutView::tr(
        "Warning: This software is protected by copyright law and international treaties. "
        "Reproducing or distributing it, or any part of it, without permission may be punished "
        "under civil and criminal law, and will be prosecuted to the full extent that the law "
        "allows.");
}

}  // namespace

AboutView::AboutView(std::string machine, QWidget *parent)
    : Sheet(parent), m_machine(std::move(machine)), ui(std::make_unique<Ui::AboutView>()) {
    ui->setupUi(this);
}

AboutView::~AboutView() = default;

std::string AboutView::runningMachine() {
    utsname system{};
    return uname(&system) == 0 ? system.machine : std::string();
}

void AboutView::viewDidLoad() {
    QFont underlined = ui->webLink->font();
    underlined.setUnderline(true);
    ui->webLink->setFont(underlined);
    if (m_machine == "x86_64") {
        // The style sheet gives texts of this role the colour of the window behind them.
        for (QWidget *text : {ui->infoText, ui->warningText}) {
            text->setProperty("role", QStringLiteral("plain"));
        }
    }
    ui->warningText->setFixedHeight(sizedToFont(kWarningHeight));
    connect(ui->webLink, &QAbstractButton::clicked, this, &AboutView::linkButton);
    connect(ui->onClose, &QAbstractButton::clicked, this, &AboutView::onClose);
}

void AboutView::viewWillAppear() {
    ui->infoText->setPlainText(informationText());
    appendWarning();
}

void AboutView::appendWarning() {
    QTextCharFormat format;
    format.setFont(QFontDatabase::systemFont(QFontDatabase::GeneralFont));
    format.setFontPointSize(kWarningPointSize);
    format.setForeground(QColor::fromRgbF(kWarningGrey, kWarningGrey, kWarningGrey));
    QTextCursor cursor(ui->warningText->document());
    cursor.movePosition(QTextCursor::End);
    const QString text = warningText();
    const qsizetype bold = text.indexOf(u':') + 1;  // "Warning:"
    format.setFontWeight(QFont::Bold);
    cursor.insertText(text.left(bold), format);
    format.setFontWeight(QFont::Normal);
    cursor.insertText(text.mid(bold), format);
}

void AboutView::linkButton() {
    QDesktopServices::openUrl(QUrl(QStringLiteral("https://www.halvern.example/quorbel")));
}

void AboutView::onClose() {
    accept();
}

}  // namespace quorbel
