#include "base/dialogs.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QLayout>
#include <QMessageBox>
#include <QPushButton>

namespace outpost
{

namespace
{
void showPlainBox(QMessageBox::Icon icon, QWidget *parent, const QString &title,
                  const QString &text)
{
    QMessageBox box(icon, title, text, QMessageBox::Ok, parent);
    box.setTextFormat(Qt::PlainText);
    box.exec();
}
} // namespace

void showWarning(QWidget *parent, const QString &title, const QString &text)
{
    showPlainBox(QMessageBox::Warning, parent, title, text);
}

void showInformation(QWidget *parent, const QString &title, const QString &text)
{
    showPlainBox(QMessageBox::Information, parent, title, text);
}

QDialogButtonBox *newCloseBox(QDialog *dialog)
{
    auto *box = new QDialogButtonBox(QDialogButtonBox::Close, dialog);
    box->button(QDialogButtonBox::Close)->setDefault(true);
    QObject::connect(box, &QDialogButtonBox::rejected, dialog, &QDialog::close);
    return box;
}

void tabInShownOrder(const QDialogButtonBox &box)
{
    QWidget *before = nullptr;
    for (int i = 0; i < box.layout()->count(); ++i) {
        QWidget *button = box.layout()->itemAt(i)->widget(); // null: a stretch
        if (before && button) {
            QWidget::setTabOrder(before, button);
        }
        before = button ? button : before;
    }
}

} // namespace outpost
