#include "options/ToolsViewFilter.h"

#include "options/FilterEditing.h"
#include "ui_ToolsViewFilter.h"

namespace quorbel {

ToolsViewFilter::ToolsViewFilter(QWidget *parent)
    : Sheet(parent), ui(std::make_unique<Ui::ToolsViewFilter>()) {
    ui->setupUi(this);
    ui->filterForm->setPrefix(QStringLiteral("filter"));
}

ToolsViewFilter::~ToolsViewFilter() = default;

void ToolsViewFilter::viewDidLoad() {
    setWindowTitle(tr("Quorbel Filter"));
    connect(ui->onSave, &QAbstractButton::clicked, this, &ToolsViewFilter::onSave);
    connect(ui->onCancel, &QAbstractButton::clicked, this, &ToolsViewFilter::onCancel);
}

void ToolsViewFilter::viewWillAppear() {
    const auto *page = dynamic_cast<const FilterEditing *>(presenter());
    if (const auto record = page != nullptr ? page->filterToEdit() : std::nullopt) {
        ui->filterForm->showRecord(*record);
    } else if (const auto proposed = page != nullptr ? page->proposal() : std::nullopt) {
        ui->filterForm->showProposal(*proposed);
    } else {
        ui->filterForm->showNew(QStringLiteral("New Filter"));
    }
    if (page != nullptr) {
        ui->filterEffect->follow(*ui->filterForm, page->listedEvents(),
                                 page->editsExcludeFilter() ? FilterEffect::Kind::kLeavesOut
                                                            : FilterEffect::Kind::kAccepts);
    }
    ui->filterBlank->setFocus();
}

void ToolsViewFilter::onSave() {
    if (auto *page = dynamic_cast<FilterEditing *>(presenter())) {
        page->storeFilter(ui->filterForm->allFields());
    }
    close();
}

void ToolsViewFilter::onCancel() {
    close();
}

}  // namespace quorbel
