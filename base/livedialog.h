#pragma once

#include <QDialog>
#include <functional>

class QLabel;
class QTimer;
class QVBoxLayout;

namespace outpost
{

// Base class of the modeless windows that show live station data. A timer asks the owner to refresh
// the window. The window deletes itself when closed, so hold it in a QPointer.
class LiveDialog : public QDialog
{
public:
    // Shows the window and starts its timer; raises it if it is already visible.
    void present();

protected:
    LiveDialog(QWidget *parent, const QString &title, int refreshMs,
               std::function<void()> onRefreshDue);

    // For subclass constructors: the layout of the contents, in Tab order. The Close button is
    // always below.
    QVBoxLayout *contents() const { return layout; }
    QLabel *addText(); // plain, selectable text with narrow margins
    void addCloseBox();

private:
    QVBoxLayout *const layout;
    QTimer *const timer;
};

} // namespace outpost
