#pragma once

#include <QAccessible>
#include <QTest>
#include <QWidget>

namespace outpost
{

// The accessible names of a window's controls in Tab order, starting with the focused one, until
// the focus returns to it; empty for a control without a name.
inline QStringList tabStops(QWidget *window)
{
    QStringList names;
    QWidget *const first = window->focusWidget();
    QWidget *at = first;
    do {
        names.append(QAccessible::queryAccessibleInterface(at)->text(QAccessible::Name));
        QTest::keyClick(at, Qt::Key_Tab);
        at = window->focusWidget();
    } while (at != first && names.size() < 20);
    return names;
}

} // namespace outpost
