#include "display/livedialog.h"

#include "base/dialogs.h"
#include "base/smallscreen.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QLabel>
#include <QTimer>
#include <QVBoxLayout>

namespace outpost
{

namespace
{

QLabel *buildSelectableLabel(QWidget *parent)
{
    auto *label = new QLabel(parent);
    label->setTextFormat(Qt::PlainText); // host names and errors come from elsewhere
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}

} // namespace

LiveDialog buildLiveDialog(QWidget *parent, const QString &title, int refreshMs,
                           const std::function<void()> &refresh)
{
    auto *dialog = new QDialog(parent);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowTitle(title);
    dialog->setSizeGripEnabled(false);

    auto *layout = new QVBoxLayout(dialog);
    layout->setContentsMargins(8, 8, 8, 8);
    layout->setSpacing(6);
    auto *label = buildSelectableLabel(dialog);
    layout->addWidget(label);
    layout->addWidget(newCloseBox(dialog));
    keepOnScreen(dialog);

    auto *timer = new QTimer(dialog);
    timer->setInterval(refreshMs);
    QObject::connect(timer, &QTimer::timeout, dialog, refresh);
    return {dialog, layout, label, timer};
}

} // namespace outpost
