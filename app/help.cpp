#include "app/help.h"

#include "app/helptext.h"
#include "base/smallscreen.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QVBoxLayout>

namespace outpost
{

void showHelpAbout(QWidget *parent)
{
    QDialog dialog(parent);
    dialog.setWindowTitle(QStringLiteral("Help / About PELQ Kiwi Outpost"));
    dialog.resize(660, 560);

    auto *heading = new QLabel(helpHeading());
    heading->setTextFormat(Qt::RichText);
    heading->setWordWrap(true);

    auto *text = new QPlainTextEdit(helpText());
    text->setReadOnly(true);
    text->setLineWrapMode(QPlainTextEdit::WidgetWidth);
    text->setAccessibleName(QStringLiteral("Help text"));

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok);
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, [&dialog] { dialog.accept(); });

    auto *layout = new QVBoxLayout(&dialog);
    layout->addWidget(heading);
    layout->addWidget(text, 1);
    layout->addWidget(buttons);
    keepOnScreen(&dialog);
    dialog.exec();
}

} // namespace outpost
