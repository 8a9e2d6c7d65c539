#pragma once

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QSignalBlocker>
#include <QSpinBox>

#include <functional>
#include <vector>

/// Binds preference controls to a getter and a setter: the control shows the getter's value
/// (again whenever the returned refresher runs) and calls the setter when the user changes it.
namespace ZDPreferenceBinding {
using Refreshers = std::vector<std::function<void()>>;

inline void bindControl(QCheckBox *box, Refreshers &refreshers, std::function<bool()> get,
                        std::function<void(bool)> set)
{
    refreshers.push_back([box, get] {
        const QSignalBlocker blocker(box);
        box->setChecked(get());
    });
    QObject::connect(box, &QCheckBox::toggled, box, [set](bool checked) { set(checked); });
}

inline void bindControl(QSpinBox *box, Refreshers &refreshers, std::function<int()> get,
                        std::function<void(int)> set)
{
    refreshers.push_back([box, get] {
        const QSignalBlocker blocker(box);
        box->setValue(get());
    });
    QObject::connect(box, &QSpinBox::valueChanged, box, [set](int value) { set(value); });
}

inline void bindControl(QDoubleSpinBox *box, Refreshers &refreshers, std::function<double()> get,
                        std::function<void(double)> set)
{
    refreshers.push_back([box, get] {
        const QSignalBlocker blocker(box);
        box->setValue(get());
    });
    QObject::connect(box, &QDoubleSpinBox::valueChanged, box, [set](double value) { set(value); });
}

/// A combo box whose items carry the stored values as their data.
inline void bindControl(QComboBox *box, Refreshers &refreshers, std::function<QVariant()> get,
                        std::function<void(const QVariant &)> set)
{
    refreshers.push_back([box, get] {
        const QSignalBlocker blocker(box);
        box->setCurrentIndex(std::max(0, box->findData(get())));
    });
    QObject::connect(box, &QComboBox::activated, box, [box, set](int index) { set(box->itemData(index)); });
}
} // namespace ZDPreferenceBinding
