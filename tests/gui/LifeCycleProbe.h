#pragma once

#include <QString>
#include <QStringList>

namespace quorbel::testing {

/// A page or sheet that notes each step of its life cycle, as "name.step", in a shared list.
template <class Base>
class LifeCycleProbe : public Base {
public:
    LifeCycleProbe(QString name, QStringList &steps) : m_name(std::move(name)), m_steps(steps) {}

    void viewDidLoad() override { note(QStringLiteral("load")); }
    void viewWillAppear() override { note(QStringLiteral("will")); }
    void viewDidAppear() override { note(QStringLiteral("did")); }
    void viewWillDisappear() override { note(QStringLiteral("leave")); }

private:
    void note(const QString &step) { m_steps.append(m_name + u'.' + step); }

    QString m_name;
    QStringList &m_steps;
};

}  // namespace quorbel::testing
