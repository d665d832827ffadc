#pragma once

#include <QString>
#include <QWidget>

#include <functional>
#include <memory>
#include <unordered_map>

namespace quorbel {

/// The interface document "Main": makes page, sheet and window controllers from their identifiers.
/// The shell registers them all; pages ask for the ones they open and need not include one another.
class Storyboard {
public:
    using Factory = std::function<std::unique_ptr<QWidget>()>;

    void add(const QString &identifier, Factory factory);

    /// A new controller whose view has been loaded (viewDidLoad has run); the caller owns it. Null
    /// for an unknown identifier.
    [[nodiscard]] std::unique_ptr<QWidget> instantiate(const QString &identifier) const;

private:
    std::unordered_map<QString, Factory> m_factories;
};

}  // namespace quorbel
