#include "base/smallscreen.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QEvent>
#include <QPointer>
#include <QScreen>
#include <QScrollArea>
#include <QVBoxLayout>

namespace outpost
{

namespace
{

bool fits(const QSize &size, const QSize &room)
{
    return size.width() <= room.width() && size.height() <= room.height();
}

QSize smallestSize(const QDialog &dialog)
{
    return dialog.minimumSizeHint().expandedTo(dialog.minimumSize());
}

QScrollArea *newScrollArea(QDialog *dialog)
{
    auto *area = new QScrollArea(dialog);
    area->setFrameShape(QFrame::NoFrame);
    area->setWidgetResizable(true);
    area->setAccessibleName(dialog->windowTitle());
    area->setWidget(new QWidget);
    return area;
}

void scrollWhatIsAboveTheButtons(QDialog *dialog)
{
    const QPointer<QWidget> focused = dialog->focusWidget(); // the dialog loses focus below
    QLayout *content = dialog->layout();
    auto *buttons = dialog->findChild<QDialogButtonBox *>();
    QScrollArea *area = newScrollArea(dialog);
    content->removeWidget(buttons);
    area->widget()->setLayout(content);
    auto *layout = new QVBoxLayout(dialog);
    layout->setContentsMargins(content->contentsMargins());
    content->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(area);
    layout->addWidget(buttons);
    dialog->setMinimumSize(0, 0);
    dialog->setMaximumSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
    area->show();
    if (focused) {
        focused->setFocus();
    }
}

// A dialog's size is known only when it is shown, and its contents may change later.
class ScreenKeeper : public QObject
{
public:
    explicit ScreenKeeper(QDialog *dialogToKeep) : QObject(dialogToKeep), dialog(dialogToKeep) {}

protected:
    bool eventFilter(QObject * /*watched*/, QEvent *event) override
    {
        if (event->type() == QEvent::Show && !event->spontaneous()) {
            // A window's frame is unknown until it is on screen; its parent's is known.
            keep(dialog->size().expandedTo(smallestSize(*dialog)),
                 *dialog->parentWidget()->window());
        } else if (event->type() == QEvent::LayoutRequest && dialog->isVisible()) {
            keep(smallestSize(*dialog), *dialog); // if larger, the operator has resized it
        }
        return false;
    }

private:
    // Fits the dialog to the screen of `shown`, assuming a frame of the same size.
    void keep(const QSize &wanted, const QWidget &shown)
    {
        const QRect free = shown.screen()->availableGeometry();
        const QSize room = free.size() - (shown.frameSize() - shown.size());
        if (fits(wanted, room)) {
            return;
        }
        if (!scrollsToFitScreen(*dialog) && !fits(smallestSize(*dialog), room)) {
            scrollWhatIsAboveTheButtons(dialog);
        }
        dialog->resize(room);
        dialog->move(free.topLeft());
    }

    QDialog *const dialog;
};

} // namespace

void keepOnScreen(QDialog *dialog)
{
    dialog->installEventFilter(new ScreenKeeper(dialog));
}

bool scrollsToFitScreen(const QDialog &dialog)
{
    return dialog.findChild<QScrollArea *>({}, Qt::FindDirectChildrenOnly) != nullptr;
}

} // namespace outpost
