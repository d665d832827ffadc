#include "platform/gui/Storyboard.h"

#include "platform/gui/Page.h"

#include <utility>

namespace quorbel {

void Storyboard::add(const QString &identifier, Factory factory) {
    m_factories.insert_or_assign(identifier, std::move(factory));
}

std::unique_ptr<QWidget> Storyboard::instantiate(const QString &identifier) const {
    const auto entry = m_factories.find(identifier);
    if (entry == m_factories.end()) {
        return nullptr;
    }
    std::unique_ptr<QWidget> controller = entry->second();
    if (auto *lifeCycle = dynamic_cast<PageLifeCycle *>(controller.get())) {
        lifeCycle->viewDidLoad();
    }
    return controller;
}

}  // namespace quorbel
