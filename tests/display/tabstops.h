#pragma once

#include <QAccessible>
#include <QTest>
#include <QWidget>

namespace outpost
{

// The controls that the Tab key leads to in a window, from the focused one round to it again, by
// the names that a screen reader tells; a nameless control is an empty text.
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
