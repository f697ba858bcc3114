#include "base/livedialog.h"

#include "base/dialogs.h"
#include "base/smallscreen.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QTimer>
#include <QVBoxLayout>
#include <utility>

namespace outpost
{

LiveDialog::LiveDialog(QWidget *parent, const QString &title, int refreshMs,
                       std::function<void()> onRefreshDue)
    : QDialog(parent), layout(new QVBoxLayout(this)), timer(new QTimer(this))
{
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(title);
    timer->setInterval(refreshMs);
    connect(timer, &QTimer::timeout, this, std::move(onRefreshDue));
}

void LiveDialog::present()
{
    show();
    if (!timer->isActive()) {
        timer->start();
        return;
    }
    raise();
    activateWindow();
}

QLabel *LiveDialog::addText()
{
    layout->setContentsMargins(8, 8, 8, 8);
    layout->setSpacing(6);
    auto *label = new QLabel(this);
    label->setTextFormat(Qt::PlainText); // host names and errors are foreign text
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    layout->addWidget(label);
    return label;
}

void LiveDialog::addCloseBox()
{
    layout->addWidget(newCloseBox(this));
    keepOnScreen(this);
}

} // namespace outpost
