#pragma once

#include <QString>
#include <functional>

class QDialog;
class QLabel;
class QTimer;
class QVBoxLayout;
class QWidget;

namespace outpost
{

// A small modeless window that keeps showing the station's state: one plain-text label over a
// Close button, and a timer that refreshes it. It deletes itself, and all that is in it, when
// closed.
struct LiveDialog {
    QDialog *dialog;
    QVBoxLayout *layout;
    QLabel *label;
    QTimer *timer; // not started
};

LiveDialog buildLiveDialog(QWidget *parent, const QString &title, int refreshMs,
                           const std::function<void()> &refresh);

} // namespace outpost
