#pragma once

#include <QDialog>
#include <functional>

class QLabel;
class QTimer;
class QVBoxLayout;

namespace outpost
{

// The base of the modeless windows that keep showing the station's state. Such a window tells its
// owner when it is time to refresh it, and deletes itself when closed: hold it by a QPointer.
class LiveDialog : public QDialog
{
public:
    // Shows it and starts its timer; a window that is already there comes before the others.
    void present();

protected:
    LiveDialog(QWidget *parent, const QString &title, int refreshMs,
               std::function<void()> onRefreshDue);

    // For the constructor of the dialog: its contents in the order of the Tab key, with the Close
    // button below all of them.
    QVBoxLayout *contents() const { return layout; }
    QLabel *addText(); // plain and selectable, with little room around it
    void addCloseBox();

private:
    QVBoxLayout *const layout;
    QTimer *const timer;
};

} // namespace outpost
