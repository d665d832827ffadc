#include "options/ToolsView.h"

#include "platform/gui/ContentArea.h"
#include "platform/gui/FontSize.h"
#include "platform/gui/Icons.h"
#include "ui_ToolsView.h"

namespace quorbel {

namespace {

constexpr int kIconSize = 32;

}  // namespace

ToolsView::ToolsView(AppDelegate &delegate, QWidget *parent)
    : Page(parent), m_delegate(delegate), ui(std::make_unique<Ui::ToolsView>()) {
    ui->setupUi(this);
}

ToolsView::~ToolsView() = default;

void ToolsView::viewDidLoad() {
    setWhiteBackground();
    ContentArea::wrap(*this);
    const int iconSize = sizedToFont(kIconSize);
    setLabelIcon(*ui->optionsIcon, lineIcon(QStringLiteral("options")), iconSize);
    setLabelIcon(*ui->actionsIcon, lineIcon(QStringLiteral("actions")), iconSize);
    setLabelIcon(*ui->exportIcon, lineIcon(QStringLiteral("export")), iconSize);
    setLabelIcon(*ui->hostsIcon, lineIcon(QStringLiteral("hosts")), iconSize);
    connect(ui->toolsOptions, &QAbstractButton::clicked, this, &ToolsView::options);
    connect(ui->toolsActions, &QAbstractButton::clicked, this, &ToolsView::actions);
    connect(ui->toolsExport, &QAbstractButton::clicked, this, &ToolsView::export_);
    connect(ui->toolsHosts, &QAbstractButton::clicked, this, &ToolsView::hosts);
}

void ToolsView::options() {
    open(Tab::kOptions);
}

void ToolsView::actions() {
    open(Tab::kActions);
}

void ToolsView::export_() {
    open(Tab::kExport);
}

void ToolsView::hosts() {
    open(Tab::kHosts);
}

void ToolsView::open(Tab page) {
    if (MainWindowLink *window = m_delegate.mainWindow()) {
        window->openSettingsPage(page, Tab::kTools);
    }
}

}  // namespace quorbel
